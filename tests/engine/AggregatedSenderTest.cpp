#include "tests/engine/V3Test.h"

namespace {

using namespace Igmp;
using Support::nextDrawIs;
using Support::TraceCapture;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using Zornet::IpAddr;

class AggregatedSender : public V3Test {
  protected:
    static constexpr char const* other = "239.1.1.2";
    static std::string fired() { return "AggregatedSenderSm for host response delay timer expired"; }

    /// Room for so many records of groups without sources, and for nothing behind them.
    void roomForRecords( U32 count ) {
        host().mtuIs( headerBytes + 8 * count + 4 );
        settle();
    }
    /// A source change, which draws nothing but the sender's own delay.
    void changeAndDraw( double draw ) {
        record().sourceIs()->sourceIpIs( IpAddr( a ), 1 );
        nextDrawIs( draw );
        raiseAndSettle();
    }
};

INSTANTIATE_DELIVERY_TESTS( AggregatedSender );

// The timer.

TEST_P( AggregatedSender, StandsStillWhenItIsMade ) {
    TraceCapture trace( "IgmpHost", 9 );
    enable( igmpVersion3 );
    EXPECT_TRUE( sender().initialized() );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
    EXPECT_EQ( sender().responseDelayRemaining(), Kiv::never );
    EXPECT_THAT( trace.texts(), Contains( " host host" ) );
    EXPECT_THAT( trace.texts(), Contains( "Setting timer to expire in inf" ) );
}

TEST_P( AggregatedSender, FiniteDelayArms ) {
    enable( igmpVersion3 );
    sender().doSetTimer( 3.0 );
    EXPECT_EQ( sender().responseDelayTimerState(), pending );
    EXPECT_NEAR( sender().responseDelayRemaining(), 3.0, tolerance );
    sender().doSetTimer( Kiv::never );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 10.0 );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( AggregatedSender, LargestFiniteDelayStillArms ) {
    enable( igmpVersion3 );
    sender().doSetTimer( std::numeric_limits<double>::max() );
    EXPECT_EQ( sender().responseDelayTimerState(), pending );
}

TEST_P( AggregatedSender, NewDelayReplacesTheOneBeforeAlsoByALaterTime ) {
    enable( igmpVersion3 );
    sender().doSetTimer( 3.0 );
    sender().doSetTimer( 8.0 );
    EXPECT_NEAR( sender().responseDelayRemaining(), 8.0, tolerance );
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 7.9 );
    EXPECT_THAT( trace.texts(), Not( Contains( fired() ) ) );
    runFor( 0.2 );
    EXPECT_THAT( trace.texts(), Contains( fired() ) );
}

TEST_P( AggregatedSender, ExpiredStateRefusesToBeSet ) {
    enable( igmpVersion3 );
    sender().responseDelayTimerStateIs( timerExpired );
    TraceCapture trace( "IgmpHost", 9 );
    sender().doSetTimer( 3.0 );
    EXPECT_THAT( trace.texts(), ElementsAre( "Aggregated timer not in the correct state, returning" ) );
    EXPECT_EQ( sender().responseDelayTimerState(), timerExpired );
    runFor( 10.0 );
    EXPECT_THAT( trace.texts(), SizeIs( 1 ) );
}

// Repeats and their counters.

TEST_P( AggregatedSender, Robustness1GivesOneReportThatCountsAsCurrentState ) {
    setRobustness( 1 );
    enable( igmpVersion3 );
    exclude( G );
    runFor( 20.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}" ) );
    EXPECT_EQ( reports(), Reports( 0, 1 ) );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
}

TEST_P( AggregatedSender, Robustness2GivesTwoReportsTheSecondCountedAsCurrentState ) {
    exclude( G );
    enableAndRest();
    auto const [stateChanges, currentStates] = reports();
    changeAndDraw( 0.5 );
    EXPECT_THAT( takeRecords(), ElementsAre( "BLOCK 239.1.1.1 {10.9.9.1}" ) );
    EXPECT_EQ( reports(), Reports( stateChanges + 1, currentStates ) );
    EXPECT_NEAR( sender().responseDelayRemaining(), 0.5, tolerance );
    runFor( 0.51 );
    EXPECT_THAT( takeRecords(), ElementsAre( "BLOCK 239.1.1.1 {10.9.9.1}" ) );
    EXPECT_EQ( reports(), Reports( stateChanges + 1, currentStates + 1 ) );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
}

