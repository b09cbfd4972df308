#include "tests/engine/V3Test.h"

namespace {

using namespace Igmp;
using Support::nextDrawIs;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using Zornet::IpAddr;

class GeneralQueryTimer : public V3Test {
  protected:
    static constexpr char const* other = "239.1.1.2";

    /// Hears a general query of ten seconds and draws the answer's delay.
    void query( double draw ) {
        nextDrawIs( draw );
        hearV3Query( 100 );
    }
    void queryWithInterval( double draw, U8 qqic ) {
        nextDrawIs( draw );
        hear( Lab::v3QueryMessage( IpAddr(), {}, 100, false, 2, qqic ) );
    }
    /// Room for so many records of groups without sources, and for nothing behind them.
    void roomForRecords( U32 count ) {
        host().mtuIs( headerBytes + 8 * count + 4 );
        settle();
    }
    Seconds remaining() { return general().responseDelayRemaining(); }
    TimerState state() { return general().responseDelayTimerState(); }
    /// Runs until the answer's next packet has been sent, and no further.
    void runToNextPacket() { runFor( remaining() + tolerance / 2 ); }
};

INSTANTIATE_DELIVERY_TESTS( GeneralQueryTimer );

// A new machine.

TEST_P( GeneralQueryTimer, StandsStillWhenItIsMade ) {
    enable( igmpVersion3 );
    EXPECT_TRUE( general().initialized() );
    EXPECT_EQ( state(), idle );
    EXPECT_EQ( remaining(), Kiv::never );
    EXPECT_FALSE( general().waitForQueryInterval() );
    EXPECT_DOUBLE_EQ( general().queryInterval(), 125.0 );
    ASSERT_NE( general().queryReportInfo(), nullptr );
    EXPECT_EQ( general().queryReportInfo()->responseDelayRemaining(), 0.0 );
}

TEST_P( GeneralQueryTimer, OnAStatusOfAnEarlierEnableItBeginsWithTheWait ) {
    setPeriodic( 5.0 );
    enable( igmpVersion3 );
    auto const timer = IgmpV3HostGeneralQueryTimerSm::IgmpV3HostGeneralQueryTimerSmIs(
        nullptr, wheel(), Ptr<IgmpHost>( &host() ), Ptr<IgmpHostStatus>( &status() ), &sm()
    );
    EXPECT_TRUE( timer->waitForQueryInterval() );
    EXPECT_NEAR( timer->responseDelayRemaining(), 125.0, tolerance );
}

// The answer.

TEST_P( GeneralQueryTimer, QueryIsAnsweredAfterItsRandomDelay ) {
    exclude( G );
    enableAndRest();
    auto const changed = changes();
    query( 0.3 );
    EXPECT_EQ( state(), pending );
    EXPECT_NEAR( remaining(), 3.0, tolerance );
    EXPECT_NEAR( general().queryReportInfo()->responseDelayRemaining(), 3.0, tolerance );
    runFor( 2.9 );
    EXPECT_THAT( sent(), IsEmpty() );
    runFor( 0.2 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
    EXPECT_THAT( changed.list(), ElementsAre( "v3CurrentStateReportSent=2", "v3GeneralQueryReceived=1" ) );
    EXPECT_EQ( state(), idle );
}

TEST_P( GeneralQueryTimer, AnswerNamesTheStateOfEveryGroup ) {
    exclude( G, { b } );
    include( S, { a, b } );
    enableAndRest();
    TraceCapture trace( "IgmpHost", 9 );
    query( 0.3 );
    EXPECT_THAT( trace.texts(), Contains( HasSubstr( "Setting timer to expire at " ) ) );
    runFor( 4.0 );
    EXPECT_THAT(
        takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {10.9.9.2}, IS_IN 232.1.1.1 {10.9.9.1 10.9.9.2}" )
    );
    EXPECT_THAT( trace.texts(), Contains( "General Query report from 10.0.0.1 with 2 groups" ) );
}

TEST_P( GeneralQueryTimer, WithoutGroupsNothingIsSentOrCounted ) {
    enable( igmpVersion3 );
    TraceCapture trace( "IgmpHost", 9 );
    query( 0.3 );
    runFor( 10.0 );
    EXPECT_THAT( trace.texts(), Contains( "General Query report from 10.0.0.1 with 0 groups" ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( reports(), Reports( 0, 0 ) );
    EXPECT_EQ( state(), idle );
}

TEST_P( GeneralQueryTimer, IncludeGroupsWithoutSourcesAreNotInTheAnswer ) {
    include( S, {} );
    enable( igmpVersion3 );
    query( 0.3 );
    runFor( 10.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( reports(), Reports( 0, 0 ) );
    EXPECT_EQ( state(), idle );
}

TEST_P( GeneralQueryTimer, RecordsOfVersion0AreInTheAnswer ) {
    enable( igmpVersion3 );
    host().v3groupIs( IpAddr( G ) )->filterModeIs( IgmpV3GroupRecord::exclude );
    settle();
    query( 0.3 );
    runFor( 10.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
}

TEST_P( GeneralQueryTimer, EditThatIsNotRaisedIsInTheAnswer ) {
    exclude( G );
    enableAndRest();
    record().sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    query( 0.3 );
    runFor( 10.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {10.9.9.1}" ) );
}

TEST_P( GeneralQueryTimer, LeavingGroupsAreNotInTheAnswer ) {
    setRobustness( 200 );
    exclude( G );
    exclude( other );
    enable( igmpVersion3 );
    removeGroup();
    query( 0.3 );
    runFor( 10.0 );
    EXPECT_TRUE( hasGroupSm() );
    EXPECT_THAT( takeRecords(), Contains( "IS_EX 239.1.1.2 {}" ).Times( 1 ) );
}

TEST_P( GeneralQueryTimer, AnswerKeepsWhatIsOwed ) {
    setRobustness( 100 );
    exclude( G );
    enable( igmpVersion3 );
    query( 0.1 );
    U32 const owed = groupSm().filterModeTransCount();
    general().handleResponseDelayTimer();
    EXPECT_EQ( groupSm().filterModeTransCount(), owed );
}

// Several packets.

TEST_P( GeneralQueryTimer, TwentyGroupsInPacketsOfTenDivideTheDelayBy4 ) {
    excludeAll( groupsInOrder( 20 ) );
    roomForRecords( 10 );
    enableAndRest();
    query( 0.8 );
    runFor( 7.9 );
    nextDrawIs( 0.5 );
    TraceCapture trace( "IgmpHost", 9 );
    runToNextPacket();
    EXPECT_NEAR( remaining(), 1.0, tolerance ); // half of 8.0 / 4
    EXPECT_NEAR( general().queryReportInfo()->responseDelayRemaining(), 7.0, tolerance );
    EXPECT_THAT( trace.texts(), Contains( "General query schedule a delay 1 sec " ) );
    runFor( 1.1 );
    EXPECT_THAT( sent(), SizeIs( 2 ) );
    EXPECT_EQ( state(), idle );
}

TEST_P( GeneralQueryTimer, DivisorIsThatOfTheGroupsInThePacketJustSent ) {
    auto const order = groupsInOrder( 7 );
    excludeAll( order );
    roomForRecords( 3 );
    enableAndRest();
    query( 0.6 );
    runFor( 5.9 );
    nextDrawIs( 0.5 );
    runToNextPacket();
    EXPECT_NEAR( remaining(), 6.0 / 4 / 2, tolerance ); // 7 / 3 + 2 = 4
    runFor( remaining() - 0.01 );
    nextDrawIs( 0.5 );
    runToNextPacket();
    EXPECT_NEAR( remaining(), 5.25 / 4 / 2, tolerance );
    runFor( 5.0 );
    EXPECT_EQ( state(), idle );
    EXPECT_THAT( sent(), SizeIs( 3 ) );
}

TEST_P( GeneralQueryTimer, AnswerOfSeveralPacketsNamesEachGroupOnceInOrder ) {
    auto const order = groupsInOrder( 5 );
    excludeAll( order );
    roomForRecords( 2 );
    enableAndRest();
    query( 0.3 );
    runFor( 20.0 );
    auto const is = [&]( std::size_t i ) { return "IS_EX " + order[i] + " {}"; };
    EXPECT_THAT(
        takeSent(), ElementsAre(
                        "v3report " + is( 0 ) + ", " + is( 1 ), "v3report " + is( 2 ) + ", " + is( 3 ),
                        "v3report " + is( 4 )
                    )
    );
}

TEST_P( GeneralQueryTimer, FurtherPacketsTogetherTakeLessThanTheFirstDelay ) {
    excludeAll( groupsInOrder( 60 ) );
    roomForRecords( 3 );
    enableAndRest();
    Seconds const asked = elapsed();
    query( 0.4 );
    runFor( 20.0 );
    ASSERT_THAT( sent(), SizeIs( 20 ) );
    EXPECT_NEAR( sent().front().elapsed - asked, 4.0, tolerance );
    EXPECT_LT( sent().back().elapsed - asked, 8.0 );
    EXPECT_EQ( state(), idle );
}

TEST_P( GeneralQueryTimer, CutGroupBeginsTheNextPacketWhole ) {
    auto const order = groupsInOrder( 3 );
    excludeAll( order );
    auto const wide = host().v3group( IpAddr( order[1] ) );
    wide->sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    wide->sourceIs()->sourceIpIs( IpAddr( b ), 1 );
    roomForRecords( 2 );
    enableAndRest();
    query( 0.3 );
    runFor( 20.0 );
    ASSERT_THAT( sent(), SizeIs( 3 ) );
    EXPECT_THAT(
        Support::describe( sent()[0].bytes ),
        HasSubstr( "IS_EX " + order[0] + " {}, IS_EX " + order[1] + " {10.9.9." )
    );
    EXPECT_EQ( sent()[0].bytes.size(), headerBytes + 8U + 12U );
    EXPECT_EQ( sortedRecords( sent()[1].bytes ), "IS_EX " + order[1] + " {10.9.9.1 10.9.9.2}" );
    EXPECT_EQ( sortedRecords( sent()[2].bytes ), "IS_EX " + order[2] + " {}" );
}

TEST_P( GeneralQueryTimer, ChainGoesOnBehindAGroupThatHasGone ) {
    auto const order = groupsInOrder( 4 );
    excludeAll( order );
    roomForRecords( 2 );
    enableAndRest();
    query( 0.3 );
    runToNextPacket();
    ASSERT_EQ( textOf( general().queryReportInfo()->bookMarkSourceIp() ), order[2] );
    host().processV3GroupChangeIs( false ); // no leave on the wire
    host().v3groupDel( IpAddr( order[2] ) );
    runFor( 10.0 );
    EXPECT_EQ( takeSent().at( 1 ), "v3report IS_EX " + order[3] + " {}" );
    EXPECT_EQ( state(), idle );
}

TEST_P( GeneralQueryTimer, EarlierQueryStartsARunningChainOver ) {
    auto const order = groupsInOrder( 4 );
    excludeAll( order );
    roomForRecords( 2 );
    enableAndRest();
    query( 0.9 );
    runFor( 8.9 );
    nextDrawIs( 0.9 );
    runToNextPacket();
    ASSERT_GT( remaining(), 1.5 );
    query( 0.1 );
    EXPECT_NEAR( remaining(), 1.0, tolerance );
    EXPECT_FALSE( general().queryReportInfo()->useBookMark() );
    EXPECT_NEAR( general().queryReportInfo()->responseDelayRemaining(), 1.0, tolerance );
    sent().clear();
    runToNextPacket();
    EXPECT_THAT( takeSent(), ElementsAre( "v3report IS_EX " + order[0] + " {}, IS_EX " + order[1] + " {}" ) );
}

TEST_P( GeneralQueryTimer, RecordLargerThanAPacketKeepsTheChainThere ) {
    auto const order = groupsInOrder( 3 );
    roomForRecords( 1 );
    excludeAll( order );
    auto const wide = host().v3group( IpAddr( order[1] ) );
    wide->sourceIs()->sourceIpIs( IpAddr( a ), 1 );
    wide->sourceIs()->sourceIpIs( IpAddr( b ), 1 );
    host().processV3GroupChangeIs( false ); // the sender would stall at the same record
    enable( igmpVersion3 );
    query( 0.3 );
    ASSERT_TRUE( activity().runUntil( [&] { return sent().size() >= 50; }, 20.0 ) );
    std::vector<std::string> const described = takeSent();
    EXPECT_EQ( described[0], "v3report IS_EX " + order[0] + " {}" );
    EXPECT_THAT( described[1], HasSubstr( "IS_EX " + order[1] + " {10.9.9." ) );
    EXPECT_THAT( std::vector( described.begin() + 1, described.end() ), Each( described[1] ) );
    EXPECT_EQ( state(), pending );
    host().igmpVersionIs( igmpVersion2 ); // the version ends it
    settle();
    runFor( 5.0 );
    EXPECT_THAT( takeSent(), Each( described[1] ) );
}

TEST_P( GeneralQueryTimer, PacketWithoutRoomForARecordEndsTheProcess ) {
    host().mtuIs( headerBytes + 11 );
    enable( igmpVersion3 );
    host().processV3GroupChangeIs( false );
    exclude( G );
    query( 0.3 );
    EXPECT_DEATH( runFor( 5.0 ), Zornet::assertionText( "queryReportInfo()->numGroups() > 0" ) );
}

// Which query counts.

TEST_P( GeneralQueryTimer, EarlierAnswerReplacesALaterOne ) {
    exclude( G );
    enableAndRest();
    query( 0.8 );
    query( 0.3 );
    EXPECT_NEAR( remaining(), 3.0, tolerance );
}

TEST_P( GeneralQueryTimer, LaterAnswerLeavesTheTimerAlone ) {
    exclude( G );
    enableAndRest();
    query( 0.3 );
    TraceCapture trace( "IgmpHost", 9 );
    queryWithInterval( 0.8, 60 );
    EXPECT_NEAR( remaining(), 3.0, tolerance );
    EXPECT_DOUBLE_EQ( general().queryInterval(), 125.0 );
    EXPECT_FALSE( trace.contains( "start timer for group" ) );
}

TEST_P( GeneralQueryTimer, EqualDelayLeavesTheTimerAlone ) {
    enable( igmpVersion3 );
    nextDrawIs( 0.5 );
    maybeStartGroupTimerV3( &sm(), IpAddr(), 4, 60.0 );
    nextDrawIs( 0.5 );
    maybeStartGroupTimerV3( &sm(), IpAddr(), 4, 30.0 ); // at the same instant
    EXPECT_NEAR( general().queryInterval(), 60.0, tolerance );
}

TEST_P( GeneralQueryTimer, LearnsTheQuerysInterval ) {
    enable( igmpVersion3 );
    queryWithInterval( 0.5, 60 );
    EXPECT_DOUBLE_EQ( general().queryInterval(), 60.0 );
    queryWithInterval( 0.2, 0 );
    EXPECT_DOUBLE_EQ( general().queryInterval(), 125.0 );
}

TEST_P( GeneralQueryTimer, SaysWhenItStarts ) {
    enable( igmpVersion3 );
    TraceCapture trace( "IgmpHost", 9 );
    query( 0.5 );
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host start timer for group 0.0.0.0 delay 5 sec " ) );
}

// What keeps it silent.

TEST_P( GeneralQueryTimer, FiringOfABlockedHostLeavesItMuteUntilTheHostIsDisabled ) {
    exclude( G );
    enableAndRest();
    query( 0.3 );
    block();
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 5.0 );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host blocked." ) );
    EXPECT_EQ( state(), pending );
    EXPECT_EQ( remaining(), 0.0 );
    block( false );
    auto const changed = changes();
    query( 0.3 );
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_THAT( changed.list(), ElementsAre( "v3GeneralQueryReceived=2" ) );
    host().enabledIs( false );
    settle();
    enableAndRest();
    query( 0.3 );
    runFor( 5.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
}

TEST_P( GeneralQueryTimer, MuteTimerSpeaksAgainWhenItIsSet ) {
    exclude( G );
    enableAndRest();
    query( 0.3 );
    block();
    runFor( 5.0 );
    block( false );
    general().doSetTimer( 1.0 );
    runFor( 2.0 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
}

TEST_P( GeneralQueryTimer, FiringOfAnIngressHostIsDropped ) {
    exclude( G );
    enableAndRest();
    query( 0.3 );
    makeIngress();
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 5.0 );
    EXPECT_THAT( trace.texts(), ElementsAre( "IgmpHost host direction is ingress " ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( state(), pending );
    EXPECT_EQ( remaining(), 0.0 );
}

TEST_P( GeneralQueryTimer, FiringAtVersion2IsDropped ) {
    exclude( G );
    enableAndRest();
    query( 0.3 );
    hearQuery( 255 );
    auto const before = reports();
    runFor( 3.5 );
    EXPECT_EQ( reports(), before );
    EXPECT_EQ( state(), pending );
    EXPECT_EQ( remaining(), 0.0 );
    runFor( 400.0 );
    ASSERT_EQ( status().igmpVersion(), igmpVersion3 );
    sent().clear();
    query( 0.3 );
    runFor( 20.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( GeneralQueryTimer, WithoutAWayToTheWireTheAnswerEndsUnsent ) {
    excludeAll( groupsInOrder( 4 ) );
    roomForRecords( 2 );
    enableAndRest();
    query( 0.3 );
    unbind();
    auto const changed = changes();
    runFor( 20.0 );
    EXPECT_TRUE( changed.none() );
    EXPECT_EQ( state(), idle );
}

// The timer and periodic reports.

TEST_P( GeneralQueryTimer, WithoutPeriodicReportingTheTimerIsPlain ) {
    enable( igmpVersion3 );
    auto const changed = changes();
    general().doSetTimer( 3.0 );
    EXPECT_EQ( state(), pending );
    EXPECT_NEAR( remaining(), 3.0, tolerance );
    general().doSetTimer( Kiv::never );
    EXPECT_EQ( state(), idle );
    EXPECT_EQ( remaining(), Kiv::never );
    EXPECT_TRUE( changed.none() );
}

class PeriodicGeneralQueryTimer : public GeneralQueryTimer {
  protected:
    static constexpr Seconds interval = 5.0;

    void SetUp() override {
        setPeriodic( interval );
        enable( igmpVersion3 );
        exclude( G );
        rest();
    }
    bool continues() { return status().continueUnsolicitedReport(); }
    bool waits() { return general().waitForQueryInterval(); }
};

INSTANTIATE_DELIVERY_TESTS( PeriodicGeneralQueryTimer );

TEST_P( PeriodicGeneralQueryTimer, QueryStopsTheReportsAtOnce ) {
    ASSERT_TRUE( continues() );
    TraceCapture trace( "IgmpHost", 9 );
    query( 0.9 );
    EXPECT_FALSE( continues() );
    EXPECT_FALSE( waits() );
    EXPECT_THAT( trace.texts(), Contains( "Disabling unsolicited report generation" ) );
    runFor( 8.9 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( PeriodicGeneralQueryTimer, AnswerIsFollowedByTheWaitForTheQueryInterval ) {
    query( 0.1 );
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 1.1 );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}" ) );
    EXPECT_TRUE( waits() );
    EXPECT_EQ( state(), pending );
    EXPECT_NEAR( remaining(), 124.9, tolerance );
    EXPECT_THAT( trace.texts(), Contains( "Setting timer for 125 seconds." ) );
    EXPECT_FALSE( continues() );
}

TEST_P( PeriodicGeneralQueryTimer, ReportsGoOnOneQueryIntervalAfterTheAnswer ) {
    queryWithInterval( 0.1, 60 );
    runFor( 60.9 );
    sent().clear();
    EXPECT_FALSE( continues() );
    TraceCapture trace( "IgmpHost", 9 );
    runFor( 0.2 );
    EXPECT_TRUE( continues() );
    EXPECT_FALSE( waits() );
    EXPECT_EQ( state(), idle );
    EXPECT_THAT( trace.texts(), Contains( "Enabling unsolicited report generation" ) );
    EXPECT_THAT( sent(), IsEmpty() ); // an answer is not sent again
    runFor( 2 * interval );
    EXPECT_THAT( takeRecords(), ElementsAre( "IS_EX 239.1.1.1 {}", "IS_EX 239.1.1.1 {}" ) );
}

TEST_P( PeriodicGeneralQueryTimer, EarlierQueryDuringTheWaitCancelsItAndStopsTheReports ) {
    query( 0.1 );
    runFor( 50.0 );
    sent().clear();
    ASSERT_TRUE( waits() );
    status().continueUnsolicitedReportIs( true );
    settle();
    query( 0.3 );
    EXPECT_FALSE( waits() );
    EXPECT_FALSE( continues() );
    EXPECT_NEAR( remaining(), 3.0, tolerance );
}

TEST_P( PeriodicGeneralQueryTimer, LaterQueryDuringTheWaitGoesUnanswered ) {
    query( 0.1 );
    runFor( 124.0 );
    sent().clear();
    ASSERT_LT( remaining(), 3.0 );
    query( 0.5 );
    EXPECT_TRUE( waits() );
    runFor( 2.2 );
    EXPECT_TRUE( continues() );
    runFor( 3.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( PeriodicGeneralQueryTimer, WaitOutlivesAFallBackAsItWas ) {
    query( 0.1 );
    runFor( 50.0 );
    hearQuery( 100 );
    ASSERT_EQ( status().igmpVersion(), igmpVersion2 );
    general().doSetTimer( Kiv::never );
    EXPECT_TRUE( waits() );
    EXPECT_EQ( state(), idle );
    EXPECT_EQ( remaining(), Kiv::never );
}

TEST_P( PeriodicGeneralQueryTimer, FiringOfTheWaitAtVersion2IsDropped ) {
    query( 0.1 );
    runFor( 50.0 );
    hearQuery( 100 );
    status().continueUnsolicitedReportIs( false );
    runFor( 100.0 );
    ASSERT_EQ( status().igmpVersion(), igmpVersion2 );
    EXPECT_TRUE( waits() );
    EXPECT_EQ( state(), pending );
    EXPECT_EQ( remaining(), 0.0 );
}

TEST_P( PeriodicGeneralQueryTimer, DelayAtVersion2TouchesNoReports ) {
    query( 0.1 );
    runFor( 50.0 );
    status().continueUnsolicitedReportIs( true );
    status().igmpVersionIs( igmpVersion2 );
    settle();
    general().doSetTimer( 3.0 );
    EXPECT_TRUE( continues() );
    EXPECT_TRUE( waits() );
    EXPECT_EQ( state(), pending );
}

TEST_P( PeriodicGeneralQueryTimer, EndOfAnAnswerAtVersion2BeginsNoWait ) {
    status().igmpVersionIs( igmpVersion2 );
    settle();
    general().doSetTimer( 3.0 );
    general().doSetTimer( Kiv::never );
    EXPECT_FALSE( waits() );
    EXPECT_EQ( state(), idle );
    EXPECT_EQ( remaining(), Kiv::never );
    EXPECT_TRUE( continues() );
}

TEST_P( PeriodicGeneralQueryTimer, WaitEndsWithoutReportsWherePeriodicReportingHasEnded ) {
    query( 0.1 );
    runFor( 50.0 );
    ASSERT_TRUE( waits() );
    host().enablePeriodicReportIs( false );
    settle();
    general().doSetTimer( Kiv::never );
    EXPECT_FALSE( waits() );
    EXPECT_FALSE( continues() );
    EXPECT_EQ( state(), idle );
}

} // namespace
