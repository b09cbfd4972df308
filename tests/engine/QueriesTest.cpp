/// What a query does: which querier it makes the host remember, what it counts as, and which answers it
/// starts.

#include "engine/RandomDelay.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "tests/engine/EngineTest.h"

namespace {

using namespace Igmp;
using Lab::Bytes;
using Support::Delivery;
using Support::nextDrawIs;
using Support::TraceCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::IpAddr;
using Zornet::U32;
using Zornet::U8;

constexpr double tolerance = 1e-9;

class QueriesBase : public EngineTest {
  protected:
    using EngineTest::EngineTest;

    /// Hears a query of any length, zero behind the eighth byte.
    void hearQueryOfSize( std::size_t size, U8 code, char const* group = "0.0.0.0" ) {
        Bytes query = Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr( group ) );
        query.resize( size );
        Lab::checksum( query );
        hear( query );
    }
    Kiv::Seconds remaining( char const* group = G ) { return timer( group ).responseDelayRemaining(); }
    Kiv::Seconds v1Hold() { return sm().v1RouterPresentTimer()->timeMin() - Kiv::now(); }
    Kiv::Seconds v2Hold() { return sm().v2RouterPresentTimer()->timeMin() - Kiv::now(); }
    IgmpV3HostGeneralQueryTimerSm& generalTimer() { return *sm().igmpV3HostGeneralQueryTimerSm(); }
    IgmpV3HostGroupQueryTimerSm& groupQueryTimer() { return *sm().v3GroupQueryTimerSm( IpAddr( G ) ); }
    void joinAndRestForced( IgmpVersion version ) {
        host().igmpVersionForcedIs( true );
        settle();
        joinAndRest( version );
    }
};

class Queries : public QueriesBase, public ::testing::WithParamInterface<Delivery> {
  protected:
    Queries() : QueriesBase( GetParam() ) {}
};
INSTANTIATE_DELIVERY_TESTS( Queries );

// Which querier is remembered.

TEST_P( Queries, Version1QueryIsRememberedForItsTimeout ) {
    joinAndRest();
    hearQuery( 0 );
    EXPECT_DOUBLE_EQ( v1Hold(), 400.0 );
    EXPECT_FALSE( Kiv::isFinite( v2Hold() ) );
}

TEST_P( Queries, Version2QueryIsRememberedForItsTimeout ) {
    joinAndRest();
    hearQuery( 100 );
    EXPECT_DOUBLE_EQ( v2Hold(), 400.0 );
    EXPECT_FALSE( Kiv::isFinite( v1Hold() ) );
}

TEST_P( Queries, TimeoutsAreThoseConfigured ) {
    joinAndRest();
    host().v1RouterPresentTimeoutIs( 30.0 );
    host().v2RouterPresentTimeoutIs( 40.0 );
    hearQuery( 0 );
    hearQuery( 1 );
    EXPECT_DOUBLE_EQ( v1Hold(), 30.0 );
    EXPECT_DOUBLE_EQ( v2Hold(), 40.0 );
}

TEST_P( Queries, LaterQueryExtendsTheHoldFromItsOwnArrival ) {
    joinAndRest();
    hearQuery( 100 );
    runFor( 100.0 );
    hearQuery( 100 );
    EXPECT_DOUBLE_EQ( v2Hold(), 400.0 );
}

TEST_P( Queries, LoweredTimeoutShortensTheHold ) {
    joinAndRest();
    hearQuery( 0 );
    host().v1RouterPresentTimeoutIs( 10.0 );
    hearQuery( 0 );
    EXPECT_DOUBLE_EQ( v1Hold(), 10.0 );
}

TEST_P( Queries, QueryOf12BytesOrMoreIsNotRemembered ) {
    joinAndRest();
    for ( U8 const code : { U8{ 0 }, U8{ 100 } } ) {
        hearV3Query( code );
        hearV3Query( code, G, { "10.9.9.1" } );
        hearQueryOfSize( 13, code );
    }
    EXPECT_FALSE( Kiv::isFinite( v1Hold() ) );
    EXPECT_FALSE( Kiv::isFinite( v2Hold() ) );
}

TEST_P( Queries, SizesBetweenTheVersionsAreRemembered ) {
    for ( std::size_t const size : { 8U, 9U, 10U, 11U } ) {
        joinAndRest();
        hearQueryOfSize( size, 0 );
        EXPECT_DOUBLE_EQ( v1Hold(), 400.0 ) << size;
        hearQueryOfSize( size, 100 );
        EXPECT_DOUBLE_EQ( v2Hold(), 400.0 ) << size;
        host().enabledIs( false );
        settle();
    }
}

