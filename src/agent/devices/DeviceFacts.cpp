#include "agent/devices/DeviceFacts.h"

#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <netinet/in.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "platform/zornet/device/NamespaceEntry.h"

namespace Agent {

namespace {

using Addresses = std::unique_ptr<ifaddrs, decltype( &freeifaddrs )>;

Addresses
addressesIn( Zornet::NamespaceName const& ns ) {
    Zornet::NamespaceEntry const entry( ns );
    if ( entry.error() != 0 ) {
        throw std::runtime_error(
            "cannot enter the network namespace '" + std::string( ns.name().view() ) +
            "': " + std::strerror( entry.error() )
        );
    }
    ifaddrs* first = nullptr;
    if ( getifaddrs( &first ) != 0 ) {
        throw std::runtime_error( std::string( "cannot list network devices: " ) + std::strerror( errno ) );
    }
    return { first, &freeifaddrs };
}

Zornet::EthAddr
macAddrOf( sockaddr const& address ) {
    sockaddr_ll link;
    std::memcpy( &link, &address, sizeof link );
    std::array<Zornet::U8, 6> bytes{};
    std::copy_n( link.sll_addr, std::min<std::size_t>( link.sll_halen, bytes.size() ), bytes.begin() );
    return Zornet::EthAddr( bytes );
}

Zornet::IpAddr
ipAddrOf( sockaddr const& address ) {
    sockaddr_in inet;
    std::memcpy( &inet, &address, sizeof inet );
    return Zornet::IpAddr::fromHost( ntohl( inet.sin_addr.s_addr ) );
}

} // namespace

DeviceFacts
deviceFacts( Zornet::NamespaceName const& ns, std::string const& device ) {
    Addresses const addresses = addressesIn( ns );
    std::optional<DeviceFacts> facts;
    for ( ifaddrs const* at = addresses.get(); at; at = at->ifa_next ) {
        if ( device != at->ifa_name || !at->ifa_addr ) {
            continue;
        }
        if ( !facts ) {
            facts.emplace();
        }
        if ( at->ifa_addr->sa_family == AF_PACKET ) {
            facts->macAddr = macAddrOf( *at->ifa_addr );
        } else if ( at->ifa_addr->sa_family == AF_INET && !facts->ipAddr ) {
            facts->ipAddr = ipAddrOf( *at->ifa_addr );
        }
    }
    if ( !facts ) {
        std::string const where = ns.empty() ? "" : " in " + std::string( ns.name().view() );
        throw std::runtime_error( "no such device: " + device + where );
    }
    return *facts;
}

} // namespace Agent