TEST_P( AggregatedSender, EachRepeatButTheLastCountsAsStateChange ) {
    setRobustness( 4 );
    enable( igmpVersion3 );
    exclude( G );
    runFor( 20.0 );
    EXPECT_THAT( takeRecords(), AllOf( SizeIs( 4 ), Each( "TO_EX 239.1.1.1 {}" ) ) );
    EXPECT_EQ( reports(), Reports( 3, 1 ) );
}

TEST_P( AggregatedSender, RepeatsFollowAtRandomWithinTheInterval ) {
    exclude( G );
    enableAndRest();
    status().unsolicitedReportIntervalIs( 4.0 );
    TraceCapture trace( "IgmpHost", 9 );
    changeAndDraw( 0.05 );
    EXPECT_NEAR( sender().responseDelayRemaining(), 0.6, tolerance );
    EXPECT_THAT( trace.texts(), Contains( "aggregated timer schedule a delay 0.6 sec " ) );
    EXPECT_THAT( trace.texts(), Contains( fired() ) );
}

TEST_P( AggregatedSender, RobustnessOf300RepeatsASourceChange44Times ) {
    setRobustness( 300 );
    enable( igmpVersion3 );
    include( S, { a } );
    runFor( 400.0 );
    EXPECT_THAT( takeRecords(), SizeIs( 44 ) );
}

TEST_P( AggregatedSender, RobustnessOf300RepeatsAChangeOfMode300Times ) {
    setRobustness( 300 );
    enable( igmpVersion3 );
    exclude( G );
    runFor( 400.0 );
    EXPECT_THAT( takeRecords(), SizeIs( 300 ) );
}

TEST_P( AggregatedSender, SourceChangeAtARobustnessThatIsAMultipleOf256EndsTheProcess ) {
    enable( igmpVersion3 );
    setRobustness( GetParam() == Support::Delivery::isInline ? 0 : 256 );
    EXPECT_DEATH( include( S, { a } ), Zornet::assertionText( "*sourceIter > 0" ) );
}

TEST_P( AggregatedSender, Robustness257RepeatsASourceChangeOnce ) {
    setRobustness( 257 );
    enable( igmpVersion3 );
    include( S, { a } );
    runFor( 20.0 );
    EXPECT_THAT( takeRecords(), SizeIs( 1 ) );
}

TEST_P( AggregatedSender, RobustnessOf0ReportsNoChangeOfMode ) {
    setRobustness( 0 );
    enable( igmpVersion3 );
    exclude( G );
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( AggregatedSender, FilterModeOutsideOfTwoEndsTheProcessWhenItFires ) {
    enable( igmpVersion3 );
    auto const bad = host().v3groupIs( IpAddr( G ) );
    bad->filterModeIs( static_cast<IgmpV3GroupRecord::FilterMode>( 3 ) );
    EXPECT_DEATH(
        {
            raise( *bad );
            settle();
        },
        Zornet::assertionText( "0" )
    );
}

TEST_P( AggregatedSender, FilterModeOutsideOfTwoPassesWhileNoChangeIsReported ) {
    enable();
    auto const bad = host().v3groupIs( IpAddr( G ) );
    bad->filterModeIs( static_cast<IgmpV3GroupRecord::FilterMode>( 3 ) );
    raiseAndSettle();
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

// Groups share packets.

TEST_P( AggregatedSender, GroupsChangedAtOneMomentShareTheirPackets ) {
    enable( igmpVersion3 );
    excludeAll( { G, other } );
    runFor( 20.0 );
    EXPECT_THAT( takeRecords(), AllOf( SizeIs( 2 ), Each( "TO_EX 239.1.1.1 {}, TO_EX 239.1.1.2 {}" ) ) );
    EXPECT_EQ( reports(), Reports( 1, 1 ) );
}

TEST_P( AggregatedSender, RecordsStandInTheOrderOfTheCollection ) {
    auto const order = groupsInOrder( 3 );
    enable( igmpVersion3 );
    excludeAll( { order[2], order[0], order[1] } );
    EXPECT_EQ(
        Support::describe( sent().at( 0 ).bytes ),
        "v3report TO_EX " + order[0] + " {}, TO_EX " + order[1] + " {}, TO_EX " + order[2] + " {}"
    );
}

TEST_P( AggregatedSender, ChangeDuringADelaySendsAtOnceAndCarriesWhatOthersOwe ) {
    setRobustness( 3 );
    enable( igmpVersion3 );
    exclude( G );
    takeRecords();
    ASSERT_GT( sender().responseDelayRemaining(), 0.05 );
    exclude( other );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}, TO_EX 239.1.1.2 {}" ) );
    runFor( 20.0 );
    EXPECT_THAT(
        takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}, TO_EX 239.1.1.2 {}", "TO_EX 239.1.1.2 {}" )
    );
}