TEST_P( Queries, GroupQueryIsRememberedToo ) {
    joinAndRest();
    hearQuery( 0, unknownGroup );
    hearQuery( 10, G );
    EXPECT_DOUBLE_EQ( v1Hold(), 400.0 );
    EXPECT_DOUBLE_EQ( v2Hold(), 400.0 );
}

TEST_P( Queries, SenderDestinationAndChecksumAreNotLookedAt ) {
    joinAndRest();
    Bytes query{ 0x11, 100, 0xba, 0xad, 0, 0, 0, 0 };
    sm().handleV12Query( reinterpret_cast<Zornet::IgmpV12Hdr*>( query.data() ), 8 );
    EXPECT_DOUBLE_EQ( v2Hold(), 400.0 );
    hear( Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, 100, IpAddr() ), G );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 2U );
}

// Versions 1 and 2: what counts, and which groups answer.

TEST_P( Queries, Version1QueryBringsTheHostDownAndIsAnsweredWithinTheConfiguredTime ) {
    joinAndRest();
    exclude( "239.1.1.2" );
    runFor( 20.0 );
    auto const before = changes();
    hearV1Query();
    EXPECT_THAT( before.list(), ElementsAre( "igmpVersion=igmpVersion1", "v2GeneralQueryReceived=1" ) );
    EXPECT_EQ( status().v1QueryReceived(), 0U );
    for ( char const* const group : { G, "239.1.1.2" } ) {
        EXPECT_EQ( timer( group ).responseDelayTimerState(), pending );
        EXPECT_LE( remaining( group ), 10.0 );
        EXPECT_GE( remaining( group ), 1.0 );
    }
}

TEST_P( Queries, Version1ResponseTimeIsInTenthsOfASecond ) {
    joinAndRest();
    host().v1MaxResponseTimeIs( 50 );
    nextDrawIs( 0.5 );
    hearV1Query();
    EXPECT_NEAR( remaining(), 2.5, tolerance );
}

TEST_P( Queries, GeneralQueryCountsOnce ) {
    joinAndRest();
    auto const before = changes();
    hearQuery( 100 );
    EXPECT_THAT( before.list(), ElementsAre( "v2GeneralQueryReceived=1" ) );
}

TEST_P( Queries, GroupQueryCountsAsSuch ) {
    joinAndRest();
    auto const before = changes();
    hearQuery( 100, G );
    EXPECT_THAT( before.list(), ElementsAre( "v2GroupQueryReceived=1" ) );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
}

TEST_P( Queries, GroupQueryStartsNoOtherGroup ) {
    joinAndRest();
    exclude( "239.1.1.2" );
    runFor( 20.0 );
    hearQuery( 100, G );
    EXPECT_EQ( timer( "239.1.1.2" ).responseDelayTimerState(), idle );
}

TEST_P( Queries, GroupQueryForAnUnknownGroupCountsAndStartsNothing ) {
    joinAndRest();
    hearQuery( 100, unknownGroup );
    EXPECT_EQ( status().v2GroupQueryReceived(), 1U );
    EXPECT_FALSE( hasTimer( unknownGroup ) );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
}

TEST_P( Queries, GroupQueryStartsTheTimerOfAGroupThatIsNotJoined ) {
    joinAndRest();
    include( "239.1.1.2", {} );
    hearQuery( 100, "239.1.1.2" );
    EXPECT_EQ( timer( "239.1.1.2" ).responseDelayTimerState(), pending );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.2" ) );
}

TEST_P( Queries, GeneralQuerySkipsAGroupThatIsNotJoined ) {
    joinAndRest();
    include( "239.1.1.2", {} );
    include( "239.1.1.3", { "10.9.9.1" } );
    runFor( 20.0 );
    hearQuery( 100 );
    EXPECT_EQ( timer( G ).responseDelayTimerState(), pending );
    EXPECT_EQ( timer( "239.1.1.2" ).responseDelayTimerState(), idle );
    EXPECT_EQ( timer( "239.1.1.3" ).responseDelayTimerState(), pending );
}

TEST_P( Queries, RecordThatWasNeverRaisedIsAnsweredFor ) {
    joinAndRest();
    auto const record = host().v3groupIs( IpAddr( "239.1.1.2" ) );
    record->filterModeIs( IgmpV3GroupRecord::exclude );
    settle();
    hearQuery( 100 );
    EXPECT_EQ( timer( "239.1.1.2" ).responseDelayTimerState(), pending );
}

