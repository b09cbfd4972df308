/// Which groups a report of version 3 asks.

#include <random>
#include <sstream>

#include "engine/Trace.h"
#include "tests/engine/V3Test.h"
#include "tests/support/HostChecks.h"

namespace {

using namespace Igmp;
using Support::Delivery;
using Support::TraceCapture;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Ne;
using ::testing::SizeIs;
using Zornet::IpAddr;

class OwingGroups : public V3Test {
  protected:
    static constexpr char const* other = "239.1.1.2";

    std::vector<std::string> owing() {
        std::vector<std::string> groups;
        for ( auto const& place : sender().owing() ) {
            groups.push_back( textOf( place.key ) );
        }
        return groups;
    }
    void processChanges( bool value ) {
        host().processV3GroupChangeIs( value );
        settle();
    }
    void report() {
        sender().doSetTimer( 0.0 );
        settle();
    }
    void versionIs( IgmpVersion version ) {
        host().igmpVersionIs( version );
        settle();
    }
};

INSTANTIATE_DELIVERY_TESTS( OwingGroups );

TEST_P( OwingGroups, ChangeIsAskedForUntilItsLastReport ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    EXPECT_THAT( owing(), IsEmpty() );
    addSources( G, { a } );
    EXPECT_THAT( sent(), SizeIs( 1 ) );
    EXPECT_THAT( owing(), ElementsAre( G ) );
    runFor( 20.0 );
    EXPECT_THAT( sent(), SizeIs( 2 ) );
    EXPECT_THAT( owing(), IsEmpty() );
}

TEST_P( OwingGroups, ChangesOfDifferentTimesAreToldInTheOrderOfTheMachines ) {
    auto const order = groupsInOrder( 9 );
    excludeAll( order );
    enableAndRest();
    block();
    for ( unsigned i : { 4U, 7U, 1U } ) {
        addSources( order[i].c_str(), { a } );
    }
    host().blockedIs( false );
    addSources( order[2].c_str(), { a } );
    addSources( order[8].c_str(), { a } );
    std::string const last = Support::describe( sent().back().bytes );
    std::vector<std::size_t> places;
    for ( unsigned i : { 1U, 2U, 4U, 7U, 8U } ) {
        places.push_back( last.find( "BLOCK " + order[i] + " " ) );
    }
    EXPECT_THAT( places, Each( Ne( std::string::npos ) ) ) << last;
    EXPECT_TRUE( std::ranges::is_sorted( places ) ) << last;
}

/// A source that a list got from outside tells whether its group was asked: a report would take it off.
TEST_P( OwingGroups, ReportOfOneGroupAsksNoOther ) {
    auto const others = groupsInOrder( 200 );
    excludeAll( others );
    exclude( S );
    enableAndRest();
    for ( std::string const& group : others ) {
        groupSm( group.c_str() ).addedSourceTransCount()->sourceIpIs( IpAddr( a ), 1 );
    }
    addSources( S, { b } );
    runFor( 20.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "BLOCK 232.1.1.1 {10.9.9.2}", "BLOCK 232.1.1.1 {10.9.9.2}" ) );
    for ( std::string const& group : others ) {
        EXPECT_TRUE( groupSm( group.c_str() ).isStateChanged() ) << group;
    }
}

TEST_P( OwingGroups, DetailedTraceHasALineOfEveryGroup ) {
    auto const others = groupsInOrder( 20 );
    excludeAll( others );
    enableAndRest();
    TraceCapture trace( "IgmpHost", traceDetail );
    addSources( G, { a } );
    EXPECT_EQ(
        std::ranges::count( trace.texts(), "Added sourceIps=0 Deleted sourceIps=0 FilterModeTransCount=0" ),
        19
    );
}

TEST_P( OwingGroups, PeriodicReportAsksEveryGroup ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    setPeriodic( 5.0 );
    runFor( 5.5 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}, IS_EX 239.1.1.2 {}" ) );
    EXPECT_THAT( owing(), IsEmpty() );
}

