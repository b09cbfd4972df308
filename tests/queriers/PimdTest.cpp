/// Hosts before Debian's pimd. It is an odd peer: it tells late, keeps sources that were left, and
/// mixes group queries of version 2 into a version 3 network. Hosts must bear it, and it must learn the rest.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/support/PeerTest.h"

namespace Queriers {

namespace {

using namespace Igmp;
using Support::Memberships;
using Zornet::IpAddr;

class Pimd : public Support::PeerTest {
  protected:
    static constexpr auto include = IgmpV3GroupRecord::include;
    static constexpr auto exclude = IgmpV3GroupRecord::exclude;
    static constexpr Kiv::Seconds patience = 90.0;
    /// Each signal puts its timers off, those of its queries too.
    static constexpr Kiv::Seconds betweenDumps = 8.0;

    Pimd() : PeerTest( "pimd" ) {}

    void SetUp() override {
        ASSERT_EQ( Support::Namespace::unavailable(), "" ) << "needs network namespaces";
        char const* const program = std::getenv( "IGMPHOST_PIMD" );
        ASSERT_TRUE( program && std::filesystem::exists( program ) )
            << "needs Debian's pimd, and IGMPHOST_PIMD to say where: run scripts/queriers";
        program_ = program;
        PeerTest::SetUp();
        char folder[] = "/tmp/igmphost-pimd-XXXXXX";
        ASSERT_NE( mkdtemp( folder ), nullptr );
        folder_ = folder;
        cableIs( "h0", "q0" );
        peer_.ip( "link set lo up" );
        peer_.ip( "addr add 10.0.0.254/24 dev q0" );
        // A way to a rendezvous point, without which it makes no entry for a group.
        peer_.ip( "link add u0 up type veth peer name u1" );
        peer_.ip( "link set u1 up" );
        peer_.ip( "addr add 10.1.0.1/16 dev u0" );
        peer_.ip( "route add default via 10.1.0.2" );
    }
    void TearDown() override {
        if ( !folder_.empty() ) {
            stop();
            std::filesystem::remove_all( folder_ );
            PeerTest::TearDown();
        }
    }

    /// Starts it, with a /run of its own, where it keeps what it must.
    void start( char const* version ) {
        std::ofstream( folder_ + "/conf" )
            << "igmp-query-interval 4\nigmp-querier-timeout 17\nphyint q0 enable " << version
            << "\nrp-address 10.1.0.2 224.0.0.0/4\n";
        peer_.run(
            "unshare -m sh -c 'mount --bind " + folder_ + " /run && exec " + program_ + " -f -c " + folder_ +
            "/conf' >" + folder_ + "/out 2>&1 &"
        );
    }
    void stop() {
        if ( pid() != 0 ) {
            kill( pid(), SIGKILL );
        }
    }
    pid_t pid() const {
        std::ifstream file( folder_ + "/pimd.pid" );
        pid_t pid = 0;
        return file >> pid ? pid : 0;
    }
    /// What it said last of groups that hosts want: those of its table of sources, and those with an entry
    /// for all sources that has hosts as leaves. Asks it to say so again.
    Memberships table() {
        std::ifstream dump( folder_ + "/pimd/pimd.dump" );
        Memberships memberships;
        bool inSources = false;
        std::string group;
        for ( std::string line; std::getline( dump, line ); ) {
            std::istringstream words( line );
            std::string first;
            std::string second;
            words >> first >> second;
            if ( first == "INADDR_ANY" ) {
                group = second;
            } else if ( first == "Leaves" && !group.empty() && line.find( "oifs: l" ) != std::string::npos ) {
                memberships[group] = {};
            } else if ( inSources && first == "0" ) {
                memberships[second] = { false, { std::istream_iterator<std::string>( words ), {} } };
            }
            inSources = !first.empty() && ( inSources || second == "SSM" );
        }
        if ( pid() != 0 && Kiv::now() > asked_ + betweenDumps ) {
            kill( pid(), SIGUSR1 );
            asked_ = Kiv::now();
        }
        return memberships;
    }
    void expectTable( Memberships const& expected ) {
        EXPECT_EQ( await( expected, patience, [this] { return table(); } ), expected );
    }

  private:
    std::string program_;
    Kiv::Seconds asked_ = 0.0;
    std::string folder_;
};

TEST_F( Pimd, OfVersion3LearnsJoinsAndSourcesAndForgetsWhatIsLeft ) {
    start( "igmpv3" );
    IgmpHost& host = addHost( "h0", igmpVersion3 );
    IgmpV3GroupRecord& some = join( host, "232.1.1.1", include, { "10.9.9.1", "10.9.9.2" } );
    join( host, "225.1.1.1", exclude );
    expectTable( { { "225.1.1.1", {} }, { "232.1.1.1", { false, { "10.9.9.1", "10.9.9.2" } } } } );
    EXPECT_GE( status( host ).v3GeneralQueryReceived(), 1U );
    some.source()->sourceIpIs( IpAddr( "10.9.9.5" ), 1 );
    raise( some );
    expectTable( { { "225.1.1.1", {} }, { "232.1.1.1", { false, { "10.9.9.1", "10.9.9.2", "10.9.9.5" } } } }
    );
    host.v3groupDel( IpAddr( "225.1.1.1" ) );
    expectTable( { { "232.1.1.1", { false, { "10.9.9.1", "10.9.9.2", "10.9.9.5" } } } } );
}

TEST_F( Pimd, OfVersion2LearnsHostsOfVersions2And3AndSeesThemLeave ) {
    start( "igmpv2" );
    IgmpHost& second = addHost( "h0", igmpVersion2 );
    IgmpHost& third = addHost( "h0", igmpVersion3 );
    join( second, "225.1.1.1", exclude );
    join( third, "225.1.1.2", exclude );
    expectTable( { { "225.1.1.1", {} }, { "225.1.1.2", {} } } );
    EXPECT_EQ( status( third ).igmpVersion(), igmpVersion2 );
    second.v3groupDel( IpAddr( "225.1.1.1" ) );
    third.v3groupDel( IpAddr( "225.1.1.2" ) );
    expectTable( {} );
}

TEST_F( Pimd, ThatComesBackInVersion3IsTakenBack ) {
    start( "igmpv2" );
    IgmpHost& host = addHost( "h0", igmpVersion3 );
    host.v2RouterPresentTimeoutIs( 10.0 );
    join( host, "225.1.1.1", exclude );
    expectTable( { { "225.1.1.1", {} } } );
    EXPECT_EQ( status( host ).igmpVersion(), igmpVersion2 );
    stop();
    start( "igmpv3" );
    expectTable( { { "225.1.1.1", {} } } );
    live( 20.0 );
    EXPECT_EQ( status( host ).igmpVersion(), igmpVersion3 );
    expectTable( { { "225.1.1.1", {} } } );
}

} // namespace

} // namespace Queriers
