#include <algorithm>

#include "platform/kiv/Connection.h"
#include "platform/kiv/GenericIf.h"
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
    waitingAtClient,    ///< a client configures in the worst order while nothing can be sent
    waitingAtServer,    ///< the server does so; the hosts live on the mirror
};

bool
isOfServer( Way way ) {
    return way == Way::arrivingAsChanges || way == Way::waitingAtClient;
}

bool
isInWorstOrder( Way way ) {
    return way == Way::waitingAtClient || way == Way::waitingAtServer;
}

using Step = std::function<void()>;

/// Steps as they are to take effect, or the other way round.
void
inOrder( std::vector<Step> steps, bool isWorst ) {
    if ( isWorst ) {
        std::reverse( steps.begin(), steps.end() );
    }
    for ( Step const& step : steps ) {
        step();
    }
}

/// A world of hosts of its own, whose clock starts where that of every other one does.
class World : public Support::HostTest {
  public:
    World( Way way, IgmpVersion version ) : way_( way ), version_( version ) {}

    std::vector<SentFrame> run() {
        if ( way_ == Way::arrivingAsFullSend ) {
            create( *configured_ );
            configure( *configured_, false );
        }
        if ( way_ != Way::direct ) {
            connect();
        }
        if ( way_ != Way::arrivingAsFullSend ) {
            create( *configured_ );
            change( [this]( bool isWorst ) { configure( *configured_, isWorst ); } );
        }
        runUntilElapsed( 30.0 );
        change( [this]( bool isWorst ) { reconfigure( *configured_, isWorst ); } );
        runUntilElapsed( 90.0 );
        return sent();
    }
    void TestBody() override {}

