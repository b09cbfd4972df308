#include "tests/support/PeerTest.h"

namespace Support {

PeerTest::~PeerTest() = default;

void
PeerTest::SetUp() {
    hosts_.add();
    peer_.add();
    wheel_ = new Lumo::TimerWheel;
    dir_ = Igmp::igmpHostDirFactory( "hosts" );
    statusDir_ = Igmp::igmpHostStatusDirFactory( "status" );
    dirSm_ = Igmp::igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel_ );
}

void
PeerTest::cableIs( char const* hostsDevice, char const* peersDevice ) {
    vethIs( hosts_, hostsDevice, peer_, peersDevice );
    taps_.push_back( std::make_unique<WireTap>( peer_, peersDevice ) );
}

/// Whatever a test did: every frame must have been right.
void
PeerTest::TearDown() {
    if ( !dir_ ) {
        return;
    }
    dir_->igmpHostDelAll();
    auto const verdicts =
        dissected( { "ip.checksum.status", "igmp.checksum.status", "ip.ttl", "_ws.malformed" } );
    std::size_t frames = 0;
    for ( auto const& tap : taps_ ) {
        frames += tap->frames();
    }
    EXPECT_EQ( verdicts.size(), frames );
    EXPECT_THAT(
        verdicts, ::testing::AllOf( ::testing::Not( ::testing::IsEmpty() ), ::testing::Each( "1|1|1|" ) )
    );
}

IgmpHost&
PeerTest::addHost( char const* device, Igmp::IgmpVersion version ) {
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
PeerTest::join(
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

std::vector<std::string>
PeerTest::dissected( std::vector<std::string> const& fields ) {
    std::vector<std::string> lines;
    for ( auto const& tap : taps_ ) {
        tap->flush();
        auto const part = tshark( tap->path(), "igmp", fields );
        lines.insert( lines.end(), part.begin(), part.end() );
    }
    return lines;
}

} // namespace Support