TEST_P( Queries, GroupWhoseChangesAreNotProcessedAnswersAllTheSame ) {
    enable();
    host().processV3GroupChangeIs( false );
    settle();
    exclude( G );
    EXPECT_FALSE( hasTimer() );
    hearQuery( 100 );
    ASSERT_TRUE( hasTimer() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Queries, LongQueryAtAVersion2HostIsAnsweredAsVersion2 ) {
    joinAndRest();
    auto const before = changes();
    nextDrawIs( 0.5 );
    hearV3Query( 200 ); // raw, and not as version 3 encodes it
    EXPECT_THAT( before.list(), ElementsAre( "v2GeneralQueryReceived=1" ) );
    EXPECT_NEAR( remaining(), 10.0, tolerance );
    hearV3Query( 10, G, { "10.9.9.1" } );
    EXPECT_EQ( status().v2GroupQueryReceived(), 1U );
    EXPECT_LT( remaining(), 1.0 );
}

TEST_P( Queries, LongQueryOfCode0AtAVersion2HostTakesTheVersion1ResponseTime ) {
    joinAndRest();
    nextDrawIs( 0.5 );
    hearV3Query( 0 );
    EXPECT_NEAR( remaining(), 5.0, tolerance );
    EXPECT_EQ( status().igmpVersion(), igmpVersion2 );
}

TEST_P( Queries, SourceCountIsNotCheckedAtAVersion2Host ) {
    joinAndRest();
    Bytes query = Lab::v3QueryMessage( IpAddr(), { IpAddr( "10.9.9.1" ) }, 100, false, 2, 125 );
    query[11] = 2;
    Lab::checksum( query );
    hear( query );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
}

TEST_P( Queries, AnswerTouchesNeitherMembershipNorLastReporter ) {
    joinAndRest();
    hearReport( G );
    include( "239.1.1.2", {} );
    hearQuery( 100 );
    hearQuery( 100, "239.1.1.2" );
    EXPECT_FALSE( timer().lastReporter() );
    EXPECT_TRUE( timer().joined() );
    EXPECT_FALSE( timer( "239.1.1.2" ).joined() );
}

TEST_P( Queries, VersionIsInForceBeforeTheQueryIsAnswered ) {
    joinAndRest( igmpVersion3 );
    auto const before = changes();
    hearQuery( 100 );
    EXPECT_THAT( before.list(), ElementsAre( "igmpVersion=igmpVersion2", "v2GeneralQueryReceived=1" ) );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_EQ( generalTimer().responseDelayTimerState(), idle );
}

// Keeping or drawing anew.

TEST_P( Queries, PendingAnswerThatComesSoonEnoughIsKept ) {
    joinAndRest();
    timer().doSetTimer( 3.0 );
    hearQuery( 100 );
    EXPECT_DOUBLE_EQ( remaining(), 3.0 );
}

TEST_P( Queries, PendingAnswerThatComesTooLateIsDrawnAnew ) {
    joinAndRest();
    timer().doSetTimer( 3.0 );
    nextDrawIs( 0.75 );
    hearQuery( 20 );
    EXPECT_NEAR( remaining(), 1.5, tolerance );
}

TEST_P( Queries, NewDelayComesFromTheNewMaximumAlone ) {
    joinAndRest();
    for ( int i = 0; i < 200; ++i ) {
        timer().doSetTimer( 3.0 );
        hearQuery( 20 );
        ASSERT_GE( remaining(), 0.2 );
        ASSERT_LT( remaining(), 2.0 );
    }
}

TEST_P( Queries, TieKeepsThePendingAnswer ) {
    joinAndRest();
    timer().doSetTimer( 2.0 );
    nextDrawIs( 0.75 );
    hearQuery( 20 );
    EXPECT_DOUBLE_EQ( remaining(), 2.0 );
}

TEST_P( Queries, KeepingDrawsNothing ) {
    joinAndRest();
    timer().doSetTimer( 2.0 );
    nextDrawIs( 0.75 );
    hearQuery( 100 );
    EXPECT_DOUBLE_EQ( drand48(), 0.75 );
}

TEST_P( Queries, PendingAnswerWithoutAnEndIsKept ) {
    host().enablePeriodicReportIs( true );
    host().unsolicitedReportIntervalIs( 5.0 );
    settle();
    joinAndRest();
    timer().queryIntervalIs( Kiv::never );
    hearReport( G );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    hearQuery( 100 );
    EXPECT_FALSE( Kiv::isFinite( remaining() ) );
}

TEST_P( Queries, ArmedTimerWithoutAPendingAnswerIsDrawnAnew ) {
    host().enablePeriodicReportIs( true );
    host().unsolicitedReportIntervalIs( 5.0 );
    settle();
    joinAndRest();
    hearReport( G );
    hearReport( G ); // armed for the interval in force, and no answer pending
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    nextDrawIs( 0.75 );
    hearQuery( 200 );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_NEAR( remaining(), 15.0, tolerance );
}

TEST_P( Queries, ResponseTimeOfZeroAnswersAtOnce ) {
    joinAndRest();
    host().v1MaxResponseTimeIs( 0 );
    hearV1Query();
    settle();
    EXPECT_THAT( takeSent(), ElementsAre( "v1report 239.1.1.1" ) );
}

// Version 3.

TEST_P( Queries, Version3GeneralQueryCountsAndStartsItsOwnTimerOnly ) {
    joinAndRest( igmpVersion3 );
    auto const before = changes();
    hearV3Query( 100 );
    EXPECT_THAT( before.list(), ElementsAre( "v3GeneralQueryReceived=1" ) );
    EXPECT_EQ( generalTimer().responseDelayTimerState(), pending );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
}

TEST_P( Queries, Version3GroupQueryCountsAsGeneralToo ) {
    joinAndRest( igmpVersion3 );
    auto const before = changes();
    hearV3Query( 100, G );
    EXPECT_THAT( before.list(), ElementsAre( "v3GeneralQueryReceived=1", "v3GroupQueryReceived=1" ) );
    EXPECT_EQ( groupQueryTimer().responseDelayTimerState(), pending );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
}

TEST_P( Queries, Version3SourceQueryCountsAsGeneralToo ) {
    joinAndRest( igmpVersion3 );
    auto const before = changes();
    hearV3Query( 100, G, { "10.9.9.1" } );
    EXPECT_THAT( before.list(), ElementsAre( "v3GeneralQueryReceived=1", "v3GroupSourceQueryReceived=1" ) );
    EXPECT_TRUE( groupQueryTimer().source()->hasSourceIp( IpAddr( "10.9.9.1" ) ) );
}

TEST_P( Queries, Version3GroupQueryForAnUnknownGroupCountsAsGeneralOnly ) {
    joinAndRest( igmpVersion3 );
    auto const before = changes();
    hearV3Query( 100, unknownGroup );
    EXPECT_THAT( before.list(), ElementsAre( "v3GeneralQueryReceived=1" ) );
    EXPECT_FALSE( hasTimer( unknownGroup ) );
}

TEST_P( Queries, Version3QueryWhoseSourcesDoNotFitItsSizeIsDropped ) {
    joinAndRest( igmpVersion3 );
    auto const before = changes();
    TraceCapture const trace( "IgmpHost", 9 );
    for ( U8 const count : { U8{ 0 }, U8{ 2 }, U8{ 255 } } ) {
        Bytes query = Lab::v3QueryMessage( IpAddr( G ), { IpAddr( "10.9.9.1" ) }, 100, false, 2, 125 );
        query[11] = count;
        Lab::checksum( query );
        hear( query );
        EXPECT_EQ(
            trace.texts().back(), "Packet has " + std::to_string( count ) + " sources, size not correct"
        );
    }
    EXPECT_THAT( before.list(), IsEmpty() );
    EXPECT_EQ( groupQueryTimer().responseDelayTimerState(), idle );
}

TEST_P( Queries, Version3QueryOf13BytesIsDropped ) {
    joinAndRest( igmpVersion3 );
    auto const before = changes();
    hearQueryOfSize( 13, 100 );
    EXPECT_THAT( before.list(), IsEmpty() );
}

TEST_P( Queries, Version3ResponseTimeIsCutToWholeSeconds ) {
    joinAndRest( igmpVersion3 );
    nextDrawIs( 0.5 );
    hearV3Query( 39 );
    EXPECT_NEAR( generalTimer().responseDelayRemaining(), 1.5, tolerance );
}

TEST_P( Queries, Version3ResponseTimeIsDecoded ) {
    joinAndRest( igmpVersion3 );
    nextDrawIs( 0.5 );
    hearV3Query( 0x8f ); // 248 tenths
    EXPECT_NEAR( generalTimer().responseDelayRemaining(), 12.0, tolerance );
}

TEST_P( Queries, Version3QueryIntervalIsLearned ) {
    joinAndRest( igmpVersion3 );
    hear( Lab::v3QueryMessage( IpAddr(), {}, 100, false, 2, 0x8f ) );
    EXPECT_DOUBLE_EQ( generalTimer().queryInterval(), 248.0 );
}

// A host held at version 3.

TEST_P( Queries, GeneralQueryOfTheOldFormAtAHostHeldAtVersion3CountsTwice ) {
    joinAndRestForced( igmpVersion3 );
    auto const before = changes();
    hearQuery( 100 );
    EXPECT_THAT( before.list(), ElementsAre( "v2GeneralQueryReceived=2" ) );
    EXPECT_EQ( generalTimer().responseDelayTimerState(), pending );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
}

TEST_P( Queries, Version1QueryAtAHostHeldAtVersion3CountsTwice ) {
    joinAndRestForced( igmpVersion3 );
    auto const before = changes();
    nextDrawIs( 0.5 );
    hearV1Query();
    EXPECT_THAT( before.list(), ElementsAre( "v2GeneralQueryReceived=2" ) );
    EXPECT_NEAR( generalTimer().responseDelayRemaining(), 50.0, tolerance ); // in whole seconds
    EXPECT_LT( remaining(), 10.0 );                                          // in tenths
}

TEST_P( Queries, ResponseTimeOfTheOldFormIsCutToWholeSecondsAtAHostHeldAtVersion3 ) {
    joinAndRestForced( igmpVersion3 );
    nextDrawIs( 0.5 );
    hearQuery( 200 );
    EXPECT_NEAR( generalTimer().responseDelayRemaining(), 10.0, tolerance ); // not decoded
    runFor( 30.0 );
    nextDrawIs( 0.5 );
    hearQuery( 39 );
    EXPECT_NEAR( generalTimer().responseDelayRemaining(), 1.5, tolerance );
    EXPECT_DOUBLE_EQ( generalTimer().queryInterval(), 125.0 );
}

TEST_P( Queries, GroupQueryOfTheOldFormForAnUnknownGroupAtAHostHeldAtVersion3CountsAsBoth ) {
    joinAndRestForced( igmpVersion3 );
    auto const before = changes();
    hearQuery( 100, unknownGroup );
    EXPECT_THAT( before.list(), ElementsAre( "v2GeneralQueryReceived=1", "v2GroupQueryReceived=1" ) );
}

TEST_P( Queries, SizesBetweenTheVersionsTakeTheOldPathOnly ) {
    for ( std::size_t const size : { 9U, 10U, 11U } ) {
        joinAndRestForced( igmpVersion3 );
        auto const before = changes();
        hearQueryOfSize( size, 100 );
        EXPECT_THAT( before.list(), ElementsAre( "v2GeneralQueryReceived=1" ) ) << size;
        EXPECT_EQ( generalTimer().responseDelayTimerState(), idle );
        EXPECT_EQ( timer().responseDelayTimerState(), pending );
        host().enabledIs( false );
        settle();
    }
}

TEST_P( Queries, GroupQueryOfSizesBetweenTheVersionsIsHarmlessAtAHostHeldAtVersion3 ) {
    joinAndRestForced( igmpVersion3 );
    auto const before = changes();
    hearQueryOfSize( 9, 100, G );
    EXPECT_THAT( before.list(), ElementsAre( "v2GroupQueryReceived=1" ) );
}

TEST_P( Queries, TimersOfTheOldPathSendNothingAtVersion3 ) {
    joinAndRestForced( igmpVersion3 );
    hearQuery( 10 );
    auto const before = changes();
    runFor( 2.0 );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_THAT( takeSent(), ElementsAre( "v3report IS_EX 239.1.1.1 {}" ) );
    EXPECT_THAT( before.list(), ElementsAre( "v3CurrentStateReportSent=2" ) );
}

TEST_P( Queries, HostWithInfiniteTimeoutsStaysAtVersion3AndCountsTwice ) {
    host().v2RouterPresentTimeoutIs( Kiv::never );
    joinAndRest( igmpVersion3 );
    hearQuery( 100 );
    EXPECT_EQ( status().igmpVersion(), igmpVersion3 );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 2U );
}

