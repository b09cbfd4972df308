#include "tests/model/replication/ReplicationTest.h"

namespace Igmp {

namespace {

class Replication : public ReplicationTest {
  protected:
    Ptr<IgmpHost> host( Model& model, char const* name = "rx" ) { return model.hosts->igmpHost( name ); }
};

TEST_F( Replication, AnEmptyModelIsMirrored ) {
    Link link( served_, mirror_ );
    exchange( link );
    EXPECT_TRUE( link.client->isSynchronised() );
    EXPECT_EQ( link.serverEnd + link.clientEnd, "" );
}

TEST_F( Replication, AHostWithGroupsAndSourcesIsMirrored ) {
    served_.host( "rx" ).mtuIs( 1400 );
    auto const record = served_.host( "rx" ).v3groupIs( IpAddr( "239.1.1.1" ) );
    record->sourceIs()->sourceIpIs( IpAddr( "10.9.9.1" ), 3 );
    record->versionIs( 2 );
    Link link( served_, mirror_ );
    exchange( link );
    ASSERT_TRUE( host( mirror_ ) );
    EXPECT_EQ( host( mirror_ )->mtu(), 1400U );
    expectSame( served_, mirror_ );
}

TEST_F( Replication, ChangesFollow ) {
    Link link( served_, mirror_ );
    exchange( link );
    served_.host( "rx" ).igmpVersionIs( igmpVersion3 );
    exchange( link );
    EXPECT_EQ( host( mirror_ )->igmpVersion(), igmpVersion3 );
    served_.hosts->igmpHostDel( "rx" );
    exchange( link );
    EXPECT_EQ( mirror_.hosts->igmpHosts(), 0U );
}

TEST_F( Replication, AWritableMirrorsChangesTravelBack ) {
    Link link( served_, mirror_ );
    exchange( link );
    mirror_.host( "rx" ).deviceNameIs( "eth7" );
    mirror_.host( "rx" )
        .v3groupIs( IpAddr( "239.1.1.1" ) )
        ->sourceIs()
        ->sourceIpIs( IpAddr( "10.0.0.9" ), 1 );
    exchange( link );
    ASSERT_TRUE( host( served_ ) );
    EXPECT_EQ( host( served_ )->deviceName(), "eth7" );
    expectSame( served_, mirror_ );
    EXPECT_EQ( link.serverEnd + link.clientEnd, "" );
}

} // namespace

} // namespace Igmp
