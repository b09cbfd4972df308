#include "agent/control/ControlClient.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "agent/control/ControlMounts.h"
#include "agent/control/SocketPath.h"
#include "platform/kiv/Clock.h"
#include "platform/kiv/Value.h"

namespace Agent {

namespace {

std::string
ownerOf( std::string const& path ) {
    struct stat status {};
    return stat( path.c_str(), &status ) == 0 ? userText( status.st_uid ) : "its user";
}

[[noreturn]] void
throwUnreachable( std::string const& path, int error ) {
    std::string const at = "no agent is reached at " + path + ": ";
    if ( std::string const other = noSocketAt( path ); !other.empty() ) {
        throw std::runtime_error( at + "there is " + other );
    }
    switch ( error ) {
    case ENOENT:
        throw std::runtime_error(
            at + "there is no such socket; an agent makes it: igmphost run SCENARIO --control " + path
        );
    case ECONNREFUSED: throw std::runtime_error( at + "the agent that made this socket has ended" );
    case EACCES:
        throw std::runtime_error( at + "permission denied; the agent obeys " + ownerOf( path ) + " alone" );
    case EAGAIN: throw std::runtime_error( at + "it takes no connection" );
    default: throw std::runtime_error( at + strerror( error ) );
    }
}

[[noreturn]] void
throwLost( Kiv::Connection const& connection ) {
    constexpr std::string_view fromPeer = "peer: ";
    std::string const reason( connection.endReason().view() );
    throw std::runtime_error(
        reason.starts_with( fromPeer ) ? "the agent ends the connection: " + reason.substr( fromPeer.size() )
                                       : "the connection is lost: " + reason
    );
}

/// Waits while more want to connect than the agent has taken up.
int
connectedTo( std::string const& path, Kiv::Seconds patience ) {
    constexpr useconds_t pause = 10'000;
    sockaddr_un const address = socketAddress( path );
    Zornet::FileDescriptor socket = newStreamSocket();
    Kiv::Seconds const end = Kiv::now() + patience;
    int error = connectTo( socket, address );
    while ( error == EAGAIN && Kiv::now() < end ) {
        usleep( pause );
        error = connectTo( socket, address );
    }
    if ( error != 0 ) {
        throwUnreachable( path, error );
    }
    return socket.release();
}

} // namespace

ControlClient::ControlClient( std::string const& path, Kiv::Seconds patience )
    : path_( path ),
      patience_( patience ),
      signals_( [this] {
          isInterrupted_ = true;
          Kiv::defaultActivity()->activitySm().stop();
      } ),
      hostDir_( Igmp::igmpHostDirFactory( "hosts" ) ),
      statusDir_( Igmp::igmpHostStatusDirFactory( "status" ) ),
      connection_( new Kiv::Connection(
          connectedTo( path, patience ), Kiv::Connection::Role::client, controlMounts( hostDir_, statusDir_ ),
          "the agent"
      ) ) {}

void
ControlClient::synchronise() {
    await( [this] { return connection_->isSynchronised(); } );
}

void
ControlClient::settle() {
    try {
        await( [this] { return connection_->isSettled(); } );
    } catch ( std::runtime_error const& fault ) {
        throw std::runtime_error(
            std::string( fault.what() ) + "; what the agent has taken of the change is not known"
        );
    }
}

void
ControlClient::watch( std::function<bool()> const& condition, Kiv::Seconds span ) {
    run( condition, span );
    if ( !isInterrupted_ && !isOpen() ) {
        throwLost( *connection_ );
    }
}

void
ControlClient::await( std::function<bool()> const& condition ) {
    for ( Kiv::U64 received = connection_->counters().bytesReceived; !run( condition, patience_ ); ) {
        if ( isInterrupted_ ) {
            throw std::runtime_error( "interrupted" );
        }
        if ( !isOpen() ) {
            throwLost( *connection_ );
        }
        if ( connection_->counters().bytesReceived == received ) {
            throw std::runtime_error(
                "the agent at " + path_ + " has not answered for " +
                Kiv::ValueTraits<double>::format( patience_ ) + " s"
            );
        }
        received = connection_->counters().bytesReceived;
    }
}

/// Whether the condition came to hold.
bool
ControlClient::run( std::function<bool()> const& condition, Kiv::Seconds span ) {
    auto const over = [&] { return condition() || !isOpen(); };
    return Kiv::defaultActivity()->activitySm().runUntil( over, span ) && condition();
}

} // namespace Agent