TEST_P( AggregatedSender, LastReportOfOneGroupIsAStateChangeWhileAnyOtherOwes ) {
    auto const order = groupsInOrder( 2 );
    for ( std::size_t const later : { 0U, 1U } ) { // the one that owes may come first or last
        enable( igmpVersion3 );
        exclude( order[1 - later].c_str() );
        exclude( order[later].c_str() );
        EXPECT_EQ( reports(), Reports( 2, 0 ) ); // the second closes the first group
        runFor( 20.0 );
        EXPECT_EQ( reports(), Reports( 2, 1 ) );
        host().v3groupDelAll();
        host().enabledIs( false );
        settle();
    }
}

TEST_P( AggregatedSender, ChangeThatFindsNothingCutsARunningDelayShort ) {
    enable( igmpVersion3 );
    exclude( G );
    takeRecords();
    raiseAndSettle();
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}" ) );
}

TEST_P( AggregatedSender, EditThatIsNotRaisedLeaksIntoARepeat ) {
    enable( igmpVersion3 );
    exclude( G );
    takeRecords();
    record().filterModeIs( IgmpV3GroupRecord::include );
    record().sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    runFor( 5.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_IN 239.1.1.1 {10.9.9.1}" ) );
}

TEST_P( AggregatedSender, EditOfTheModeThatIsNotRaisedTurnsASourceChangeOver ) {
    enable( igmpVersion3 );
    include( S, { a } );
    takeRecords();
    record( S ).filterModeIs( IgmpV3GroupRecord::exclude );
    runFor( 5.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "BLOCK 232.1.1.1 {10.9.9.1}" ) );
}

TEST_P( AggregatedSender, GroupOutsideOfMulticastIsReportedAsItStands ) {
    enable( igmpVersion3 );
    exclude( "10.1.2.3" );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 10.1.2.3 {}" ) );
}

// Little room.

TEST_P( AggregatedSender, RecordTooLongForTheRemainderEndsTheWalk ) {
    auto const order = groupsInOrder( 3 );
    setRobustness( 1 );
    roomForRecords( 2 );
    enable( igmpVersion3 );
    auto const wide = host().v3groupIs( IpAddr( order[1] ) );
    wide->sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    wide->sourceIs()->sourceIpIs( IpAddr( b ), 1 );
    excludeAll( order );
    EXPECT_THAT( lengths(), ElementsAre( headerBytes + 8U + 12U ) );
    std::string const first = Support::describe( sent()[0].bytes );
    EXPECT_THAT( first, StartsWith( "v3report TO_EX " + order[0] + " {}, TO_EX " + order[1] + " {10.9.9." ) );
    EXPECT_THAT( first, Not( HasSubstr( order[2] ) ) );
    EXPECT_FALSE( sender().v3GroupSm( IpAddr( order[0] ) )->isStateChanged() );
    EXPECT_TRUE( sender().v3GroupSm( IpAddr( order[1] ) )->isStateChanged() );
    EXPECT_EQ( reports(), Reports( 1, 0 ) );
    runFor( 1.1 );
    ASSERT_THAT( sent(), SizeIs( 2 ) );
    EXPECT_EQ( sortedRecords( sent()[1].bytes ), "TO_EX " + order[1] + " {10.9.9.1 10.9.9.2}" );
    runFor( 20.0 );
    EXPECT_EQ( Support::describe( sent().at( 2 ).bytes ), "v3report TO_EX " + order[2] + " {}" );
}