// What ends the process.

class QueriesDeathTest : public QueriesBase {};

TEST_F( QueriesDeathTest, GroupQueryOfTheOldFormForAConfiguredGroupAtAHostHeldAtVersion3 ) {
    joinAndRestForced( igmpVersion3 );
    EXPECT_DEATH( hearQuery( 100, G ), "assertion failed: igmpV3Hdr != __null\n" );
}

/// Leaves without a fault as soon as a query is counted.
class LeaveAtACount : public IgmpHostStatus::Notifiee {
  public:
    explicit LeaveAtACount( Kiv::Ptr<IgmpHostStatus> const& status ) : Notifiee( status ) {
        isRegisteredNotifieeIs( true );
    }
    void onV2GeneralQueryReceived() override { std::_Exit( 0 ); }
    void onV2GroupQueryReceived() override { std::_Exit( 0 ); }
};

TEST_F( QueriesDeathTest, TheSameBeforeAnythingIsCounted ) {
    joinAndRestForced( igmpVersion3 );
    Kiv::Ptr<LeaveAtACount> const watcher( new LeaveAtACount( &status() ) );
    EXPECT_DEATH( hearQuery( 100, G ), "assertion failed: igmpV3Hdr != __null\n" );
}

TEST_F( QueriesDeathTest, TheSameWithInfiniteTimeouts ) {
    host().v2RouterPresentTimeoutIs( Kiv::never );
    joinAndRest( igmpVersion3 );
    EXPECT_DEATH( hearQuery( 100, G ), "assertion failed: igmpV3Hdr != __null\n" );
}

