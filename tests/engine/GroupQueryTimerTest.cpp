#include "tests/engine/V3Test.h"

namespace {

using namespace Igmp;
using Support::nextDrawIs;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::assertionText;
using Zornet::IpAddr;

class GroupQueryTimer : public V3Test {
  protected:
    static constexpr char const* unasked = "10.9.9.9";

    /// Hears a query of ten seconds and draws the answer's delay.
    void query( double draw, char const* group, std::vector<char const*> const& sources = {} ) {
        nextDrawIs( draw );
        hearV3Query( 100, group, sources );
    }
    /// What the query is answered with.
    std::vector<std::string> answer( char const* group, std::vector<char const*> const& sources = {} ) {
        sent().clear();
        query( 0.3, group, sources );
        runFor( 10.0 );
        return takeRecords();
    }
    Seconds remaining( char const* group = S ) { return queryTimer( group ).responseDelayRemaining(); }
    TimerState state( char const* group = S ) { return queryTimer( group ).responseDelayTimerState(); }
    SourceNumbers asked( char const* group = S ) { return numbersOf( *queryTimer( group ).source() ); }
    void start( double draw, U32 mrt, char const* group, Seconds interval = 60.0 ) {
        nextDrawIs( draw );
        maybeStartGroupTimerV3( &sm(), IpAddr( group ), mrt, interval );
    }
};

INSTANTIATE_DELIVERY_TESTS( GroupQueryTimer );

// A new machine.

TEST_P( GroupQueryTimer, StandsStillWhenItIsMade ) {
    include( S, { a } );
    enableAndRest();
    EXPECT_TRUE( queryTimer( S ).initialized() );
    EXPECT_EQ( state(), idle );
    EXPECT_EQ( remaining(), Kiv::never );
    EXPECT_DOUBLE_EQ( queryTimer( S ).queryInterval(), 125.0 );
    EXPECT_FALSE( queryTimer( S ).waitForQueryInterval() );
    EXPECT_THAT( asked(), IsEmpty() );
    EXPECT_EQ( queryTimer( S ).groupRecord().get(), &record( S ) );
}

TEST_P( GroupQueryTimer, OfAnUnknownGroupHasNoRecord ) {
    enable( igmpVersion3 );
    auto const timer = IgmpV3HostGroupQueryTimerSm::IgmpV3HostGroupQueryTimerSmIs(
        nullptr, wheel(), IpAddr( G ), Ptr<IgmpHost>( &host() ), Ptr<IgmpHostStatus>( &status() ), &sm()
    );
    EXPECT_EQ( timer->groupRecord(), nullptr );
}

TEST_P( GroupQueryTimer, IsPlain ) {
    include( S, { a } );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    queryTimer( S ).doSetTimer( 3.0 );
    EXPECT_NEAR( remaining(), 3.0, tolerance );
    EXPECT_EQ( state(), pending );
    queryTimer( S ).doSetTimer( Kiv::never );
    EXPECT_EQ( state(), idle );
    EXPECT_THAT( trace.texts(), ElementsAre( "Setting timer to expire in 3" ) );
    runFor( 5.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( GroupQueryTimer, KnowsNoPeriodicRule ) {
    setPeriodic( 1000.0 );
    exclude( G );
    enableAndRest();
    auto const changed = changes();
    queryTimer( G ).doSetTimer( 3.0 );
    queryTimer( G ).doSetTimer( Kiv::never );
    EXPECT_EQ( state( G ), idle );
    EXPECT_FALSE( queryTimer( G ).waitForQueryInterval() );
    EXPECT_TRUE( changed.none() );
}

// Answers by query and record.

TEST_P( GroupQueryTimer, GroupQueryOfAnIncludeGroupNamesAllSources ) {
    include( S, { a, b } );
    enableAndRest();
    EXPECT_THAT( answer( S ), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.1 10.9.9.2}" ) );
}

TEST_P( GroupQueryTimer, GroupQueryOfAnIncludeGroupWithoutSourcesHasNoAnswer ) {
    include( S, {} );
    enableAndRest();
    auto const before = reports();
    EXPECT_THAT( answer( S ), IsEmpty() );
    EXPECT_EQ( reports(), before );
    EXPECT_EQ( state(), idle );
}

TEST_P( GroupQueryTimer, GroupQueryOfAnExcludeGroupNamesTheExcludedSources ) {
    exclude( G );
    exclude( S, { a } );
    enableAndRest();
    EXPECT_THAT( answer( G ), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
    EXPECT_THAT( answer( S ), ElementsAre( "IS_EX 232.1.1.1 {10.9.9.1}" ) );
}

TEST_P( GroupQueryTimer, SourceQueryOfAnIncludeGroupNamesTheAskedThatAreWanted ) {
    include( S, { a, b, c } );
    enableAndRest();
    EXPECT_THAT( answer( S, { a, c, unasked } ), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.1 10.9.9.3}" ) );
    EXPECT_THAT( answer( S, { unasked } ), IsEmpty() );
}

TEST_P( GroupQueryTimer, SourceQueryOfAnIncludeGroupWithoutSourceListHasNoAnswer ) {
    include( S, {} );
    enableAndRest();
    EXPECT_THAT( answer( S, { a } ), IsEmpty() );
}

TEST_P( GroupQueryTimer, SourceQueryOfAnExcludeGroupNamesTheAskedThatAreNotExcluded ) {
    exclude( S, { a } );
    enableAndRest();
    EXPECT_THAT( answer( S, { a, b, c } ), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.2 10.9.9.3}" ) );
}

TEST_P( GroupQueryTimer, SourceQueryOfAnExcludeGroupWithoutSourcesNamesAllAsked ) {
    exclude( G );
    enableAndRest();
    EXPECT_THAT( answer( G, { a } ), ElementsAre( "IS_IN 239.1.1.1 {10.9.9.1}" ) );
}

TEST_P( GroupQueryTimer, SourceQueryForExcludedSourcesOnlyIsNotAnsweredOrCounted ) {
    exclude( S, { a, b } );
    enableAndRest();
    auto const before = reports();
    EXPECT_THAT( answer( S, { a, b } ), IsEmpty() );
    EXPECT_EQ( reports(), before );
    EXPECT_EQ( state(), idle );
    EXPECT_THAT( asked(), IsEmpty() );
}

TEST_P( GroupQueryTimer, SourceOfTheRecordWithNumber0CountsAsAbsent ) {
    include( S, { a, b } );
    enableAndRest();
    record( S ).source()->sourceIpIs( IpAddr( a ), 0 );
    EXPECT_THAT( answer( S, { a, b } ), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.2}" ) );
}

TEST_P( GroupQueryTimer, AnswerCountsAsCurrentState ) {
    include( S, { a } );
    enableAndRest();
    auto const changed = changes();
    answer( S, { a } );
    EXPECT_THAT(
        changed.list(),
        ElementsAre(
            "v3CurrentStateReportSent=2", "v3GeneralQueryReceived=1", "v3GroupSourceQueryReceived=1"
        )
    );
}

TEST_P( GroupQueryTimer, RecordOfVersion0IsAnsweredFor ) {
    enable( igmpVersion3 );
    host().v3groupIs( IpAddr( G ) )->filterModeIs( IgmpV3GroupRecord::exclude );
    settle();
    EXPECT_THAT( answer( G ), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
}

TEST_P( GroupQueryTimer, EditThatIsNotRaisedIsInTheAnswer ) {
    include( S, { a } );
    enableAndRest();
    record( S ).source()->sourceIpIs( IpAddr( b ), 1 );
    EXPECT_THAT( answer( S, { b } ), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.2}" ) );
}

TEST_P( GroupQueryTimer, UnknownGroupIsCountedAndNotAnswered ) {
    exclude( G );
    enableAndRest();
    auto const changed = changes();
    TraceCapture trace( "IgmpHost", 9 );
    EXPECT_THAT( answer( unknownGroup, { a } ), IsEmpty() );
    EXPECT_THAT( changed.list(), ElementsAre( "v3GeneralQueryReceived=1" ) );
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host start timer for group 239.9.9.9 delay 3 sec " ) );
}

TEST_P( GroupQueryTimer, WhatDoesNotFitIsLost ) {
    include( S, { a, b, c } );
    enableAndRest();
    host().mtuIs( headerBytes + 8 + 4 * 2 );
    host().configVersionIs( 1 );
    settle();
    query( 0.3, S );
    runFor( 10.0 );
    EXPECT_THAT( lengths(), ElementsAre( headerBytes + 8U + 4U * 2 ) );
    sent().clear();
    query( 0.3, S, { a, b, c } );
    runFor( 10.0 );
    EXPECT_THAT( lengths(), ElementsAre( headerBytes + 8U + 4U * 2 ) );
    EXPECT_THAT( asked(), IsEmpty() );
    EXPECT_EQ( state(), idle );
}

// Which sources are asked about.

TEST_P( GroupQueryTimer, SourcesOfSeveralQueriesAddUp ) {
    include( S, { a, b, c } );
    enableAndRest();
    query( 0.5, S, { a } );
    query( 0.3, S, { b, a } );
    EXPECT_THAT( asked(), ElementsAre( std::pair( a, 1U ), std::pair( b, 1U ) ) );
    runFor( 10.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.1 10.9.9.2}" ) );
    EXPECT_THAT( asked(), IsEmpty() );
}

TEST_P( GroupQueryTimer, LaterQueryAddsItsSourcesWithoutMovingTheTimer ) {
    include( S, { a, b } );
    enableAndRest();
    query( 0.3, S, { a } );
    query( 0.8, S, { b } );
    EXPECT_NEAR( remaining(), 3.0, tolerance );
    runFor( 4.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.1 10.9.9.2}" ) );
}

TEST_P( GroupQueryTimer, GroupQueryWidensAPendingSourceQuery ) {
    include( S, { a, b } );
    enableAndRest();
    query( 0.3, S, { a } );
    query( 0.8, S );
    EXPECT_THAT( asked(), IsEmpty() );
    runFor( 4.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.1 10.9.9.2}" ) );
}

TEST_P( GroupQueryTimer, SourceQueryNarrowsAPendingGroupQuery ) {
    exclude( S );
    enableAndRest();
    query( 0.3, S );
    query( 0.8, S, { b } );
    runFor( 4.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.2}" ) );
}

TEST_P( GroupQueryTimer, SaysWhichSourcesItTakes ) {
    include( S, { a, b } );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    query( 0.3, S, { b, a, b } );
    EXPECT_THAT( trace.texts(), Contains( "Goup Query on source 10.9.9.2" ).Times( 2 ) );
    EXPECT_THAT( trace.texts(), Contains( "Adding 10.9.9.2 on group source list" ).Times( 1 ) );
    EXPECT_THAT( trace.texts(), Contains( "Adding 10.9.9.1 on group source list" ).Times( 1 ) );
    EXPECT_EQ( status().v3GroupSourceQueryReceived(), 1U );
}

TEST_P( GroupQueryTimer, GroupQueryCountsAsSuchAndAsGeneral ) {
    exclude( G );
    enableAndRest();
    auto const changed = changes();
    query( 0.3, G );
    EXPECT_THAT( changed.list(), ElementsAre( "v3GeneralQueryReceived=1", "v3GroupQueryReceived=1" ) );
}

TEST_P( GroupQueryTimer, SourceCountThatLiesChangesNothing ) {
    include( S, { a } );
    enableAndRest();
    auto const changed = changes();
    auto message = Lab::v3QueryMessage( IpAddr( S ), { IpAddr( a ) }, 100, false, 2, 125 );
    for ( U8 const count : { U8{ 0 }, U8{ 2 }, U8{ 255 } } ) {
        message[10] = count;
        message[11] = count;
        Lab::checksum( message );
        hear( message );
    }
    EXPECT_TRUE( changed.none() );
    EXPECT_EQ( state(), idle );
}

TEST_P( GroupQueryTimer, QueryWithoutAHeaderEndsTheProcess ) {
    exclude( G );
    enableAndRest();
    EXPECT_DEATH(
        queryTimer().processGroupQuerySources( nullptr, 0 ), assertionText( "igmpV3Hdr != __null" )
    );
}

TEST_P( GroupQueryTimer, QueryOfAnotherSizeThanItsCountEndsTheProcess ) {
    exclude( G );
    enableAndRest();
    auto const message = Lab::v3QueryMessage( IpAddr( G ), {}, 100, false, 2, 125 );
    auto const* const hdr = reinterpret_cast<Zornet::IgmpV3QueryHdr const*>( message.data() );
    EXPECT_DEATH(
        queryTimer().processGroupQuerySources( hdr, 16 ),
        assertionText( "numSources * sizeof( U32 ) + sizeof ( Zornet::IgmpV3QueryHdr ) == size" )
    );
}

TEST_P( GroupQueryTimer, OldGroupQueryAtAHostHeldAtVersion3EndsTheProcess ) {
    host().igmpVersionForcedIs( true );
    settle();
    exclude( G );
    enableAndRest();
    EXPECT_DEATH( hearQuery( 100, G ), assertionText( "igmpV3Hdr != __null" ) );
}

TEST_P( GroupQueryTimer, OldGroupQueryAtAHostWithAnInfiniteTimeoutEndsTheProcess ) {
    host().v2RouterPresentTimeoutIs( Kiv::never );
    settle();
    exclude( G );
    enableAndRest();
    EXPECT_DEATH( hearQuery( 100, G ), assertionText( "igmpV3Hdr != __null" ) );
}

// The gate.

TEST_P( GroupQueryTimer, EarliestAnswerStands ) {
    exclude( G );
    enableAndRest();
    query( 0.8, G );
    EXPECT_NEAR( remaining( G ), 8.0, tolerance );
    query( 0.3, G );
    EXPECT_NEAR( remaining( G ), 3.0, tolerance );
    query( 0.5, G );
    EXPECT_NEAR( remaining( G ), 3.0, tolerance );
    runFor( 20.0 );
    EXPECT_THAT( sent(), SizeIs( 1 ) );
}

TEST_P( GroupQueryTimer, EqualDelayLeavesTheTimerAlone ) {
    exclude( G );
    enableAndRest();
    start( 0.5, 4, G, 60.0 );
    TraceCapture trace( "IgmpHost", 9 );
    start( 0.5, 4, G, 30.0 );
    EXPECT_DOUBLE_EQ( queryTimer().queryInterval(), 60.0 );
    EXPECT_FALSE( trace.contains( "start timer for group" ) );
}

TEST_P( GroupQueryTimer, GroupsAndTheGeneralQueryHaveTimersOfTheirOwn ) {
    exclude( G );
    include( S, { a } );
    enableAndRest();
    query( 0.3, G );
    query( 0.5, S );
    query( 0.8, "0.0.0.0" );
    EXPECT_NEAR( remaining( G ), 3.0, tolerance );
    EXPECT_NEAR( remaining( S ), 5.0, tolerance );
    EXPECT_NEAR( general().responseDelayRemaining(), 8.0, tolerance );
}

TEST_P( GroupQueryTimer, ResponseTimeOf0IsThatOfVersion1InWholeSeconds ) {
    exclude( G );
    enableAndRest();
    start( 0.5, 0, G );
    EXPECT_NEAR( remaining( G ), 50.0, tolerance );
    host().v1MaxResponseTimeIs( 30 );
    settle();
    start( 0.5, 0, "0.0.0.0" );
    EXPECT_NEAR( general().responseDelayRemaining(), 15.0, tolerance );
}

TEST_P( GroupQueryTimer, CodeBelowASecondGivesUpToAHundredSeconds ) {
    exclude( G );
    enableAndRest();
    for ( U8 const code : { U8{ 9 }, U8{ 5 } } ) {
        nextDrawIs( code == 9 ? 0.9 : 0.6 );
        hearV3Query( code, G );
        EXPECT_NEAR( remaining( G ), code == 9 ? 90.0 : 60.0, tolerance );
    }
}

TEST_P( GroupQueryTimer, CodeIsCutToWholeSeconds ) {
    exclude( G );
    enableAndRest();
    nextDrawIs( 0.5 );
    hearV3Query( 29, G );
    EXPECT_NEAR( remaining( G ), 1.0, tolerance );
}

TEST_P( GroupQueryTimer, QueryIntervalOf0LeavesTheDefault ) {
    exclude( G );
    enableAndRest();
    start( 0.8, 10, G, 60.0 );
    EXPECT_DOUBLE_EQ( queryTimer().queryInterval(), 60.0 );
    start( 0.3, 10, G, 0.0 );
    EXPECT_DOUBLE_EQ( queryTimer().queryInterval(), 125.0 );
}

TEST_P( GroupQueryTimer, OldGeneralQueryAtAHostHeldAtVersion3TellsNoInterval ) {
    host().igmpVersionForcedIs( true );
    settle();
    enableAndRest();
    general().queryIntervalIs( 60.0 );
    nextDrawIs( 0.5 );
    hearQuery( 29 );
    EXPECT_NEAR( general().responseDelayRemaining(), 1.0, tolerance );
    EXPECT_DOUBLE_EQ( general().queryInterval(), 125.0 );
}

TEST_P( GroupQueryTimer, SaysWhenItStarts ) {
    exclude( G );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    query( 0.5, G );
    EXPECT_THAT( trace.texts(), Contains( "Setting timer to expire in 5" ) );
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host start timer for group 239.1.1.1 delay 5 sec " ) );
}

// What keeps it silent.

TEST_P( GroupQueryTimer, FiringOfABlockedHostLeavesItMuteUntilItsGroupIsDeleted ) {
    include( S, { a, b } );
    enableAndRest();
    query( 0.3, S, { a } );
    block();
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 5.0 );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host blocked." ) );
    block( false );
    EXPECT_EQ( state(), pending );
    EXPECT_EQ( remaining(), 0.0 );
    EXPECT_THAT( asked(), ElementsAre( std::pair( a, 1U ) ) );
    EXPECT_THAT( answer( S, { b } ), IsEmpty() );
    EXPECT_EQ( status().v3GroupSourceQueryReceived(), 2U );
    removeGroup( S );
    include( S, { a } );
    rest();
    EXPECT_THAT( answer( S, { a } ), ElementsAre( "IS_IN 232.1.1.1 {10.9.9.1}" ) );
}

TEST_P( GroupQueryTimer, FiringOfAnIngressHostIsDropped ) {
    exclude( G );
    enableAndRest();
    query( 0.3, G );
    makeIngress();
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 5.0 );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host direction is ingress " ) );
    EXPECT_EQ( state( G ), pending );
    EXPECT_EQ( remaining( G ), 0.0 );
}

TEST_P( GroupQueryTimer, FiringAtVersion2IsDropped ) {
    exclude( G );
    enableAndRest();
    query( 0.3, G );
    hearQuery( 255 );
    auto const before = reports();
    runFor( 3.5 );
    EXPECT_EQ( reports(), before );
    EXPECT_EQ( state( G ), pending );
    runFor( 400.0 );
    ASSERT_EQ( status().igmpVersion(), igmpVersion3 );
    EXPECT_THAT( answer( G ), IsEmpty() );
}

TEST_P( GroupQueryTimer, WithoutAWayToTheWireTheAnswerIsDropped ) {
    include( S, { a } );
    enableAndRest();
    query( 0.3, S, { a } );
    unbind();
    auto const changed = changes();
    runFor( 5.0 );
    EXPECT_TRUE( changed.none() );
    EXPECT_EQ( state(), idle );
    EXPECT_THAT( asked(), IsEmpty() );
}

TEST_P( GroupQueryTimer, GoesWithItsGroupUnanswered ) {
    exclude( G );
    enableAndRest();
    query( 0.3, G );
    removeGroup();
    EXPECT_FALSE( hasQueryTimer() );
    runFor( 10.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "TO_IN 239.1.1.1 {}", "TO_IN 239.1.1.1 {}" ) );
}

TEST_P( GroupQueryTimer, GoesWithADisabledHostUnanswered ) {
    exclude( G );
    enableAndRest();
    query( 0.3, G );
    host().enabledIs( false );
    settle();
    runFor( 10.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

} // namespace