TEST_P( AggregatedSender, GroupsAheadOfTheCutAreServedFirstOnceMore ) {
    auto const order = groupsInOrder( 3 );
    roomForRecords( 2 );
    enable( igmpVersion3 );
    excludeAll( order );
    std::string const ahead = "v3report TO_EX " + order[0] + " {}, TO_EX " + order[1] + " {}";
    runFor( 20.0 );
    std::vector<std::string> described = takeSent();
    EXPECT_THAT(
        described,
        ElementsAre(
            ahead, ahead, "v3report TO_EX " + order[2] + " {}", "v3report TO_EX " + order[2] + " {}"
        )
    );
}

TEST_P( AggregatedSender, ChangeOfModeLongerThanAPacketStallsForEver ) {
    auto const order = groupsInOrder( 2 );
    roomForRecords( 1 );
    enable( igmpVersion3 );
    auto const wide = host().v3groupIs( IpAddr( order[0] ) );
    wide->sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    wide->sourceIs()->sourceIpIs( IpAddr( b ), 1 );
    excludeAll( order );
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 100.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( reports(), Reports( 0, 0 ) );
    EXPECT_THAT( trace.texts(), Contains( fired() ).Times( ::testing::Ge( 100 ) ) );
    EXPECT_EQ( sender().v3GroupSm( IpAddr( order[0] ) )->filterModeTransCount(), 2U );
    EXPECT_EQ( sender().v3GroupSm( IpAddr( order[1] ) )->filterModeTransCount(), 2U );
}

TEST_P( AggregatedSender, SourceChangeLongerThanAPacketIsSentCutForEver ) {
    roomForRecords( 1 );
    enable( igmpVersion3 );
    include( S, { a, b } );
    runFor( 100.0 );
    std::vector<std::string> const described = takeSent();
    EXPECT_GE( described.size(), 100U );
    EXPECT_THAT( described, Each( described.front() ) );
    EXPECT_THAT( numbersOf( *groupSm( S ).addedSourceTransCount() ), SizeIs( 2 ) );
}

// What keeps it silent.

TEST_P( AggregatedSender, FiringOfABlockedHostIsDroppedAndNotMadeUp ) {
    enable( igmpVersion3 );
    block();
    TraceCapture trace( "IgmpHost", 9 );
    exclude( G );
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host blocked." ) );
    EXPECT_THAT( trace.texts(), Not( Contains( fired() ) ) );
    EXPECT_EQ( sender().responseDelayTimerState(), pending );
    EXPECT_EQ( sender().responseDelayRemaining(), 0.0 );
    block( false );
    runFor( 100.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( groupSm().filterModeTransCount(), 2U );
    EXPECT_EQ( reports(), Reports( 0, 0 ) );
}

TEST_P( AggregatedSender, WhatABlockedHostOwesGoesWithTheNextChange ) {
    enable( igmpVersion3 );
    block();
    exclude( G );
    block( false );
    exclude( other );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}, TO_EX 239.1.1.2 {}" ) );
}

TEST_P( AggregatedSender, FiringOfAnIngressHostIsDropped ) {
    enable( igmpVersion3 );
    makeIngress();
    TraceCapture trace( "IgmpHost", 9 );
    exclude( G );
    runFor( 100.0 );
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host direction is ingress " ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( groupSm().filterModeTransCount(), 2U );
    EXPECT_EQ( sender().responseDelayTimerState(), pending );
    EXPECT_EQ( sender().responseDelayRemaining(), 0.0 );
}

