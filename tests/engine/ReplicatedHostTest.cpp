#include "platform/kiv/Connection.h"
#include "tests/support/HostTest.h"
#include "tests/support/SocketPair.h"

namespace Igmp {

namespace {

using Kiv::Connection;
using Support::SentFrame;
using Zornet::IpAddr;

enum class Way {
    direct,
    arrivingAsChanges,  ///< a client configures, attribute by attribute; the server has the hosts
    arrivingAsFullSend, ///< the server has been configured before; the hosts live on the mirror
};

/// A world of hosts of its own, whose clock starts where that of every other one does.
class World : public Support::HostTest {
  public:
    std::vector<SentFrame> run( Way way, IgmpVersion version ) {
        if ( way == Way::direct ) {
            configure( *dir, version );
        } else {
            replicate( way, version );
        }
        runFor( 60.0 );
        return sent();
    }
    void TestBody() override {}

  private:
    /// In the order in which the loader of scenarios works.
    static void configure( IgmpHostDir& hosts, IgmpVersion version ) {
        Ptr<IgmpHost> const host = hosts.igmpHostIs( "rx" );
        host->ipAddrIs( IpAddr( "10.0.0.7" ) );
        host->macAddrIs( Zornet::EthAddr( "02:00:00:00:00:07" ) );
        host->deviceNameIs( "eth0" );
        host->igmpVersionIs( version );
        host->robustnessIs( 3 );
        Ptr<IgmpV3GroupRecord> const record = host->v3groupIs( IpAddr( "239.1.1.1" ) );
        for ( char const* source : { "10.9.9.1", "10.9.9.2", "10.9.9.3" } ) {
            record->sourceIs()->sourceIpIs( IpAddr( source ), 1 );
        }
        host->configVersionIs( 1 );
        host->intfConfigVersionIs( 1 );
        host->enabledIs( true );
        record->versionIs( 1 );
    }
    void replicate( Way way, IgmpVersion version ) {
        Ptr<IgmpHostDir> const other = igmpHostDirFactory( "other" );
        bool const isServed = way == Way::arrivingAsChanges;
        if ( !isServed ) {
            configure( *other, version );
        }
        Support::SocketPair sockets;
        Ptr<Connection> const server( new Connection(
            sockets.handOver( 0 ), Connection::Role::server, { { "hosts", isServed ? dir : other, true } },
            "client"
        ) );
        Ptr<Connection> const client( new Connection(
            sockets.handOver( 1 ), Connection::Role::client, { { "hosts", isServed ? other : dir, false } },
            "server"
        ) );
        turnsUntil( [&] { return client->isSynchronised(); } );
        if ( isServed ) {
            configure( *other, version );
            turnsUntil( [&] { return client->isSettled(); } );
        }
    }
    template <class Condition>
    void turnsUntil( Condition condition ) {
        for ( unsigned i = 0; i < 100 && !condition(); ++i ) {
            activity().runOnce();
        }
        EXPECT_TRUE( condition() );
    }
};

class ReplicatedHost : public ::testing::TestWithParam<IgmpVersion> {
  protected:
    static std::vector<SentFrame> framesOf( Way way ) { return World().run( way, GetParam() ); }
    /// The bytes must be the same; the times differ by the few turns that the stream took.
    static void expectSame( std::vector<SentFrame> const& direct, std::vector<SentFrame> const& replicated ) {
        ASSERT_EQ( direct.size(), replicated.size() );
        EXPECT_GE( direct.size(), 2U );
        for ( std::size_t i = 0; i < direct.size(); ++i ) {
            EXPECT_EQ( direct[i].bytes, replicated[i].bytes ) << Support::describe( replicated[i].bytes );
            EXPECT_NEAR( direct[i].elapsed, replicated[i].elapsed, 1e-3 );
        }
    }
};

TEST_P( ReplicatedHost, SendsWhatAHostConfiguredDirectlySends ) {
    expectSame( framesOf( Way::direct ), framesOf( Way::arrivingAsChanges ) );
}

TEST_P( ReplicatedHost, SendsTheSameWhereItArrivesInFull ) {
    expectSame( framesOf( Way::direct ), framesOf( Way::arrivingAsFullSend ) );
}

INSTANTIATE_TEST_SUITE_P(
    , ReplicatedHost, ::testing::Values( igmpVersion1, igmpVersion2, igmpVersion3 ),
    []( auto const& version ) { return "Version" + std::to_string( version.param ); }
);

} // namespace

} // namespace Igmp
