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
    BridgeVersion3() : BridgeTest( 3, { 300, 100, 100, 900 } ) {}

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

} // namespace