TEST_P( AggregatedSender, WithoutAWayToTheWireCountsRunDownUnsent ) {
    enable( igmpVersion3 );
    unbind();
    exclude( G );
    EXPECT_EQ( groupSm().filterModeTransCount(), 1U );
    EXPECT_EQ( sender().responseDelayTimerState(), pending );
    runFor( 20.0 );
    EXPECT_EQ( groupSm().filterModeTransCount(), 0U );
    EXPECT_EQ( reports(), Reports( 0, 0 ) );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
}

TEST_P( AggregatedSender, WhatWasOwedWithoutAWayToTheWireIsLost ) {
    enable( igmpVersion3 );
    unbind();
    exclude( G );
    runFor( 20.0 );
    host().intfConfigVersionIs( 1 );
    settle();
    raiseAndSettle();
    runFor( 100.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( AggregatedSender, FiringWithoutARecordSendsAndCountsNothing ) {
    enable( igmpVersion3 );
    sender().doSetTimer( 0.0 );
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( reports(), Reports( 0, 0 ) );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
}

// Older versions.

TEST_P( AggregatedSender, FiringAtVersion2SendsNothingAndDies ) {
    enable( igmpVersion3 );
    exclude( G );
    sent().clear();
    hearQuery( 100 ); // version 2 comes into force while a repeat is owed
    auto const before = reports();
    runFor( 2.0 );
    EXPECT_EQ( reports(), before );
    EXPECT_THAT( takeRecords(), Not( Contains( HasSubstr( "TO_EX" ) ) ) );
    EXPECT_EQ( sender().responseDelayRemaining(), 0.0 ); // fired, and not armed again
    EXPECT_EQ( groupSm().filterModeTransCount(), 1U );
}

TEST_P( AggregatedSender, FiringAtVersion2KeepsOnWhilePeriodicReportingIsConfigured ) {
    setPeriodic( 7.0 );
    enable();
    status().unsolicitedReportIntervalIs( 3.0 ); // not this one
    status().enablePeriodicReportIs( false );    // nor this
    sender().doSetTimer( 1.0 );
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 1.0 );
    EXPECT_THAT( trace.texts(), Contains( "Setting timer to expire in 7" ) );
    EXPECT_NEAR( sender().responseDelayRemaining(), 7.0, tolerance );
    runFor( 7.0 );
    EXPECT_NEAR( sender().responseDelayRemaining(), 7.0, tolerance );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( reports(), Reports( 0, 0 ) );
}

TEST_P( AggregatedSender, FiringAtVersion2WithAnIntervalOf0ComesBackWithEachTurn ) {
    setPeriodic( 0.0 );
    enable();
    TraceCapture trace( "IgmpHost", 9 );
    sender().doSetTimer( 0.0 );
    runFor( 5e-6 );
    EXPECT_THAT( trace.texts(), Contains( "Setting timer to expire in 0" ).Times( ::testing::Ge( 3 ) ) );
    sender().doSetTimer( Kiv::never );
}

// Periodic reports.

class PeriodicSender : public AggregatedSender {
  protected:
    static constexpr Seconds interval = 5.0;

    void enablePeriodic() {
        setPeriodic( interval );
        enable( igmpVersion3 );
    }
    void expectEvery( Seconds span, std::size_t atLeast ) {
        ASSERT_GE( sent().size(), atLeast );
        for ( std::size_t i = 1; i < sent().size(); ++i ) {
            EXPECT_NEAR( sent()[i].elapsed - sent()[i - 1].elapsed, span, tolerance );
        }
    }
};

INSTANTIATE_DELIVERY_TESTS( PeriodicSender );

TEST_P( PeriodicSender, ReportsTheStateOfAllGroupsAtTheExactInterval ) {
    enablePeriodic();
    excludeAll( { G, other } );
    runFor( 2 * interval );
    sent().clear();
    auto const before = reports();
    runFor( 4 * interval );
    expectEvery( interval, 3 );
    EXPECT_EQ( reports(), Reports( before.first, before.second + sent().size() ) );
    EXPECT_THAT( takeRecords(), Each( "IS_EX 239.1.1.1 {}, IS_EX 239.1.1.2 {}" ) );
}

TEST_P( PeriodicSender, LastReportOfAChangeIsFollowedByTheExactInterval ) {
    setRobustness( 1 );
    enablePeriodic();
    exclude( G );
    EXPECT_EQ( reports(), Reports( 0, 1 ) );
    EXPECT_NEAR( sender().responseDelayRemaining(), interval, tolerance );
}

TEST_P( PeriodicSender, ReportThatIsOwedMoreIsFollowedByARandomDelay ) {
    setRobustness( 2 );
    enablePeriodic();
    exclude( G );
    EXPECT_EQ( reports(), Reports( 1, 0 ) );
    EXPECT_LT( sender().responseDelayRemaining(), interval );
}

TEST_P( PeriodicSender, OwingGroupTakesItsChangeAndTheOthersTheirState ) {
    enablePeriodic();
    exclude( G );
    runFor( 2 * interval );
    sent().clear();
    include( S, { a } );
    EXPECT_THAT( takeRecords(), ElementsAre( "ALLOW 232.1.1.1 {10.9.9.1}, IS_EX 239.1.1.1 {}" ) );
}

TEST_P( PeriodicSender, NeverGetsPastOnePacket ) {
    auto const order = groupsInOrder( 3 );
    enablePeriodic();
    excludeAll( order );
    runFor( 2 * interval );
    roomForRecords( 2 );
    host().configVersionIs( 1 );
    runFor( 2 * interval );
    sent().clear();
    runFor( 10 * interval );
    expectEvery( interval, 10 );
    EXPECT_THAT( takeSent(), Each( "v3report IS_EX " + order[0] + " {}, IS_EX " + order[1] + " {}" ) );
}

TEST_P( PeriodicSender, StarvesTheChangesBehindOnePacket ) {
    auto const order = groupsInOrder( 3 );
    roomForRecords( 2 );
    enablePeriodic();
    excludeAll( order );
    runFor( 10 * interval );
    EXPECT_EQ( groupSm( order[2].c_str() ).filterModeTransCount(), 2U );
    EXPECT_THAT( takeSent(), Not( Contains( HasSubstr( order[2] ) ) ) );
}

TEST_P( PeriodicSender, StopsWhenReportsNoLongerContinue ) {
    enablePeriodic();
    exclude( G );
    runFor( 2 * interval );
    host().enablePeriodicReportIs( false );
    settle();
    sent().clear();
    runFor( 4 * interval );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
}

TEST_P( PeriodicSender, LeavingGroupIsKeptUntilReportsNoLongerContinue ) {
    enablePeriodic();
    exclude( G );
    exclude( other );
    removeGroup();
    runFor( 4 * interval );
    EXPECT_TRUE( hasGroupSm() );
    EXPECT_EQ( takeRecords().back(), "IS_EX 239.1.1.2 {}" );
    status().continueUnsolicitedReportIs( false );
    settle();
    runFor( interval );
    EXPECT_FALSE( hasGroupSm() );
}

TEST_P( PeriodicSender, StreamWithoutAGroupStopsUntilAGroupComes ) {
    enablePeriodic();
    runFor( 11.0 );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
    exclude( G );
    runFor( 10 * interval );
    EXPECT_GE( takeRecords().size(), 10U );
}

TEST_P( PeriodicSender, StreamEndsAfterAFallBackInWhichAGroupWasAskedFor ) {
    enablePeriodic();
    exclude( G );
    runFor( 2 * interval );
    hearQuery( 100 );
    runFor( 400.0 );
    ASSERT_EQ( status().igmpVersion(), igmpVersion3 );
    sent().clear();
    runFor( 10 * interval );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
    EXPECT_EQ( sender().responseDelayTimerState(), idle );
}

TEST_P( PeriodicSender, StreamThatHasEndedGoesOnWhenReportingIsSwitchedOffAndOn ) {
    enablePeriodic();
    exclude( G );
    runFor( 2 * interval );
    hearQuery( 100 );
    runFor( 400.0 + 2 * interval );
    host().enablePeriodicReportIs( false );
    settle();
    host().enablePeriodicReportIs( true );
    settle();
    sent().clear();
    runFor( 2 * interval );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}", "IS_EX 239.1.1.1 {}" ) );
}

