#include "bench/rivals/KernelHosts.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>

#include "platform/zornet/device/NamespaceEntry.h"

namespace Bench {

namespace {

constexpr std::size_t membershipsPerSocket = 20; // the kernel's default limit

std::string
deviceOf( std::size_t i ) {
    return "mv" + std::to_string( i );
}

std::string
addressOf( std::size_t i ) {
    return "10.1." + std::to_string( i / 250 ) + "." + std::to_string( i % 250 + 1 );
}

} // namespace

KernelHosts::KernelHosts( VethPair const& link, std::size_t count, std::size_t first )
    : link_( link ), count_( count ), first_( first ) {
    link.nearNs.run( "sysctl -q -w net.ipv4.conf.all.force_igmp_version=2" );
    link.nearNs.run( "sysctl -q -w net.ipv4.conf.default.igmpv2_unsolicited_report_interval=1000" );
    FILE* const batch = popen( ( "ip -n " + link.nearNs.name() + " -batch -" ).c_str(), "w" );
    for ( std::size_t i = first; i < first + count; ++i ) {
        std::string const device = deviceOf( i );
        std::fprintf(
            batch,
            "link add link %s name %s type macvlan mode private\naddr add %s/32 dev %s\nlink set %s up\n",
            VethPair::nearDevice, device.c_str(), addressOf( i ).c_str(), device.c_str(), device.c_str()
        );
    }
    if ( pclose( batch ) != 0 ) {
        throw std::runtime_error( "the kernel makes no macvlan hosts" );
    }
}

void
KernelHosts::join() {
    Zornet::NamespaceEntry const entry( link_.nearNs.ns() );
    for ( std::size_t i = first_; i < first_ + count_; ++i ) {
        if ( ( i - first_ ) % membershipsPerSocket == 0 ) {
            sockets_.emplace_back( socket( AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0 ) );
        }
        ip_mreqn membership{};
        membership.imr_multiaddr.s_addr = inet_addr( "239.1.0.0" );
        membership.imr_ifindex = static_cast<int>( if_nametoindex( deviceOf( i ).c_str() ) );
        int const joined = setsockopt(
            sockets_.back().get(), IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof membership
        );
        if ( joined != 0 ) {
            throw std::runtime_error( std::string( "cannot join: " ) + std::strerror( errno ) );
        }
    }
}

} // namespace Bench
