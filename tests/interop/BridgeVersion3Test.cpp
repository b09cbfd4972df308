#include "tests/interop/BridgeTest.h"

namespace {

using namespace Igmp;
using Interop::IgmpHost;
using Interop::IgmpV3GroupRecord;
using Interop::Membership;
using Interop::Memberships;
using ::testing::IsEmpty;
using Zornet::IpAddr;

/// A querier of version 3 with times of whole seconds, which is what a version 3 host makes of them.
class BridgeVersion3 : public Interop::BridgeTest {
  protected:
    explicit BridgeVersion3( Timing const& timing = { 300, 100, 100, 900 } ) : BridgeTest( 3, timing ) {}

    static Membership including( std::set<std::string> const& sources ) { return { false, sources }; }
    static Membership excluding( std::set<std::string> const& sources ) { return { true, sources }; }
    void expectTable( Memberships const& expected ) {
        EXPECT_EQ( awaitTable( "p1", expected, 6.0 ), expected );
    }

    static constexpr auto include = IgmpV3GroupRecord::include;
    static constexpr auto exclude = IgmpV3GroupRecord::exclude;
};

TEST_F( BridgeVersion3, FollowsEveryChangeOfFilterModeAndSources ) {
    IgmpHost& host = addHost( "h1", igmpVersion3 );
    IgmpV3GroupRecord& some = join( host, "232.1.1.1", include, { "10.9.9.1", "10.9.9.2" } );
    IgmpV3GroupRecord& all = join( host, "239.1.1.1", exclude, { "10.9.9.3" } );
    expectTable( { { "232.1.1.1", including( { "10.9.9.1", "10.9.9.2" } ) },
                   { "239.1.1.1", excluding( { "10.9.9.3" } ) } } );

    some.source()->sourceIpIs( IpAddr( "10.9.9.5" ), 1 );
    raise( some );
    expectTable( { { "232.1.1.1", including( { "10.9.9.1", "10.9.9.2", "10.9.9.5" } ) },
                   { "239.1.1.1", excluding( { "10.9.9.3" } ) } } );

    some.source()->sourceIpDel( IpAddr( "10.9.9.1" ) );
    raise( some );
    expectTable( { { "232.1.1.1", including( { "10.9.9.2", "10.9.9.5" } ) },
                   { "239.1.1.1", excluding( { "10.9.9.3" } ) } } );

    some.filterModeIs( exclude );
    raise( some );
    all.filterModeIs( include );
    raise( all );
    expectTable( { { "232.1.1.1", excluding( { "10.9.9.2", "10.9.9.5" } ) },
                   { "239.1.1.1", including( { "10.9.9.3" } ) } } );

    host.v3groupDel( IpAddr( "232.1.1.1" ) );
    expectTable( { { "239.1.1.1", including( { "10.9.9.3" } ) } } );
    host.v3groupDel( IpAddr( "239.1.1.1" ) );
    expectTable( {} );
}

TEST_F( BridgeVersion3, KeepsAllStateThroughManyQueryRounds ) {
    IgmpHost& host = addHost( "h1", igmpVersion3 );
    join( host, "232.1.1.1", include, { "10.9.9.1", "10.9.9.2" } );
    join( host, "239.1.1.1", exclude );
    join( host, "239.1.1.2", exclude, { "10.9.9.3" } );
    Memberships const expected{ { "232.1.1.1", including( { "10.9.9.1", "10.9.9.2" } ) },
                                { "239.1.1.1", excluding( {} ) },
                                { "239.1.1.2", excluding( { "10.9.9.3" } ) } };
    ASSERT_EQ( awaitTable( "p1", expected, 6.0 ), expected );
    EXPECT_THAT( deviations( "p1", expected, 20.0 ), IsEmpty() );
    EXPECT_GE( status( host ).v3GeneralQueryReceived(), 6U );
}

/// The same bridge, which is told to be a querier of version 2 for a while.
class BridgeThatIsOlder : public BridgeVersion3 {
  protected:
    /// How long a version 2 querier is remembered: twice its interval and a response time (RFC 3376
    /// section 8.12).
    static constexpr Interop::Seconds olderVersionTime = 2 * 1.0 + 1.0;

    BridgeThatIsOlder() : BridgeVersion3( { 100, 100, 100, 300 } ) {}

    /// The bridge asks in that version from now on. Returns the tables that differed from `expected` until
    /// the host was at it too, and for `span` after that.
    std::vector<Memberships> deviationsOn(
        unsigned version, IgmpHost const& host, Memberships const& expected, Interop::Seconds span
    ) {
        bridge().ip( "link set br0 type bridge mcast_igmp_version " + std::to_string( version ) );
        std::vector<Memberships> found;
        for ( int i = 0; i < 60 && status( host ).igmpVersion() != version; ++i ) {
            std::vector<Memberships> const more = deviations( "p1", expected, 0.1 );
            found.insert( found.end(), more.begin(), more.end() );
        }
        EXPECT_EQ( status( host ).igmpVersion(), version );
        std::vector<Memberships> const more = deviations( "p1", expected, span );
        found.insert( found.end(), more.begin(), more.end() );
        return found;
    }
};

TEST_F( BridgeThatIsOlder, HasEveryMembershipOfAVersion3HostWhileAndAfterItIs ) {
    IgmpHost& host = addHost( "h1", igmpVersion3 );
    host.v2RouterPresentTimeoutIs( olderVersionTime );
    join( host, "239.1.1.1", exclude );
    join( host, "239.1.1.2", exclude, { "10.9.9.3" } );
    Memberships expected{ { "239.1.1.1", excluding( {} ) }, { "239.1.1.2", excluding( { "10.9.9.3" } ) } };
    expectTable( expected );
    auto const v3Answers = [&] { return status( host ).v3CurrentStateReportSent(); };

    U32 const v2Reports = status( host ).v2ReportsSent();
    Memberships const withoutSources{ { "239.1.1.1", excluding( {} ) }, { "239.1.1.2", excluding( {} ) } };
    EXPECT_THAT( deviationsOn( 2, host, withoutSources, 4.0 ), IsEmpty() ); // which it does not tell then
    EXPECT_GE( status( host ).v2ReportsSent(), v2Reports + 4 );

    U32 const before = v3Answers();
    EXPECT_THAT( deviationsOn( 3, host, expected, 3.0 ), IsEmpty() );
    EXPECT_GE( v3Answers(), before + 2 );
    join( host, "232.1.1.1", include, { "10.9.9.1" } );
    expected["232.1.1.1"] = including( { "10.9.9.1" } );
    expectTable( expected );
}

} // namespace