TEST_P( PeriodicSender, IntervalOf0InForceFiresWithEachTurn ) {
    enablePeriodic();
    exclude( G );
    rest();
    host().unsolicitedReportIntervalIs( 0.0 );
    settle();
    raiseAndSettle();
    sent().clear();
    runFor( 5e-6 );
    EXPECT_GE( sent().size(), 3U );
    sender().doSetTimer( Kiv::never );
}

TEST_P( PeriodicSender, IntervalOf0InForceEndsWithTheNextEnablingOnly ) {
    enablePeriodic();
    exclude( G );
    rest();
    host().unsolicitedReportIntervalIs( 0.0 );
    settle();
    host().unsolicitedReportIntervalIs( interval );
    settle();
    EXPECT_EQ( status().unsolicitedReportInterval(), 0.0 );
    host().enabledIs( false );
    settle();
    enableAndRest();
    EXPECT_EQ( status().unsolicitedReportInterval(), interval );
    runFor( 2 * interval );
    expectEvery( interval, 2 );
}

class PeriodicSenderInline : public PeriodicSender {};

INSTANTIATE_TEST_SUITE_P( Inline, PeriodicSenderInline, ::testing::Values( Support::Delivery::isInline ) );

TEST_P( PeriodicSenderInline, IsFirstArmedWithTheIntervalOfAFreshStatus ) {
    enablePeriodic();
    EXPECT_NEAR( sender().responseDelayRemaining(), 10.0, tolerance );
    EXPECT_DOUBLE_EQ( status().unsolicitedReportInterval(), interval );
}

