#include "tests/queriers/FrrTest.h"

namespace Queriers {

namespace {

using namespace Igmp;
using ::testing::IsEmpty;
using Zornet::IpAddr;

Membership
including( std::set<std::string> const& sources ) {
    return { false, sources };
}

Membership
excluding( std::set<std::string> const& sources ) {
    return { true, sources };
}

class FrrVersion3 : public FrrTest {
  protected:
    FrrVersion3() : FrrTest( 3 ) {}
};

/// In the range of source-specific groups, 232/8, it takes no EXCLUDE (RFC 4604 section 2.2.1).
TEST_F( FrrVersion3, FollowsEveryChangeOfFilterModeAndSources ) {
    IgmpHost& host = addHost( "h0", igmpVersion3 );
    IgmpV3GroupRecord& some = join( host, "239.2.1.1", include, { "10.9.9.1", "10.9.9.2" } );
    IgmpV3GroupRecord& all = join( host, "239.1.1.1", exclude, { "10.9.9.3" } );
    expectTable( { { "239.2.1.1", including( { "10.9.9.1", "10.9.9.2" } ) },
                   { "239.1.1.1", excluding( { "10.9.9.3" } ) } } );

    some.source()->sourceIpIs( IpAddr( "10.9.9.5" ), 1 );
    raise( some );
    expectTable( { { "239.2.1.1", including( { "10.9.9.1", "10.9.9.2", "10.9.9.5" } ) },
                   { "239.1.1.1", excluding( { "10.9.9.3" } ) } } );

    some.source()->sourceIpDel( IpAddr( "10.9.9.1" ) );
    raise( some );
    some.filterModeIs( exclude );
    raise( some );
    all.filterModeIs( include );
    raise( all );
    expectTable( { { "239.2.1.1", excluding( { "10.9.9.2", "10.9.9.5" } ) },
                   { "239.1.1.1", including( { "10.9.9.3" } ) } } );

    host.v3groupDel( IpAddr( "239.2.1.1" ) );
    expectTable( { { "239.1.1.1", including( { "10.9.9.3" } ) } } );
    host.v3groupDel( IpAddr( "239.1.1.1" ) );
    join( host, "232.1.1.1", include, { "10.9.9.1" } );
    expectTable( { { "232.1.1.1", including( { "10.9.9.1" } ) } } );
    host.v3groupDel( IpAddr( "232.1.1.1" ) );
    expectTable( {} );
}

TEST_F( FrrVersion3, KeepsAllStateThroughTenQueryRounds ) {
    IgmpHost& host = addHost( "h0", igmpVersion3 );
    join( host, "232.1.1.1", include, { "10.9.9.1", "10.9.9.2" } );
    join( host, "239.1.1.1", exclude );
    join( addHost( "h0", igmpVersion3 ), "239.1.1.2", exclude, { "10.9.9.3" } );
    Memberships const expected{ { "232.1.1.1", including( { "10.9.9.1", "10.9.9.2" } ) },
                                { "239.1.1.1", excluding( {} ) },
                                { "239.1.1.2", excluding( { "10.9.9.3" } ) } };
    expectTable( expected );
    EXPECT_THAT( deviations( expected, 10 * queryInterval + 1.0 ), IsEmpty() );
    EXPECT_GE( status( host ).v3GeneralQueryReceived(), 10U );
}

TEST_F( FrrVersion3, LearnsHostsOfVersion2 ) {
    IgmpHost& host = addHost( "h0", igmpVersion2 );
    join( host, "239.1.1.1", exclude );
    join( host, "239.1.1.2", exclude );
    Memberships const both{ { "239.1.1.1", {} }, { "239.1.1.2", {} } };
    expectTable( both );
    EXPECT_THAT( deviations( both, 4 * queryInterval ), IsEmpty() );
    host.v3groupDel( IpAddr( "239.1.1.2" ) );
    expectTable( { { "239.1.1.1", {} } } );
}

TEST_F( FrrVersion3, FallsBackAndReturnsWithItsHosts ) {
    IgmpHost& host = addHost( "h0", igmpVersion3 );
    host.v2RouterPresentTimeoutIs( 2.5 * queryInterval );
    join( host, "239.1.1.1", exclude );
    join( host, "239.1.1.2", exclude, { "10.9.9.3" } );
    expectTable( { { "239.1.1.1", {} }, { "239.1.1.2", excluding( { "10.9.9.3" } ) } } );

    versionIs( 2 );
    expectTable( { { "239.1.1.1", {} }, { "239.1.1.2", {} } } );
    EXPECT_EQ( status( host ).igmpVersion(), igmpVersion2 );

    versionIs( 3 );
    expectTable( { { "239.1.1.1", {} }, { "239.1.1.2", excluding( { "10.9.9.3" } ) } } );
    EXPECT_EQ( status( host ).igmpVersion(), igmpVersion3 );
}

class FrrVersion2 : public FrrTest {
  protected:
    FrrVersion2() : FrrTest( 2 ) {}
};

TEST_F( FrrVersion2, KeepsWhatHostsOfVersions2And3JoinedThroughTenQueryRounds ) {
    IgmpHost& host = addHost( "h0", igmpVersion2 );
    join( host, "239.1.1.1", exclude );
    join( addHost( "h0", igmpVersion2 ), "239.1.1.1", exclude );
    join( addHost( "h0", igmpVersion3 ), "239.1.1.2", exclude );
    Memberships const expected{ { "239.1.1.1", {} }, { "239.1.1.2", {} } };
    expectTable( expected );
    EXPECT_THAT( deviations( expected, 10 * queryInterval + 1.0 ), IsEmpty() );
    EXPECT_GE( status( host ).v2GeneralQueryReceived(), 10U );
}

TEST_F( FrrVersion2, ALeaveEndsTheMembershipOfTheLastHostOnly ) {
    IgmpHost& first = addHost( "h0", igmpVersion2 );
    IgmpHost& second = addHost( "h0", igmpVersion2 );
    join( first, "239.1.1.1", exclude );
    join( second, "239.1.1.1", exclude );
    join( second, "239.1.1.2", exclude );
    Memberships const both{ { "239.1.1.1", {} }, { "239.1.1.2", {} } };
    expectTable( both );
    first.v3groupDel( IpAddr( "239.1.1.1" ) );
    EXPECT_THAT( deviations( both, 2 * queryInterval ), IsEmpty() );
    second.v3groupDel( IpAddr( "239.1.1.1" ) );
    expectTable( { { "239.1.1.2", {} } } );
    EXPECT_EQ( status( second ).v2LeavesSent(), 1U );
}

} // namespace

} // namespace Queriers
