#include "tests/model/replication/ReplicationTest.h"

#include <malloc.h>

#include <random>

#include "tests/support/TraceCapture.h"

namespace Igmp {

namespace {

using Kiv::Connection;
constexpr std::size_t frameBytes = 64 * 1024 + 12;

class Replication : public ReplicationTest {
  protected:
    Ptr<IgmpHost> host( Model& model, char const* name = "rx" ) { return model.hosts->igmpHost( name ); }
    static IgmpV3GroupRecord& group( Model& model, char const* addr ) {
        return *model.host( "rx" ).v3groupIs( IpAddr( addr ) );
    }
    /// A host with `count` groups of one source each.
    static void addHost( Model& model, std::string const& name, unsigned count ) {
        IgmpHost& host = *model.hosts->igmpHostIs( Kiv::Name( name ) );
        host.deviceNameIs( "eth0" );
        for ( unsigned i = 0; i < count; ++i ) {
            auto const record = host.v3groupIs( IpAddr::fromHost( 0xef010101U + i ) );
            record->sourceIs()->sourceIpIs( IpAddr( "10.9.9.1" ), 1 );
            record->versionIs( 1 );
        }
    }
    /// Notes the names of attributes as they change.
    static Ptr<Kiv::GenericIfAdapter>
    noting( Ptr<Kiv::Entity> const& entity, std::vector<std::string>& order ) {
        return new Kiv::GenericIfAdapter(
            entity,
            [&order, at = entity.get()]( Kiv::AttributeId id, auto const& ) {
                order.push_back( at->fwkType()->row( id )->name );
            }
        );
    }
    static void expectOpen( Link const& link ) { EXPECT_EQ( link.serverEnd + link.clientEnd, "" ); }
};

TEST_F( Replication, AnEmptyModelIsMirrored ) {
    Link link( served_, mirror_ );
    exchange( link );
    EXPECT_TRUE( link.client->isSynchronised() );
    EXPECT_TRUE( link.client->isWritable( "igmpHostDir" ) );
    EXPECT_FALSE( link.client->isWritable( "igmpHostStatusDir" ) );
    expectOpen( link );
}

TEST_F( Replication, TheEndOfTheFullSendIsToldOnce ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    EXPECT_EQ( link.client->role(), Connection::Role::client );
    EXPECT_EQ( link.client->peerName(), Kiv::String8( "server" ) );
    std::vector<std::size_t> hostsThen;
    link.client->onSynchronisedIs( [&] { hostsThen.push_back( mirror_.hosts->igmpHosts() ); } );
    exchange( link );
    served_.host( "later" );
    exchange( link );
    EXPECT_EQ( hostsThen, std::vector<std::size_t>{ 1 } );
}

TEST_F( Replication, EveryAttributeOfEveryClassArrives ) {
    fill( served_.host( "rx" ) );
    fill( group( served_, "239.1.1.1" ) );
    group( served_, "239.1.1.1" ).sourceIs()->sourceIpIs( IpAddr( "10.9.9.1" ), 3 );
    group( served_, "239.1.1.2" ).sourceIs();
    fill( *served_.status->igmpHostStatusIs( "rx" ) );
    Link link( served_, mirror_ );
    exchange( link );
    expectSame( served_, mirror_ );
    expectOpen( link );
}

TEST_F( Replication, EveryChangeOfEveryClassFollows ) {
    Link link( served_, mirror_ );
    exchange( link );
    fill( served_.host( "rx" ) );
    fill( group( served_, "239.1.1.1" ) );
    group( served_, "239.1.1.1" ).sourceIs()->sourceIpIs( IpAddr( "10.9.9.1" ), 3 );
    fill( *served_.status->igmpHostStatusIs( "rx" ) );
    exchange( link );
    expectSame( served_, mirror_ );
    group( served_, "239.1.1.1" ).source()->sourceIpDel( IpAddr( "10.9.9.1" ) );
    group( served_, "239.1.1.1" ).sourceDel();
    served_.status->igmpHostStatusDel( "rx" );
    exchange( link );
    expectSame( served_, mirror_ );
    served_.hosts->igmpHostDelAll();
    exchange( link );
    EXPECT_EQ( mirror_.hosts->igmpHosts(), 0U );
    expectOpen( link );
}

TEST_F( Replication, AWritableMirrorsChangesTravelBack ) {
    Link link( served_, mirror_ );
    exchange( link );
    fill( mirror_.host( "rx" ) );
    fill( group( mirror_, "239.1.1.1" ) );
    group( mirror_, "239.1.1.1" ).sourceIs()->sourceIpIs( IpAddr( "10.0.0.9" ), 1 );
    exchange( link );
    ASSERT_TRUE( host( served_ ) );
    expectSame( served_, mirror_ );
    mirror_.hosts->igmpHostDel( "rx" );
    exchange( link );
    EXPECT_EQ( served_.hosts->igmpHosts(), 0U );
    expectOpen( link );
}

TEST_F( Replication, AnArrivedChangeIsNotSentBack ) {
    Link link( served_, mirror_ );
    exchange( link );
    auto const make = []( Model& model ) {
        fill( model.host( "rx" ) );
        fill( group( model, "239.1.1.1" ) );
        group( model, "239.1.1.1" ).sourceIs()->sourceIpIs( IpAddr( "10.9.9.1" ), 3 );
    };
    auto const change = []( Model& model ) {
        model.host( "rx" ).mtuIs( 900 );
        group( model, "239.1.1.1" ).source()->sourceIpDel( IpAddr( "10.9.9.1" ) );
        group( model, "239.1.1.1" ).source()->sourceIpIs( IpAddr( "10.9.9.2" ), 3 );
    };
    auto const unmake = []( Model& model ) {
        group( model, "239.1.1.1" ).sourceDel();
        model.host( "rx" ).v3groupDel( IpAddr( "239.1.1.1" ) );
        model.hosts->igmpHostDel( "rx" );
    };
    for ( bool const isServers : { true, false } ) {
        Connection const& peer = isServers ? *link.client : *link.server;
        auto const before = peer.counters().messagesSent;
        for ( auto const& step : std::vector<std::function<void( Model& )>>{ make, change, unmake } ) {
            step( isServers ? served_ : mirror_ );
            exchange( link );
            EXPECT_EQ( peer.counters().messagesSent, before );
        }
    }
}

TEST_F( Replication, ReactorsHearAnArrivedChangeExactlyAsALocalOne ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    exchange( link );
    std::vector<std::string> here;
    std::vector<std::string> there;
    auto const listening = []( Ptr<IgmpHost> const& host, std::vector<std::string>& heard ) {
        return Ptr<Kiv::GenericIfAdapter>( new Kiv::GenericIfAdapter(
            host,
            [&heard, at = host.get()]( Kiv::AttributeId id, Kiv::GenericValue const& key ) {
                Kiv::Attribute const& row = *IgmpHost::_fwkType()->row( id );
                heard.push_back(
                    row.name + ( key.isNothing() ? "=" + Kiv::attributeText( row, *at )
                                                 : "[" + key.type->format( key.value ) + "]" )
                );
            }
        ) );
    };
    auto const local = listening( host( served_ ), here );
    auto const arrived = listening( host( mirror_ ), there );
    fill( *host( served_ ) );
    host( served_ )->mtuIs( 900 );
    host( served_ )->mtuIs( 900 ); // of which nobody hears
    group( served_, "239.1.1.1" );
    host( served_ )->v3groupDel( IpAddr( "239.1.1.1" ) );
    exchange( link );
    EXPECT_GT( here.size(), 20U );
    EXPECT_EQ( there, here );
}

TEST_F( Replication, AReactorsOwnChangeOfTheSameAttributeIsSentBack ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    exchange( link );
    Ptr<Kiv::GenericIfAdapter> const limiter( new Kiv::GenericIfAdapter(
        host( served_ ),
        [&]( Kiv::AttributeId id, auto const& ) {
            if ( id == IgmpHost::attrMtu && host( served_ )->mtu() > 1500 ) {
                host( served_ )->mtuIs( 1500 );
            }
        }
    ) );
    host( mirror_ )->mtuIs( 9000 );
    exchange( link );
    EXPECT_EQ( host( served_ )->mtu(), 1500U );
    EXPECT_EQ( host( mirror_ )->mtu(), 1500U );
}

TEST_F( Replication, WhatAnnouncesArrivesLast ) {
    Link link( served_, mirror_ );
    exchange( link );
    link.cut();
    fill( served_.host( "rx" ) );
    fill( group( served_, "239.1.1.1" ) );
    group( served_, "239.1.1.1" ).sourceIs()->sourceIpIs( IpAddr( "10.9.9.1" ), 1 );
    mirror_.host( "rx" ); // so that a watcher can stand there before anything arrives
    auto const record = mirror_.host( "rx" ).v3groupIs( IpAddr( "239.1.1.1" ) );
    auto const sources = record->sourceIs();
    std::vector<std::string> order;
    [[maybe_unused]] auto const watchers = { noting( host( mirror_ ), order ), noting( record, order ),
                                             noting( sources, order ) };
    Link again( served_, mirror_ );
    exchange( again );
    ASSERT_GE( order.size(), 10U );
    std::vector<std::string> const last( order.end() - 4, order.end() );
    EXPECT_EQ(
        last, ( std::vector<std::string>{ "configVersion", "intfConfigVersion", "enabled", "version" } )
    );
    EXPECT_EQ( *( order.end() - 5 ), "sourceIp" );
}

TEST_F( Replication, AChangeDoesNotOvertakeThoseThatWait ) {
    Model other;
    auto const list = group( served_, "239.1.1.1" ).sourceIs();
    Link a( served_, mirror_ );
    Link b( served_, other );
    exchange( a );
    exchange( b );
    Ptr<Kiv::GenericIfAdapter> const reactor( new Kiv::GenericIfAdapter(
        host( served_ ), [&]( Kiv::AttributeId, auto const& ) { list->sourceIpIs( IpAddr( "10.9.9.2" ), 1 ); }
    ) );
    std::vector<std::string> order;
    auto const record = host( mirror_ )->v3group( IpAddr( "239.1.1.1" ) );
    [[maybe_unused]] auto const watchers = { noting( record, order ), noting( record->source(), order ) };
    host( mirror_ )->mtuIs( 700 );              // while it is applied the source is but marked
    group( other, "239.1.1.1" ).versionIs( 7 ); // arrives in the same turn, behind it
    exchange( a );
    EXPECT_EQ( order, ( std::vector<std::string>{ "sourceIp", "version" } ) );
}

TEST_F( Replication, AFullBufferCostsMarksAndTheLatestValueGoesOnce ) {
    Ptr<Kiv::ActivityConfig> const asleep( new Kiv::ActivityConfig );
    Link link( served_, mirror_, true, asleep );
    clientTurns( asleep, 10 );
    served_.host( "rx" );
    clientTurns( asleep, 10 );
    for ( unsigned i = 0; i < 1'500; ++i ) {
        addHost( served_, "h" + std::to_string( i ), 3 );
        turns( i % 50 == 0 ? 1 : 0 );
    }
    auto const before = link.server->counters().messagesSent;
    for ( U32 mtu = 100; mtu < 300; ++mtu ) {
        host( served_ )->mtuIs( mtu );
        turns( mtu % 50 == 0 ? 1 : 0 );
    }
    EXPECT_EQ( link.server->counters().messagesSent, before );
    EXPECT_LE( link.server->outputBytes(), Connection::outputLimit + frameBytes );
    auto const& plan = Kiv::NboAttrLog::Plan::of( *IgmpHost::_fwkType() );
    auto const* const flow = adapterOf( *host( served_ ) ).flowOut();
    EXPECT_TRUE( flow && flow->kivIsDirty( plan.index( *plan.find( IgmpHost::attrMtu ) ) ) );
    unsigned told = 0;
    Ptr<Kiv::GenericIfAdapter> const watcher(
        new Kiv::GenericIfAdapter( host( mirror_ ), [&]( Kiv::AttributeId, auto const& ) { ++told; } )
    );
    clientTurns( asleep, 60 );
    EXPECT_EQ( told, 1U );
    expectSame( served_, mirror_ );
}

/// A queued copy of each change would cost some 30 bytes a change, here more than 2 MB.
TEST_F( Replication, APeerThatDoesNotReadCostsTheSameForManyChangesAsForFew ) {
    Ptr<Kiv::ActivityConfig> const asleep( new Kiv::ActivityConfig );
    for ( unsigned i = 0; i < 200; ++i ) {
        addHost( served_, "h" + std::to_string( i ), 3 );
    }
    Link link( served_, mirror_, true, asleep );
    clientTurns( asleep, 20 );
    ASSERT_TRUE( link.client->isSynchronised() );
    auto const changeRound = [&]( U32 round ) {
        for ( IgmpHost& host : served_.hosts->igmpHost() ) {
            auto const record = host.v3groupIs( IpAddr( "239.1.1.1" ) );
            host.mtuIs( 100 + round );
            host.configVersionIs( 100 + round );
            record->sourceIs()->sourceIpIs( IpAddr( "10.9.9.1" ), static_cast<U8>( round ) );
            record->versionIs( 100 + round );
            host.v3groupIs( IpAddr( "239.2.2.2" ) );
            host.v3groupDel( IpAddr( "239.2.2.2" ) );
        }
        turns( 1 );
    };
    U32 round = 0;
    while ( link.server->outputBytes() < Connection::outputLimit ) {
        ASSERT_LT( round, 1'000U );
        changeRound( round++ );
    }
    changeRound( round++ );
    auto const before = mallinfo2().uordblks;
    for ( U32 const end = round + 100; round < end; ) {
        changeRound( round++ );
    }
    EXPECT_LT( mallinfo2().uordblks, before + 64 * 1024 );
    EXPECT_LE( link.server->outputBytes(), Connection::outputLimit + frameBytes );
    clientTurns( asleep, 60 );
    expectSame( served_, mirror_ );
    expectOpen( link );
}

TEST_F( Replication, AKeyThatChangedManyTimesWhileNothingCouldBeSentGoesOnce ) {
    auto const list = group( served_, "239.1.1.1" ).sourceIs();
    Link link( served_, mirror_ );
    exchange( link );
    list->sourceIpIs( IpAddr( "10.9.9.2" ), 1 );
    exchange( link );
    auto const before = link.server->counters().messagesSent;
    Ptr<Kiv::GenericIfAdapter> const flood( new Kiv::GenericIfAdapter(
        host( served_ ),
        [&]( Kiv::AttributeId, auto const& ) {
            for ( U8 i = 2; i < 100; ++i ) {
                list->sourceIpIs( IpAddr( "10.9.9.2" ), i );
            }
        }
    ) );
    host( mirror_ )->mtuIs( 700 ); // its application at the server starts the flood
    exchange( link );
    EXPECT_EQ( link.server->counters().messagesSent, before + 1 );
    expectSame( served_, mirror_ );
}

TEST_F( Replication, AFullBufferHoldsBackMembersAndTheirDeletion ) {
    Ptr<Kiv::ActivityConfig> const asleep( new Kiv::ActivityConfig );
    Link link( served_, mirror_, true, asleep );
    clientTurns( asleep, 10 );
    for ( unsigned i = 0; i < 1'500; ++i ) {
        addHost( served_, "h" + std::to_string( i ), 2 );
        turns( i % 50 == 0 ? 1 : 0 );
    }
    auto const before = link.server->counters().messagesSent;
    served_.hosts->igmpHostDelAll();
    addHost( served_, "last", 1 );
    turns( 5 );
    EXPECT_EQ( link.server->counters().messagesSent, before );
    EXPECT_LE( link.server->outputBytes(), Connection::outputLimit + frameBytes );
    clientTurns( asleep, 60 );
    EXPECT_EQ( mirror_.hosts->igmpHosts(), 1U );
    expectSame( served_, mirror_ );
    expectOpen( link );
}

TEST_F( Replication, AReconnectingPeerConverges ) {
    addHost( served_, "stays", 3 );
    addHost( served_, "goes", 2 );
    Link first( served_, mirror_ );
    exchange( first );
    first.cut();
    served_.hosts->igmpHostDel( "goes" );
    auto const stays = served_.hosts->igmpHost( "stays" );
    stays->v3groupDel( IpAddr( "239.1.1.1" ) );
    stays->v3group( IpAddr( "239.1.1.2" ) )->source()->sourceIpDel( IpAddr( "10.9.9.1" ) );
    stays->v3group( IpAddr( "239.1.1.3" ) )->sourceDel();
    stays->deviceNameIs( "" ); // back to its default
    addHost( served_, "comes", 1 );
    mirror_.host( "local" );
    Link second( served_, mirror_ );
    exchange( second );
    expectSame( served_, mirror_ );
    EXPECT_FALSE( mirror_.hosts->igmpHost( "goes" ) );
    expectOpen( second );
}

TEST_F( Replication, AMemberThatBothHoldIsKeptOverAReconnection ) {
    addHost( served_, "rx", 1 );
    Link first( served_, mirror_ );
    exchange( first );
    first.cut();
    Ptr<IgmpHost> const before = host( mirror_ );
    Link second( served_, mirror_ );
    exchange( second );
    EXPECT_EQ( host( mirror_ ), before );
}

TEST_F( Replication, AFullSendThatIsCutAgainAndAgainConvergesInTheEnd ) {
    for ( unsigned i = 0; i < 300; ++i ) {
        addHost( served_, "h" + std::to_string( i ), 3 );
    }
    unsigned cuts = 0;
    for ( unsigned lasting = 1; mirror_.text() != served_.text(); ++lasting ) {
        ASSERT_LT( lasting, 100U );
        Link link( served_, mirror_ );
        turns( lasting );
        cuts += link.client->isSynchronised() ? 0 : 1;
        served_.hosts->igmpHostDel( Kiv::Name( "h" + std::to_string( lasting ) ) );
        addHost( served_, "later" + std::to_string( lasting ), 1 );
        turns( lasting );
    }
    EXPECT_GE( cuts, 1U );
    Link last( served_, mirror_ );
    exchange( last );
    expectSame( served_, mirror_ );
}

TEST_F( Replication, WhatIsPutIntoANewMirrorTooEarlyIsLost ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    mirror_.host( "early" );
    mirror_.host( "rx" ).mtuIs( 900 );
    exchange( link );
    EXPECT_FALSE( served_.hosts->igmpHost( "early" ) );
    EXPECT_EQ( host( served_ )->mtu(), 1514U );
    expectSame( served_, mirror_ );
    expectOpen( link );
}

TEST_F( Replication, NothingIsSaidWhereNothingHappens ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    exchange( link );
    auto const before = link.server->counters().bytesSent + link.client->counters().bytesSent;
    turns( 20 );
    EXPECT_EQ( link.server->counters().bytesSent + link.client->counters().bytesSent, before );
}

TEST_F( Replication, TheLastWriteWinsWhereTwoCross ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    exchange( link );
    host( served_ )->mtuIs( 1000 );
    host( mirror_ )->mtuIs( 2000 );
    exchange( link );
    EXPECT_EQ( host( served_ )->mtu(), 2000U );
    expectSame( served_, mirror_ );
}

TEST_F( Replication, AKeyThatWaitsToBeSentIsNewerThanWhatArrives ) {
    IpAddr const source( "10.9.9.2" );
    auto const here = group( served_, "239.1.1.1" ).sourceIs();
    Link link( served_, mirror_ );
    exchange( link );
    auto const there = group( mirror_, "239.1.1.1" ).source();
    Ptr<Kiv::GenericIfAdapter> const writer( new Kiv::GenericIfAdapter(
        host( mirror_ ),
        [&]( Kiv::AttributeId, auto const& ) {
            there->sourceIpIs( source, 5 );
            EXPECT_TRUE( adapterOf( *there ).hasDirtyAttributes() );
        }
    ) );
    host( served_ )->mtuIs( 700 ); // its application at the mirror writes the key
    here->sourceIpIs( source, 9 ); // which arrives in the same frame, behind it
    exchange( link );
    EXPECT_EQ( here->sourceIp( source ), 5 );
    EXPECT_FALSE( adapterOf( *there ).hasDirtyAttributes() );
    expectSame( served_, mirror_ );
}

TEST_F( Replication, AReactorMayRunTheLoop ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    exchange( link );
    Ptr<Kiv::GenericIfAdapter> const runner( new Kiv::GenericIfAdapter(
        host( mirror_ ),
        [&]( Kiv::AttributeId, auto const& ) {
            served_.host( "meanwhile" );
            mirror_.host( "too" );
            turns( 4 );
            EXPECT_FALSE( mirror_.hosts->igmpHost( "meanwhile" ) ); // one thing is applied at a time
        }
    ) );
    host( served_ )->mtuIs( 700 );
    exchange( link );
    EXPECT_EQ( mirror_.hosts->igmpHosts(), 3U );
    expectSame( served_, mirror_ );
    expectOpen( link );
}

TEST_F( Replication, OfTwoWritersTheLastThatTheServerHearsWins ) {
    Model other;
    served_.host( "rx" );
    Link a( served_, mirror_ );
    Link b( served_, other );
    exchange( a );
    exchange( b );
    U32 last = 0;
    Ptr<Kiv::GenericIfAdapter> const listener( new Kiv::GenericIfAdapter(
        host( served_ ), [&]( Kiv::AttributeId, auto const& ) { last = host( served_ )->mtu(); }
    ) );
    auto const expectLast = [&]( U32 mtu ) {
        exchange( a );
        exchange( b );
        EXPECT_EQ( last, mtu );
        EXPECT_EQ( host( served_ )->mtu(), mtu );
        expectSame( served_, mirror_ );
        expectSame( served_, other );
    };
    host( mirror_ )->mtuIs( 1000 );
    host( other )->mtuIs( 2000 ); // on its way at the same time: who is last, the server's reading decides
    exchange( a );
    expectLast( last );
    EXPECT_TRUE( last == 1000 || last == 2000 );
    host( mirror_ )->mtuIs( 3000 );
    exchange( a );
    host( other )->mtuIs( 4000 );
    expectLast( 4000 );
    host( other )->mtuIs( 5000 );
    exchange( b );
    host( mirror_ )->mtuIs( 6000 );
    expectLast( 6000 );
}

TEST_F( Replication, AMemberThatBothMakeAtOnceConverges ) {
    Link link( served_, mirror_ );
    exchange( link );
    addHost( served_, "rx", 2 );
    served_.host( "rx" ).mtuIs( 700 );
    mirror_.host( "rx" ).robustnessIs( 5 );
    group( mirror_, "239.1.1.1" ).sourceIs()->sourceIpIs( IpAddr( "10.8.8.8" ), 1 );
    group( mirror_, "239.5.5.5" ).versionIs( 4 );
    exchange( link );
    expectSame( served_, mirror_ );
    EXPECT_EQ( host( served_ )->mtu(), 700U );
    EXPECT_EQ( host( served_ )->robustness(), 5U );
    EXPECT_EQ( host( served_ )->v3groups(), 3U );
    expectOpen( link );
}

TEST_F( Replication, AChangeWithinADeletedMemberIsLost ) {
    addHost( served_, "rx", 2 );
    Link link( served_, mirror_ );
    exchange( link );
    Ptr<IgmpHost> const held = host( mirror_ );
    served_.hosts->igmpHostDel( "rx" );
    held->mtuIs( 999 );
    held->v3groupIs( IpAddr( "239.7.7.7" ) )->versionIs( 1 );
    exchange( link );
    EXPECT_EQ( served_.hosts->igmpHosts() + mirror_.hosts->igmpHosts(), 0U );
    expectOpen( link );
}

TEST_F( Replication, AChangeOfAReadOnlyMirrorStaysThere ) {
    served_.host( "rx" );
    Link link( served_, mirror_, false );
    exchange( link );
    Support::TraceCapture const trace( "Replication", 1 );
    host( mirror_ )->mtuIs( 999 );
    mirror_.hosts->igmpHostIs( "other" );
    exchange( link );
    EXPECT_EQ( host( served_ )->mtu(), 1514U );
    EXPECT_EQ( served_.hosts->igmpHosts(), 1U );
    EXPECT_EQ( host( mirror_ )->mtu(), 999U );
    EXPECT_TRUE( trace.contains( "replication with server: attempting to modify a read-only mirror: mtu" ) );
    EXPECT_TRUE( trace.contains( "attempting to modify a read-only mirror: igmpHost" ) );
    expectOpen( link );
    host( served_ )->mtuIs( 1000 );
    exchange( link );
    EXPECT_EQ( host( mirror_ )->mtu(), 1000U );
    served_.hosts->igmpHostDel( "rx" );
    exchange( link );
    EXPECT_FALSE( host( mirror_ ) );
}

TEST_F( Replication, SettledMeansThatTheServerHasApplied ) {
    Link link( served_, mirror_ );
    exchange( link );
    unsigned settled = 0;
    link.client->onSettledIs( [&] {
        ++settled;
        EXPECT_TRUE( host( served_ ) && host( served_ )->mtu() == 999U );
    } );
    mirror_.host( "rx" ).mtuIs( 999 );
    EXPECT_FALSE( link.client->isSettled() );
    exchange( link );
    EXPECT_TRUE( link.client->isSettled() );
    EXPECT_EQ( settled, 1U );
}

TEST_F( Replication, APeerThatGoesEndsItsOwnStreamOnce ) {
    Model other;
    Link a( served_, mirror_ );
    Link b( served_, other );
    exchange( a );
    exchange( b );
    unsigned ends = 0;
    a.server->onEndIs( [&]( Kiv::String8 const& reason ) {
        ++ends;
        EXPECT_EQ( reason, "peer closed the stream" );
        a.server = nullptr;
    } );
    a.client = nullptr;
    turns( 5 );
    EXPECT_EQ( ends, 1U );
    served_.host( "rx" ).mtuIs( 999 );
    exchange( b );
    expectSame( served_, other );
}

TEST_F( Replication, AnEndIsToldWithItsReason ) {
    Link link( served_, mirror_ );
    exchange( link );
    link.server->end( "enough" );
    EXPECT_EQ( link.serverEnd, "" ); // not from within the call
    turns( 5 );
    EXPECT_EQ( link.serverEnd, "enough" );
    EXPECT_EQ( link.clientEnd, "peer: enough" );
    EXPECT_EQ( link.client->endReason(), "peer: enough" );
}

TEST_F( Replication, AnUnknownMountEndsTheStream ) {
    Support::SocketPair sockets;
    Ptr<Connection> const server(
        new Connection( sockets.handOver( 0 ), Connection::Role::server, served_.mounts( true ), "c" )
    );
    Ptr<Connection> const client( new Connection(
        sockets.handOver( 1 ), Connection::Role::client, { { "none", mirror_.hosts, false } }, "s"
    ) );
    turns( 5 );
    EXPECT_EQ( server->endReason(), "there is no mount none" );
    EXPECT_EQ( client->endReason(), "peer: there is no mount none" );
}

TEST_F( Replication, ATextThatNoStreamMayCarryEndsTheStreamAndNothingElse ) {
    Link link( served_, mirror_ );
    exchange( link );
    served_.host( "rx" ).deviceNameIs( Kiv::String8( std::string( 20'000, 'x' ) ) );
    turns( 5 );
    EXPECT_EQ( link.serverEnd, "text is too long" );
    EXPECT_EQ( host( served_ )->deviceName().bytes(), 20'000U );
}

TEST_F( Replication, ATextThatNoStreamMayCarryEndsTheStreamWhenItsTurnToBeSentComes ) {
    served_.host( "rx" );
    Link link( served_, mirror_ );
    exchange( link );
    Ptr<Kiv::GenericIfAdapter> const writer( new Kiv::GenericIfAdapter(
        host( served_ ),
        [&]( Kiv::AttributeId id, auto const& ) {
            if ( id == IgmpHost::attrMtu ) {
                host( served_ )->deviceNameIs( Kiv::String8( std::string( 20'000, 'x' ) ) );
            }
        }
    ) );
    host( mirror_ )->mtuIs( 700 ); // nothing is sent while it is applied at the server
    turns( 5 );
    EXPECT_EQ( link.serverEnd, "text is too long" );
}

/// Random changes on a server and two writable mirrors, with the streams at rest only in the end.
TEST_F( Replication, RandomChangesOnAllSidesConverge ) {
    for ( unsigned seed = 1; seed <= 30; ++seed ) {
        Model models[3];
        Link a( models[0], models[1] );
        Link b( models[0], models[2] );
        if ( seed % 3 != 0 ) {
            exchange( a );
            exchange( b );
        }
        std::minstd_rand random( seed );
        auto const draw = [&]( unsigned below ) { return static_cast<unsigned>( random() % below ); };
        for ( unsigned step = 0; step < 120; ++step ) {
            IgmpHostDir& dir = *models[draw( 3 )].hosts;
            Kiv::Name const name( "h" + std::to_string( draw( 3 ) ) );
            IpAddr const addr = IpAddr::fromHost( 0xef010101U + draw( 3 ) );
            unsigned const kind = draw( 12 );
            if ( kind == 0 ) {
                dir.igmpHostDel( name );
            } else if ( kind == 1 ) {
                turns( draw( 4 ) );
            } else if ( Ptr<IgmpHost> const host = dir.igmpHostIs( name ); kind < 4 ) {
                host->mtuIs( draw( 100 ) );
            } else if ( kind == 4 ) {
                host->v3groupDel( addr );
            } else if ( auto const record = host->v3groupIs( addr ); kind < 6 ) {
                record->versionIs( draw( 100 ) );
            } else if ( kind == 6 ) {
                record->sourceDel();
            } else if ( kind < 9 ) {
                record->sourceIs()->sourceIpIs( addr, static_cast<U8>( draw( 200 ) ) );
            } else {
                record->sourceIs()->sourceIpDel( addr );
            }
        }
        exchange( a );
        exchange( b );
        exchange( a );
        expectOpen( a );
        expectOpen( b );
        EXPECT_EQ( models[1].text(), models[0].text() ) << "seed " << seed;
        EXPECT_EQ( models[2].text(), models[0].text() ) << "seed " << seed;
    }
}

} // namespace

} // namespace Igmp
