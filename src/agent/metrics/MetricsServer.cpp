#include "agent/metrics/MetricsServer.h"

#include <arpa/inet.h>
#include <linux/capability.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <future>
#include <iostream>
#include <stdexcept>

#include "agent/metrics/RunMetrics.h"
#include "agent/run/Privileges.h"

namespace Agent {

namespace {

[[noreturn]] void
fail( std::string const& address, char const* why ) {
    throw std::runtime_error( "cannot serve metrics on " + address + ": " + why );
}

/// The server itself does not say what is wrong with an address, so it is tried first.
void
checkAddress( MetricsAddress const& address ) {
    Zornet::FileDescriptor const probe( socket( AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0 ) );
    int const one = 1;
    setsockopt( probe.get(), SOL_SOCKET, SO_REUSEADDR, &one, sizeof one );
    sockaddr_in inet{};
    inet.sin_family = AF_INET;
    inet.sin_port = htons( address.port );
    inet.sin_addr.s_addr = htonl( address.ipAddr.hostOrder() );
    if ( bind( probe.get(), reinterpret_cast<sockaddr const*>( &inet ), sizeof inet ) != 0 ||
         listen( probe.get(), 1 ) != 0 ) {
        fail( address.text(), std::strerror( errno ) );
    }
}

/// The server's threads read what anybody on the network sends. They are started by a thread that has no
/// more rights than it takes to listen, and so have none themselves.
std::unique_ptr<prometheus::Exposer>
exposerAt( MetricsAddress const& address ) {
    constexpr U16 firstForAll = 1024;
    std::vector<unsigned> needed;
    if ( address.port != 0 && address.port < firstForAll ) {
        needed.push_back( CAP_NET_BIND_SERVICE );
    }
    auto const make = [&] {
        keepCapabilities( needed );
        return std::make_unique<prometheus::Exposer>( address.text() );
    };
    return std::async( std::launch::async, make ).get();
}

} // namespace

MetricsServer::MetricsServer( RunContext const& context ) : context_( context ) {
    MetricsAddress address = *context.options.metrics;
    checkAddress( address );
    try {
        exposer_ = exposerAt( address );
    } catch ( std::exception const& fault ) {
        fail( address.text(), fault.what() );
    }
    exposer_->RegisterCollectable( exchange_ );
    Kiv::defaultActivity()->activitySm().ioHandlerIs( exchange_->descriptor(), EPOLLIN, this );
    address.port = static_cast<U16>( exposer_->GetListeningPorts().at( 0 ) );
    std::cerr << "igmphost: metrics at http://" << address.text() << "/metrics" << std::endl;
}

/// The server's threads end before what they ask.
MetricsServer::~MetricsServer() {
    exchange_->end();
    exposer_.reset();
    Kiv::defaultActivity()->activitySm().ioHandlerDel( exchange_->descriptor() );
}

void
MetricsServer::handleIo( Kiv::U32 ) {
    exchange_->wantIsTaken();
    exchange_->answerIs( runMetrics( context_, context_.options.metricsPerHost ) );
}

} // namespace Agent
