#include "tests/interop/BridgeTest.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "platform/kiv/Clock.h"

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
    : hosts_( "hosts", false ), bridge_( "bridge", false ), igmpVersion_( igmpVersion ), timing_( timing ) {}

BridgeTest::~BridgeTest() = default;

void
BridgeTest::SetUp() {
    if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
        GTEST_SKIP() << "needs network namespaces: " << reason;
    }
    hosts_.add();
    bridge_.add();
    setUpBridge();
    wheel_ = new Lumo::TimerWheel;
    dir_ = Igmp::igmpHostDirFactory( "hosts" );
    statusDir_ = Igmp::igmpHostStatusDirFactory( "status" );
    dirSm_ = Igmp::igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel_ );
    for ( auto const& [host, port] : ports ) {
        taps_.push_back( std::make_unique<Support::WireTap>( bridge_, port ) );
    }
}

void
BridgeTest::setUpBridge() {
    auto const hundredths = []( unsigned value ) { return " " + std::to_string( value ); };
    bridge_.ip(
        "link add br0 type bridge mcast_snooping 1 mcast_querier 1 mcast_stats_enabled 1 "
        "mcast_igmp_version " +
        std::to_string( igmpVersion_ ) + " mcast_query_interval" + hundredths( timing_.query ) +
        " mcast_startup_query_interval" + hundredths( timing_.query ) + " mcast_startup_query_count 3" +
        " mcast_query_response_interval" + hundredths( timing_.response ) + " mcast_last_member_interval" +
        hundredths( timing_.lastMember ) + " mcast_last_member_count 2 mcast_membership_interval" +
        hundredths( timing_.membership ) + " mcast_querier_interval" + hundredths( timing_.membership )
    );
    bridge_.ip( "link set br0 type bridge mcast_query_use_ifaddr 1" );
    bridge_.ip( "addr add 10.0.0.254/24 dev br0" );
    bridge_.ip( "link set br0 up" );
    for ( auto const& [host, port] : ports ) {
        Support::vethIs( hosts_, host, bridge_, port );
        bridge_.ip( std::string( "link set " ) + port + " master br0" );
    }
}

/// Whatever a test did: every frame must have been right.
void
BridgeTest::TearDown() {
    if ( !dir_ ) {
        return;
    }
    dir_->igmpHostDelAll();
    std::vector<std::string> verdicts;
    for ( auto const& tap : taps_ ) {
        tap->flush();
        auto const part = Support::tshark(
            tap->path(), "igmp", { "ip.checksum.status", "igmp.checksum.status", "ip.ttl", "_ws.malformed" }
        );
        verdicts.insert( verdicts.end(), part.begin(), part.end() );
        EXPECT_EQ( part.size(), tap->frames() );
    }
    EXPECT_THAT(
        verdicts, ::testing::AllOf( ::testing::Not( ::testing::IsEmpty() ), ::testing::Each( "1|1|1|" ) )
    );
}

IgmpHost&
BridgeTest::addHost( char const* device, Igmp::IgmpVersion version ) {
    auto const number = std::to_string( dir_->igmpHosts() + 1 );
    Ptr<IgmpHost> const host = dir_->igmpHostIs( Kiv::Name( "host-" + number ) );
    host->ipAddrIs( IpAddr( "10.0.0." + number ) );
    host->macAddrIs( Zornet::EthAddr( "02:00:00:00:00:0" + number ) );
    host->deviceNameIs( device );
    host->nsIs( hosts_.ns() );
    host->igmpVersionIs( version );
    host->v1MaxResponseTimeIs( version == Igmp::igmpVersion1 ? 5 : 1 );
    host->intfConfigVersionIs( 1 );
    host->enabledIs( true );
    return *host;
}

IgmpV3GroupRecord&
BridgeTest::join(
    IgmpHost& host, char const* group, IgmpV3GroupRecord::FilterMode mode,
    std::vector<char const*> const& sources
) {
    Ptr<IgmpV3GroupRecord> const record = host.v3groupIs( IpAddr( group ) );
    record->filterModeIs( mode );
    for ( char const* source : sources ) {
        record->sourceIs()->sourceIpIs( IpAddr( source ), 1 );
    }
    raise( *record );
    return *record;
}

Memberships
BridgeTest::bridgeTable( char const* port ) {
    Json const table =
        Json::parse( Support::outputOf( "bridge -n " + bridge_.name() + " -d -s -j mdb show" ) );
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
    Seconds const end = Kiv::now() + span;
    Memberships table = bridgeTable( port );
    while ( table != expected && Kiv::now() < end ) {
        live( 0.05 );
        table = bridgeTable( port );
    }
    return table;
}

std::vector<Memberships>
BridgeTest::deviations( char const* port, Memberships const& expected, Seconds span ) {
    std::vector<Memberships> found;
    for ( Seconds const end = Kiv::now() + span; Kiv::now() < end; live( 0.1 ) ) {
        Memberships table = bridgeTable( port );
        if ( table != expected ) {
            found.push_back( std::move( table ) );
        }
    }
    return found;
}

unsigned
BridgeTest::queriesSent( char const* port ) {
    Json const stats =
        Json::parse( bridge_.ip( std::string( "-s -j link xstats type bridge_slave dev " ) + port ) );
    Json const& multicast = stats.at( 0 ).at( "multicast" );
    unsigned queries = 0;
    for ( char const* version : { "v1", "v2", "v3" } ) {
        queries += multicast.at( "igmp_queries" ).value( std::string( "tx_" ) + version, 0U );
    }
    return queries;
}

std::vector<std::string>
BridgeTest::dissected() {
    std::vector<std::string> lines;
    for ( auto const& tap : taps_ ) {
        tap->flush();
        auto const part =
            Support::tshark( tap->path(), "igmp", { "ip.src", "ip.dst", "igmp.type", "igmp.maddr" } );
        lines.insert( lines.end(), part.begin(), part.end() );
    }
    return lines;
}

} // namespace Interop