  private:
    static Ptr<IgmpV3GroupRecord> group( IgmpHostDir& hosts, char const* addr ) {
        return hosts.igmpHostIs( "rx" )->v3groupIs( IpAddr( addr ) );
    }
    /// Each new host seeds the delays anew: the last one must be the one that is compared.
    void create( IgmpHostDir& hosts ) const {
        if ( isInWorstOrder( way_ ) ) {
            hosts.igmpHostIs( "prompt" );
        }
        group( hosts, "239.1.1.1" )->sourceIs();
    }
    void configure( IgmpHostDir& hosts, bool isWorst ) const {
        Ptr<IgmpHost> const host = hosts.igmpHostIs( "rx" );
        Ptr<IgmpV3GroupRecord> const record = group( hosts, "239.1.1.1" );
        std::vector<Step> steps = {
            [=] { host->ipAddrIs( IpAddr( "10.0.0.7" ) ); },
            [=] { host->macAddrIs( Zornet::EthAddr( "02:00:00:00:00:07" ) ); },
            [=] { host->deviceNameIs( "eth0" ); },
            [=, this] { host->igmpVersionIs( version_ ); },
            [=] { host->robustnessIs( 3 ); },
        };
        for ( char const* source : { "10.9.9.1", "10.9.9.2", "10.9.9.3" } ) {
            steps.push_back( [=] { record->source()->sourceIpIs( IpAddr( source ), 1 ); } );
        }
        steps.push_back( [=] { host->configVersionIs( 1 ); } );
        steps.push_back( [=] { host->intfConfigVersionIs( 1 ); } );
        steps.push_back( [=] { host->enabledIs( true ); } );
        steps.push_back( [=] { record->versionIs( 1 ); } );
        inOrder( steps, isWorst );
    }
    /// Another source for one that goes, a further group, and another address, while the host is at work.
    static void reconfigure( IgmpHostDir& hosts, bool isWorst ) {
        Ptr<IgmpHost> const host = hosts.igmpHostIs( "rx" );
        Ptr<IgmpV3GroupRecord> const record = group( hosts, "239.1.1.1" );
        inOrder(
            {
                [=] { host->ipAddrIs( IpAddr( "10.0.0.8" ) ); },
                [=] { record->source()->sourceIpDel( IpAddr( "10.9.9.1" ) ); },
                [=] { record->source()->sourceIpIs( IpAddr( "10.9.9.4" ), 1 ); },
                [=] { host->v3groupIs( IpAddr( "239.1.1.2" ) )->filterModeIs( IgmpV3GroupRecord::exclude ); },
                [=] {
                    host->v3groupIs( IpAddr( "239.1.1.2" ) )
                        ->sourceIs()
                        ->sourceIpIs( IpAddr( "10.9.9.9" ), 1 );
                },
                [=] { host->configVersionIs( 2 ); },
                [=] { record->versionIs( 2 ); },
                [=] { host->v3groupIs( IpAddr( "239.1.1.2" ) )->versionIs( 1 ); },
            },
            isWorst
        );
    }
    void connect() {
        bool const isServed = isOfServer( way_ );
        server_ = new Connection(
            sockets_.handOver( 0 ), Connection::Role::server, { { "hosts", isServed ? dir : other_, true } },
            "client"
        );
        client_ = new Connection(
            sockets_.handOver( 1 ), Connection::Role::client, { { "hosts", isServed ? other_ : dir, false } },
            "server"
        );
        turnsUntil( [this] { return client_->isSynchronised(); } );
    }
    /// Makes the change, and lets it arrive.
    template <class Change>
    void change( Change make ) {
        if ( way_ == Way::direct ) {
            make( false );
            return;
        }
        if ( isInWorstOrder( way_ ) ) {
            settleStreams();
            whileNothingCanBeSent( [&] { make( true ); } );
        } else {
            make( false );
        }
        settleStreams();
    }
    /// Within what an arriving change starts: until its frame has been applied, changes are but marked.
    void whileNothingCanBeSent( Step const& make ) {
        Ptr<Kiv::GenericIfAdapter> const prompted( new Kiv::GenericIfAdapter(
            configured_->igmpHost( "prompt" ), [&]( Kiv::AttributeId, auto const& ) { make(); }
        ) );
        dir->igmpHost( "prompt" )->mtuIs( 1000 + ++prompts_ );
        settleStreams();
    }
    void settleStreams() {
        turnsUntil( [this] { return server_->isSettled() && client_->isSettled(); } );
    }
    template <class Condition>
    void turnsUntil( Condition condition ) {
        for ( unsigned i = 0; i < 100 && !condition(); ++i ) {
            activity().runOnce();
        }
        EXPECT_TRUE( condition() );
    }

    Way const way_;
    IgmpVersion const version_;
    Ptr<IgmpHostDir> const other_ = igmpHostDirFactory( "other" );
    Ptr<IgmpHostDir> const configured_ = way_ == Way::direct ? dir : other_;
    Support::SocketPair sockets_;
    Ptr<Connection> server_;
    Ptr<Connection> client_;
    U32 prompts_ = 0;
};

class ReplicatedHost : public ::testing::TestWithParam<IgmpVersion> {
  protected:
    static std::vector<SentFrame> framesOf( Way way ) { return World( way, GetParam() ).run(); }
    /// The bytes must be the same; the times differ by the few turns that the stream took.
    static void expectSame( std::vector<SentFrame> const& direct, std::vector<SentFrame> const& replicated ) {
        ASSERT_EQ( direct.size(), replicated.size() );
        EXPECT_GE( direct.size(), 4U );
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

TEST_P( ReplicatedHost, SendsTheSameWhateverTheOrderOfAClientsChangesThatHadToWait ) {
    expectSame( framesOf( Way::direct ), framesOf( Way::waitingAtClient ) );
}

TEST_P( ReplicatedHost, SendsTheSameWhateverTheOrderOfAServersChangesThatHadToWait ) {
    expectSame( framesOf( Way::direct ), framesOf( Way::waitingAtServer ) );
}

INSTANTIATE_TEST_SUITE_P(
    , ReplicatedHost, ::testing::Values( igmpVersion1, igmpVersion2, igmpVersion3 ),
    []( auto const& version ) { return "Version" + std::to_string( version.param ); }
);

} // namespace

} // namespace Igmp