TEST_P( OwingGroups, CountThatIsSetIsAskedFor ) {
    exclude( G );
    enableAndRest();
    groupSm().filterModeTransCountIs( 1 );
    EXPECT_THAT( owing(), ElementsAre( G ) );
    report();
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}" ) );
    EXPECT_THAT( owing(), IsEmpty() );
}

TEST_P( OwingGroups, GroupThatIsRemovedAndBackIsLetGo ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    processChanges( false );
    removeGroup();
    EXPECT_THAT( owing(), ElementsAre( G ) );
    exclude( G );
    report();
    EXPECT_THAT( owing(), IsEmpty() );
    EXPECT_TRUE( hasGroupSm() );
}

// Groups that go without a leave.

TEST_P( OwingGroups, GroupRemovedWhileChangesAreNotProcessedIsDroppedByTheNextReport ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    processChanges( false );
    removeGroup();
    EXPECT_TRUE( sender().knowsOwing() );
    EXPECT_TRUE( hasGroupSm() );
    report();
    EXPECT_FALSE( hasGroupSm() );
    EXPECT_TRUE( hasGroupSm( other ) );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( OwingGroups, GroupRemovedUnheardIsDroppedByTheNextReport ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    sm().hasNotificationActiveIs( false );
    removeGroup();
    sm().hasNotificationActiveIs( true );
    EXPECT_FALSE( sender().knowsOwing() );
    report();
    EXPECT_FALSE( hasGroupSm() );
    EXPECT_TRUE( hasGroupSm( other ) );
    EXPECT_TRUE( sender().knowsOwing() );
}

TEST_P( OwingGroups, GroupRemovedUnheardIsNotTakenForTheOneThatIsTold ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    processChanges( false );
    removeGroup( other );
    sm().hasNotificationActiveIs( false );
    removeGroup();
    sm().hasNotificationActiveIs( true );
    host().v3groupNotify( IpAddr( other ) );
    settle();
    EXPECT_FALSE( sender().knowsOwing() );
    report();
    EXPECT_THAT( sender().v3GroupSms(), 0U );
}

TEST_P( OwingGroups, GroupRemovedUnheardIsNotTakenForOneThatIsStillThere ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    processChanges( false );
    sm().hasNotificationActiveIs( false );
    removeGroup();
    sm().hasNotificationActiveIs( true );
    host().v3groupNotify( IpAddr( other ) );
    settle();
    report();
    EXPECT_FALSE( hasGroupSm() );
    EXPECT_TRUE( hasGroupSm( other ) );
}

/// Between the removal and its delivery the report comes first.
TEST_P( OwingGroups, ReportBeforeTheRemovalIsToldDropsTheMachine ) {
    exclude( G );
    enableAndRest();
    sm().hasNotificationActiveIs( false );
    removeGroup();
    report();
    EXPECT_FALSE( hasGroupSm() );
    sm().hasNotificationActiveIs( true );
}

TEST_P( OwingGroups, MachineMadeForNoGroupIsDroppedByTheNextReport ) {
    exclude( other );
    enableAndRest();
    sender().v3GroupSmIs( nullptr, IpAddr( G ), &host(), &status() );
    EXPECT_THAT( owing(), ElementsAre( G ) );
    report();
    EXPECT_FALSE( hasGroupSm() );
}

TEST_P( OwingGroups, MachineThatIsTakenAwayIsNotAsked ) {
    exclude( G );
    exclude( other );
    enableAndRest();
    addSources( G, { a } );
    sender().v3GroupSmDel( IpAddr( G ) );
    sent().clear();
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_THAT( owing(), IsEmpty() );
}

TEST_P( OwingGroups, MachineThatStandsBesideTheSenderIsNotAsked ) {
    enableAndRest();
    host().newV3group( IpAddr( G ) )->versionIs( 1 );
    auto const groupSm = IgmpV3HostGroupSm::IgmpV3HostGroupSmIs(
        nullptr, IpAddr( G ), &host(), &status(), sm().aggregatedSenderSm().get()
    );
    groupSm->filterModeTransCountIs( 1 );
    EXPECT_THAT( owing(), IsEmpty() );
}

// Versions.

TEST_P( OwingGroups, HostOfVersion2CollectsNothing ) {
    enable( igmpVersion2 );
    excludeAll( groupsInOrder( 20 ) );
    removeGroup();
    EXPECT_THAT( owing(), IsEmpty() );
    EXPECT_FALSE( sender().knowsOwing() );
}

TEST_P( OwingGroups, ChangesOfAFallbackAreToldByTheNextReport ) {
    exclude( G );
    exclude( other );
    include( S, { a } );
    enableAndRest();
    versionIs( igmpVersion2 );
    removeGroup();
    removeGroup( S );
    versionIs( igmpVersion3 );
    sent().clear();
    report();
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_IN 239.1.1.1 {}" ) );
    EXPECT_FALSE( hasGroupSm( S ) );
    EXPECT_TRUE( sender().knowsOwing() );
    EXPECT_THAT( owing(), ElementsAre( G ) );
}

TEST_P( OwingGroups, WhatIsOwedOutlastsAFallback ) {
    exclude( G );
    enableAndRest();
    addSources( G, { a } );
    versionIs( igmpVersion2 );
    runFor( 20.0 );
    versionIs( igmpVersion3 );
    sent().clear();
    EXPECT_THAT( owing(), ElementsAre( G ) );
    report();
    EXPECT_THAT( takeRecords(), ElementsAre( "BLOCK 239.1.1.1 {10.9.9.1}" ) );
}

// By force.

/// A host under random changes, some of them behind its machine's back.
class ChangingHost : public Support::DeliveryHostTest {
  public:
    ChangingHost( Delivery delivery, unsigned seed ) : DeliveryHostTest( delivery ), random_( seed ) {
        host().intfConfigVersionIs( 2 );
        enable( igmpVersion3 );
    }

    /// What the host has shown of one change and the time that followed it.
    std::string step() {
        change();
        settle();
        std::string const fault = faultOf();
        runFor( below( 3 ) == 0 ? 0.0 : 0.1 * below( 12 ) );
        settle();
        return picture() + fault + faultOf();
    }

  private:
    void TestBody() override {}

    U32 below( U32 limit ) { return static_cast<U32>( random_() % limit ); }
    IpAddr randomGroup() { return IpAddr::fromHost( IpAddr( "239.1.1.0" ).hostOrder() + below( 60 ) ); }

    void change() {
        switch ( below( 24 ) ) {
        case 0: host().processV3GroupChangeIs( !host().processV3GroupChange() ); break;
        case 1: host().igmpVersionIs( static_cast<IgmpVersion>( 1 + below( 3 ) ) ); break;
        case 2: host().igmpVersionIs( igmpVersion3 ); break;
        case 3: host().robustnessIs( 1 + below( 4 ) ); break;
        case 4: host().blockedIs( below( 3 ) == 0 ); break;
        case 5: host().unsolicitedReportIntervalIs( 0.5 + 0.5 * below( 3 ) ); break;
        case 6:
            host().enablePeriodicReportIs( below( 4 ) == 0 && host().unsolicitedReportInterval() > 0.0 );
            break;
        case 7:
            host().mtuIs( 60 + below( 500 ) );
            host().configVersionIs( host().configVersion() + 1 );
            break;
        case 8: host().enabledIs( below( 4 ) != 0 ); break;
        case 9: host().v3groupNotify( randomGroup() ); break;
        case 10: unheard(); break;
        case 11: replicate(); break;
        case 12: fireNow(); break;
        default: changeGroup();
        }
    }
    /// An answer of an older version that is pending must not outlive its group.
    bool mayGoUnheard( IpAddr const& group ) {
        auto const timer = sm().groupTimerSm( group );
        return !timer || timer->responseDelayTimerState() != timerRunning;
    }
    void changeGroup() {
        IpAddr const group = randomGroup();
        if ( host().v3group( group ) && below( 3 ) == 0 ) {
            if ( host().processV3GroupChange() || mayGoUnheard( group ) ) {
                host().v3groupDel( group );
            }
            return;
        }
        auto const record = host().v3groupIs( group );
        record->filterModeIs( below( 2 ) == 0 ? IgmpV3GroupRecord::include : IgmpV3GroupRecord::exclude );
        for ( U32 i = below( 4 ); i != 0; --i ) {
            IpAddr const source = IpAddr::fromHost( 0x0a090901 + below( 4 ) );
            if ( record->sourceIs()->hasSourceIp( source ) ) {
                record->source()->sourceIpDel( source );
            } else {
                record->source()->sourceIpIs( source, 1 );
            }
        }
        if ( below( 8 ) != 0 ) {
            raise( *record );
        }
    }
    void unheard() {
        sm().hasNotificationActiveIs( false );
        IpAddr const group = randomGroup();
        if ( !host().v3group( group ) ) {
            host().newV3group( group );
        } else if ( mayGoUnheard( group ) ) {
            host().v3groupDel( group );
        }
        sm().hasNotificationActiveIs( true );
    }
    void replicate() {
        auto const pattern = host().v3groupIs( IpAddr( "239.1.1.0" ) );
        pattern->replicateIs( below( 8 ) == 0 );
        pattern->replicateNumberIs( 1 + below( 60 ) );
        raise( *pattern );
    }
    void fireNow() {
        if ( auto const sender = sm().aggregatedSenderSm() ) {
            sender->doSetTimer( 0.0 );
        }
    }

    std::string picture() {
        std::ostringstream out;
        for ( auto const& frame : sent() ) {
            out << frame.elapsed << ' ' << Support::describe( frame.bytes ) << '\n';
        }
        sent().clear();
        if ( auto const sender = sm().aggregatedSenderSm() ) {
            out << status().v3StateChangeReportSent() << ' ' << status().v3CurrentStateReportSent() << ' '
                << sender->responseDelayRemaining() << ' ' << sender->responseDelayTimerState();
            for ( IgmpV3HostGroupSm const& groupSm : sender->v3GroupSm() ) {
                out << ' ' << groupSm.group() << ' ' << groupSm.filterModeTransCount() << '+'
                    << groupSm.addedSourceTransCount()->sourceIps() << '-'
                    << groupSm.deletedSourceTransCount()->sourceIps();
            }
        }
        return out.str();
    }
    std::string faultOf() {
        auto const sender = sm().aggregatedSenderSm();
        char const* const fault = sender ? Support::owingFault( *sender ) : nullptr;
        return fault ? std::string( "\nFAULT: " ) + fault : std::string();
    }

    std::mt19937_64 random_;
};

/// All that a host shows under the changes of one seed, step by step.
std::vector<std::string>
shown( Delivery delivery, unsigned seed ) {
    ChangingHost host( delivery, seed );
    std::vector<std::string> steps( 300 );
    std::ranges::generate( steps, [&] { return host.step(); } );
    return steps;
}

class OwingGroupsByForce : public ::testing::TestWithParam<Delivery> {};

INSTANTIATE_DELIVERY_TESTS( OwingGroupsByForce );

/// A host whose details are traced asks every group in every report.
TEST_P( OwingGroupsByForce, HostShowsTheSameAsOneThatAsksEveryGroup ) {
    for ( unsigned seed = 1; seed <= 6; ++seed ) {
        auto const asksSome = shown( GetParam(), seed );
        TraceCapture const trace( "IgmpHost", traceDetail );
        auto const asksAll = shown( GetParam(), seed );
        for ( std::size_t i = 0; i < asksAll.size(); ++i ) {
            ASSERT_EQ( asksSome[i], asksAll[i] ) << "seed " << seed << ", step " << i;
            ASSERT_FALSE( asksSome[i].find( "FAULT" ) != std::string::npos ) << asksSome[i];
        }
    }
}

} // namespace