// Machines that go during the walk.

TEST_P( AggregatedSender, LeavingGroupGoesInThePassThatTellsItsLastRecord ) {
    exclude( G );
    enableAndRest();
    removeGroup();
    EXPECT_TRUE( hasGroupSm() );
    runFor( 5.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_IN 239.1.1.1 {}", "TO_IN 239.1.1.1 {}" ) );
    EXPECT_FALSE( hasGroupSm() );
}

TEST_P( AggregatedSender, WalkGoesOnPastMachinesThatGo ) {
    auto const order = groupsInOrder( 20 );
    setRobustness( 1 );
    excludeAll( order );
    enableAndRest();
    for ( std::size_t i = 0; i + 1 < order.size(); ++i ) {
        host().v3groupDel( IpAddr( order[i] ) );
    }
    host().v3group( IpAddr( order.back() ) )->sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    raiseAndSettle( order.back().c_str() );
    runFor( 5.0 );
    std::vector<std::string> const described = takeSent();
    ASSERT_THAT( described, SizeIs( 1 ) );
    for ( std::size_t i = 0; i + 1 < order.size(); ++i ) {
        EXPECT_THAT( described[0], HasSubstr( "TO_IN " + order[i] + " {}" ) );
    }
    EXPECT_THAT( described[0], HasSubstr( "BLOCK " + order.back() + " {10.9.9.1}" ) );
    EXPECT_EQ( sender().v3GroupSms(), 1U );
}

TEST_P( AggregatedSender, LeavingGroupThatOwesNothingGoesSilently ) {
    include( S, { a } );
    enable( igmpVersion3 );
    rest();
    removeSources( S, { a } );
    rest();
    removeGroup( S );
    EXPECT_FALSE( hasGroupSm( S ) );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( AggregatedSender, GroupThatComesBackFindsItsMemory ) {
    exclude( G );
    enableAndRest();
    removeGroup();
    auto const* const memory = &groupSm();
    sent().clear();
    exclude( G );
    EXPECT_EQ( &groupSm(), memory );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_EX 239.1.1.1 {}" ) );
}

} // namespace