TEST_F( QueriesDeathTest, QueryAtADisabledHost ) {
    Bytes query{ 0x11, 100, 0, 0, 0, 0, 0, 0 };
    auto* const hdr = reinterpret_cast<Zornet::IgmpV12Hdr*>( query.data() );
    EXPECT_DEATH( sm().handleV12Query( hdr, 8 ), "assertion failed: igmpHost\\(\\)->enabled\\(\\)\n" );
}

// What is said.

TEST_P( Queries, SaysWhatItHeardAndStarted ) {
    joinAndRest();
    TraceCapture const trace( "IgmpHost", 9 );
    nextDrawIs( 0.5 );
    hearQuery( 100 );
    EXPECT_EQ( trace.texts().front().rfind( "IgmpHost host received query: ", 0 ), 0U );
    EXPECT_TRUE( trace.contains( " size: 8 maxResp: 100" ) );
    EXPECT_THAT( trace.texts(), ::testing::Contains( "maxResponseTime: mrt 100 maxSecs 10" ) );
    EXPECT_EQ( trace.texts().back(), "IgmpHost host start timer for group 239.1.1.1 delay 5" );
}

TEST_P( Queries, SaysWhatAVersion3QueryAsksFor ) {
    joinAndRest( igmpVersion3 );
    TraceCapture const trace( "IgmpHost", 9 );
    hearV3Query( 100 );
    EXPECT_THAT( trace.texts(), ::testing::Contains( "IgmpHost host general query " ) );
    hearV3Query( 100, G, { "10.9.9.1", "10.9.9.2" } );
    EXPECT_THAT(
        trace.texts(), ::testing::Contains( "IgmpHost host group query on: 239.1.1.1 number of source 2" )
    );
}

