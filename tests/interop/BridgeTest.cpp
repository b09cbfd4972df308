#include "tests/interop/BridgeTest.h"

#include <nlohmann/json.hpp>

namespace Interop {

namespace {

using Json = nlohmann::json;

constexpr char const* ports[][2] = { { "h1", "p1" }, { "h2", "p2" } };

/// The bridge's own listening shows up in its table too; the link-local groups are not ours.
bool
isOurs( std::string const& group ) {
    return group.find( ':' ) == std::string::npos && group.rfind( "224.0.0.", 0 ) != 0;
}

Membership
membershipOf( Json const& entry ) {
    Membership membership;
    membership.exclude = entry.value( "filter_mode", "exclude" ) == "exclude";
    for ( Json const& source : entry.value( "source_list", Json::array() ) ) {
        bool const blocked = std::stod( source.value( "timer", "0" ) ) == 0.0;
        if ( blocked == membership.exclude ) {
            membership.sources.insert( source.at( "address" ).get<std::string>() );
        }
    }
    return membership;
}

} // namespace

BridgeTest::BridgeTest( unsigned igmpVersion, Timing const& timing )
    : PeerTest( "bridge" ), igmpVersion_( igmpVersion ), timing_( timing ) {}

void
BridgeTest::SetUp() {
    if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
        GTEST_SKIP() << "needs network namespaces: " << reason;
    }
    PeerTest::SetUp();
    setUpBridge();
}

void
BridgeTest::setUpBridge() {
    auto const hundredths = []( unsigned value ) { return " " + std::to_string( value ); };
    peer_.ip(
        "link add br0 type bridge mcast_snooping 1 mcast_querier 1 mcast_stats_enabled 1 "
        "mcast_igmp_version " +
        std::to_string( igmpVersion_ ) + " mcast_query_interval" + hundredths( timing_.query ) +
        " mcast_startup_query_interval" + hundredths( timing_.query ) + " mcast_startup_query_count 3" +
        " mcast_query_response_interval" + hundredths( timing_.response ) + " mcast_last_member_interval" +
        hundredths( timing_.lastMember ) + " mcast_last_member_count 2 mcast_membership_interval" +
        hundredths( timing_.membership ) + " mcast_querier_interval" + hundredths( timing_.membership )
    );
    peer_.ip( "link set br0 type bridge mcast_query_use_ifaddr 1" );
    peer_.ip( "addr add 10.0.0.254/24 dev br0" );
    peer_.ip( "link set br0 up" );
    for ( auto const& [host, port] : ports ) {
        cableIs( host, port );
        peer_.ip( std::string( "link set " ) + port + " master br0" );
    }
}

Memberships
BridgeTest::bridgeTable( char const* port ) {
    Json const table = Json::parse( Support::outputOf( "bridge -n " + peer_.name() + " -d -s -j mdb show" ) );
    Memberships memberships;
    for ( Json const& entry : table.at( 0 ).at( "mdb" ) ) {
        std::string const group = entry.at( "grp" ).get<std::string>();
        bool const isGroup = !entry.contains( "src" );
        if ( entry.at( "port" ) == port && isGroup && isOurs( group ) ) {
            memberships[group] = wantsSources() ? membershipOf( entry ) : Membership();
        }
    }
    return memberships;
}

Memberships
BridgeTest::awaitTable( char const* port, Memberships const& expected, Seconds span ) {
    return await( expected, span, [&] { return bridgeTable( port ); } );
}

std::vector<Memberships>
BridgeTest::deviations( char const* port, Memberships const& expected, Seconds span ) {
    return differing( expected, span, [&] { return bridgeTable( port ); } );
}

unsigned
BridgeTest::queriesSent( char const* port ) {
    Json const stats =
        Json::parse( peer_.ip( std::string( "-s -j link xstats type bridge_slave dev " ) + port ) );
    Json const& multicast = stats.at( 0 ).at( "multicast" );
    unsigned queries = 0;
    for ( char const* version : { "v1", "v2", "v3" } ) {
        queries += multicast.at( "igmp_queries" ).value( std::string( "tx_" ) + version, 0U );
    }
    return queries;
}

} // namespace Interop