TEST_P( Queries, SaysThatAQueryIsGeneralAtAHostHeldAtVersion3 ) {
    joinAndRestForced( igmpVersion3 );
    TraceCapture const trace( "IgmpHost", 9 );
    hearQuery( 100 );
    EXPECT_THAT( trace.texts(), ::testing::Contains( "IgmpHost host general query " ) );
}

// Response codes.

TEST( MaxResponseTime, IsInTenthsOfASecond ) {
    EXPECT_EQ( maxResponseTime( 100 ), 10.0 );
    EXPECT_EQ( maxResponseTime( 20 ), 2.0 );
    EXPECT_NEAR( maxResponseTime( 1 ), 0.1, 1e-7 );
    EXPECT_EQ( maxResponseTime( 0 ), 0.0 );
    EXPECT_EQ( maxResponseTime( 255 ), 25.5 );
}

TEST( MaxResponseTime, IsDividedInSinglePrecision ) {
    EXPECT_NEAR( maxResponseTime( 33 ), 3.2999999523, 1e-10 );
}

TEST( MaxResponseTime, SaysWhatItMadeOfTheCode ) {
    TraceCapture const trace( "IgmpHost", 9 );
    maxResponseTime( 15 );
    EXPECT_THAT( trace.texts(), ElementsAre( "maxResponseTime: mrt 15 maxSecs 1.5" ) );
}

} // namespace
