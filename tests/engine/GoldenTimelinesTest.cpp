/// Whole timelines of one host, to the microsecond: what it sends, when, and what it counts. The start time
/// is part of each, because the delays are drawn from a generator that is seeded with it: .170828, .749902,
/// .096372 (made .196372), .870465, .577304, .785799, .692194, .368766.

#include <algorithm>

#include "tests/platform/zornet/Hex.h"
#include "tests/support/HostTest.h"

namespace {

using namespace Igmp;
using Support::describe;
using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::FieldsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::IpAddr;

/// The clock's tick, a few times: a turn at one instant may move it on.
constexpr Kiv::Seconds tolerance = 4e-6;

struct Event {
    Kiv::Seconds time;
    std::string what;
};

class GoldenTimelines : public Support::HostTest {
  protected:
    GoldenTimelines() : HostTest( 0.0 ) {}

    std::vector<Event> timeline() {
        std::vector<Event> events;
        for ( auto const& frame : sent() ) {
            events.push_back( { frame.elapsed, describe( frame.bytes ) } );
        }
        return events;
    }
    static auto at( Kiv::Seconds time, char const* what ) {
        return FieldsAre( DoubleNear( time, tolerance ), std::string( what ) );
    }
    std::vector<std::size_t> lengths() {
        std::vector<std::size_t> bytes;
        for ( auto const& frame : sent() ) {
            bytes.push_back( frame.bytes.size() );
        }
        return bytes;
    }
    /// The IGMP checksum of a version 3 report with Router Alert.
    static unsigned igmpChecksum( Support::SentFrame const& frame ) {
        return static_cast<unsigned>( frame.bytes[40] << 8 | frame.bytes[41] );
    }
    static constexpr char const* G = "239.1.1.1";
};

TEST_F( GoldenTimelines, Version2JoinRepeatAndLeave ) {
    enable();
    exclude( G );
    runUntilElapsed( 20 );
    EXPECT_EQ( status().v2ReportsSent(), 2U );
    EXPECT_EQ( sm().groupTimerSm( IpAddr( G ) )->responseDelayTimerState(), timerDisabled );
    host().v3groupDel( IpAddr( G ) );
    EXPECT_THAT(
        timeline(), ElementsAre(
                        at( 0, "v2report 239.1.1.1" ), at( 1.708280, "v2report 239.1.1.1" ),
                        at( 20, "leave 239.1.1.1 to 224.0.0.2" )
                    )
    );
    EXPECT_EQ( status().v2LeavesSent(), 1U );
    EXPECT_EQ( sm().groupTimerSm( IpAddr( G ) ), nullptr );
}

TEST_F( GoldenTimelines, Version1QuerierBringsTheHostDownFor400Seconds ) {
    enable();
    exclude( G );
    runUntilElapsed( 20 );
    hear( Zornet::fromHex( "1100eeff00000000" ) );
    EXPECT_EQ( status().igmpVersion(), igmpVersion1 );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 1U );
    EXPECT_EQ( status().v1QueryReceived(), 0U );
    runUntilElapsed( 419.9 );
    EXPECT_THAT(
        timeline(), ElementsAre(
                        at( 0, "v2report 239.1.1.1" ), at( 1.708280, "v2report 239.1.1.1" ),
                        at( 27.499020, "v1report 239.1.1.1" )
                    )
    );
    EXPECT_EQ( status().v1ReportsSent(), 1U );
    EXPECT_EQ( status().igmpVersion(), igmpVersion1 );
    runUntilElapsed( 420.1 );
    EXPECT_EQ( status().igmpVersion(), igmpVersion2 );
}

TEST_F( GoldenTimelines, Version3JoinAndLeaveOfAnExcludeGroup ) {
    enable( igmpVersion3 );
    exclude( G );
    runUntilElapsed( 20 );
    EXPECT_EQ( status().v3StateChangeReportSent(), 1U );
    EXPECT_EQ( status().v3CurrentStateReportSent(), 1U );
    EXPECT_EQ( status().v2ReportsSent(), 0U );
    host().v3groupDel( IpAddr( G ) );
    runUntilElapsed( 40 );
    EXPECT_THAT(
        timeline(),
        ElementsAre(
            at( 0, "v3report TO_EX 239.1.1.1 {}" ), at( .749902, "v3report TO_EX 239.1.1.1 {}" ),
            at( 20, "v3report TO_IN 239.1.1.1 {}" ), at( 20.196372, "v3report TO_IN 239.1.1.1 {}" )
        )
    );
    EXPECT_EQ( status().v3StateChangeReportSent(), 2U );
    EXPECT_EQ( status().v3CurrentStateReportSent(), 2U );
    EXPECT_EQ( sm().aggregatedSenderSm()->v3GroupSms(), 0U );
}

TEST_F( GoldenTimelines, Version3ReportsOfOneRecordToTheByte ) {
    std::string const head =
        "01005e000016 020000000001 0800 46000028000000000102 3ab9 0a000001e0000016 94040000";
    auto const frame = [&]( char const* igmp ) { return Zornet::ungrouped( head + igmp ); };
    enable( igmpVersion3 );
    exclude( G );
    settle();
    EXPECT_EQ( Zornet::hex( sent().back().bytes ), frame( "2200e9fb00000001 04000000ef010101" ) );
    hear( Zornet::fromHex( "1164ec1e00000000027d0000" ) );
    runUntilElapsed( 20 );
    EXPECT_EQ( Zornet::hex( sent().back().bytes ), frame( "2200ebfb00000001 02000000ef010101" ) );
    host().v3groupDel( IpAddr( G ) );
    settle();
    EXPECT_EQ( Zornet::hex( sent().back().bytes ), frame( "2200eafb00000001 03000000ef010101" ) );
}

TEST_F( GoldenTimelines, Version3GroupTimerOfAJoinFiresSilently ) {
    enable( igmpVersion3 );
    exclude( G );
    sm().groupTimerSm( IpAddr( G ) )->lastReporterIs( false );
    runUntilElapsed( .17 );
    EXPECT_FALSE( sm().groupTimerSm( IpAddr( G ) )->lastReporter() );
    runUntilElapsed( .171 );
    EXPECT_TRUE( sm().groupTimerSm( IpAddr( G ) )->lastReporter() );
    EXPECT_THAT( timeline(), SizeIs( 1 ) );
}

TEST_F( GoldenTimelines, SourceAddedAndRemovedBeforeAnyReportIsReportedAsRemoved ) {
    enable( igmpVersion3 );
    IgmpV3GroupRecord& record = include( "232.1.1.1", { "10.9.9.1" } );
    runUntilElapsed( 20 );
    record.sourceIs()->sourceIpIs( IpAddr( "10.9.9.2" ), 1 );
    raise( record );
    record.sourceIs()->sourceIpDel( IpAddr( "10.9.9.2" ) );
    raise( record );
    runUntilElapsed( 40 );
    EXPECT_THAT(
        timeline(), ElementsAre(
                        at( 0, "v3report ALLOW 232.1.1.1 {10.9.9.1}" ),
                        at( .749902, "v3report ALLOW 232.1.1.1 {10.9.9.1}" ),
                        at( 20, "v3report BLOCK 232.1.1.1 {10.9.9.2}" ),
                        at( 20.196372, "v3report BLOCK 232.1.1.1 {10.9.9.2}" )
                    )
    );
    EXPECT_EQ( status().v3StateChangeReportSent(), 2U );
    EXPECT_EQ( status().v3CurrentStateReportSent(), 2U );
}

TEST_F( GoldenTimelines, FiveGroupsInPacketsOfThreeRecords ) {
    host().mtuIs( 74 );
    enable( igmpVersion3 );
    for ( char const* group : { "239.1.1.1", "239.1.1.2", "239.1.1.3", "239.1.1.4", "239.1.1.5" } ) {
        exclude( group );
    }
    runUntilElapsed( 20 );
    auto const events = timeline();
    ASSERT_THAT( events, SizeIs( 4 ) );
    Kiv::Seconds const times[] = { 0, .785799, 1.477993, 1.846760 };
    for ( std::size_t i = 0; i < 4; ++i ) {
        EXPECT_NEAR( events[i].time, times[i], tolerance );
    }
    EXPECT_THAT( lengths(), ElementsAre( 70U, 70U, 62U, 62U ) );
    EXPECT_EQ( status().v3StateChangeReportSent(), 3U );
    EXPECT_EQ( status().v3CurrentStateReportSent(), 1U );
}

TEST_F( GoldenTimelines, GeneralQueryAnswerOfFiveGroupsTakesTwoPackets ) {
    host().mtuIs( 74 );
    enable( igmpVersion3 );
    for ( char const* group : { "239.1.1.1", "239.1.1.2", "239.1.1.3", "239.1.1.4", "239.1.1.5" } ) {
        exclude( group );
    }
    runUntilElapsed( 20 );
    sent().clear();
    hearV3Query( 100 );
    EXPECT_EQ( status().v3GeneralQueryReceived(), 1U );
    Kiv::Seconds const first = sm().igmpV3HostGeneralQueryTimerSm()->responseDelayRemaining();
    EXPECT_GE( first, 1.0 );
    EXPECT_LT( first, 10.0 );
    runUntilElapsed( 50 );
    EXPECT_THAT( lengths(), ElementsAre( 70U, 62U ) );
    EXPECT_NEAR( timeline()[0].time, 20 + first, tolerance );
    Kiv::Seconds const second = timeline()[1].time - timeline()[0].time;
    EXPECT_GE( second, first / 30 );
    EXPECT_LT( second, first / 3 );
    EXPECT_EQ( status().v3CurrentStateReportSent(), 3U );
}

TEST_F( GoldenTimelines, SourcesOfTwoQueriesAreAnsweredTogether ) {
    enable( igmpVersion3 );
    include( "232.1.1.1", { "10.9.9.1", "10.9.9.2", "10.9.9.3" } );
    runUntilElapsed( 20 );
    sent().clear();
    U32 const currentStateReports = status().v3CurrentStateReportSent();
    hear( Zornet::fromHex( "1164dcffe8010101 027d0002 0a0909010a090907" ) );
    runUntilElapsed( 20.5 );
    hear( Zornet::fromHex( "1164f00fe8010101 027d0001 0a090902" ) );
    EXPECT_NEAR(
        sm().v3GroupQueryTimerSm( IpAddr( "232.1.1.1" ) )->responseDelayRemaining(), 1.463717, tolerance
    );
    runUntilElapsed( 40 );
    ASSERT_THAT( sent(), SizeIs( 1 ) );
    EXPECT_NEAR( sent()[0].elapsed, 21.963717, tolerance );
    EXPECT_EQ( sent()[0].bytes.size(), 62U );
    EXPECT_EQ( igmpChecksum( sent()[0] ), 0xcde4U );
    EXPECT_THAT(
        timeline()[0].what,
        ::testing::AnyOf(
            "v3report IS_IN 232.1.1.1 {10.9.9.1 10.9.9.2}", "v3report IS_IN 232.1.1.1 {10.9.9.2 10.9.9.1}"
        )
    );
    EXPECT_EQ( status().v3GeneralQueryReceived(), 2U );
    EXPECT_EQ( status().v3GroupSourceQueryReceived(), 2U );
    EXPECT_EQ( status().v3GroupQueryReceived(), 0U );
    EXPECT_EQ( status().v3CurrentStateReportSent(), currentStateReports + 1 );
}

TEST_F( GoldenTimelines, HostHeldAtVersion3AnswersAVersion2QueryOnBothPaths ) {
    host().igmpVersionForcedIs( true );
    enable( igmpVersion3 );
    exclude( G );
    runUntilElapsed( 20 );
    sent().clear();
    U32 const currentStateReports = status().v3CurrentStateReportSent();
    hearQuery( 100 );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 2U );
    EXPECT_EQ( status().v3GeneralQueryReceived(), 0U );
    EXPECT_EQ( status().igmpVersion(), igmpVersion3 );
    EXPECT_NEAR( sm().groupTimerSm( IpAddr( G ) )->responseDelayRemaining(), 8.704652, tolerance );
    runUntilElapsed( 40 );
    EXPECT_THAT( timeline(), ElementsAre( at( 21.963717, "v3report IS_EX 239.1.1.1 {}" ) ) );
    EXPECT_EQ( status().v3CurrentStateReportSent(), currentStateReports + 1 );
    hearQuery( 100, "239.9.9.9" );
    EXPECT_EQ( status().v2GeneralQueryReceived(), 3U );
    EXPECT_EQ( status().v2GroupQueryReceived(), 1U );
}

class PeriodicTimeline : public GoldenTimelines {
  protected:
    PeriodicTimeline() {
        host().enablePeriodicReportIs( true );
        host().unsolicitedReportIntervalIs( 5.0 );
        exclude( G );
        enable();
    }
    /// From `first` on, one report every five seconds.
    void expectEveryFiveSecondsFrom( Kiv::Seconds first ) {
        auto const events = timeline();
        ASSERT_GE( events.size(), 3U );
        for ( std::size_t i = 0; i < events.size(); ++i ) {
            EXPECT_NEAR( events[i].time, first + 5.0 * static_cast<double>( i ), 50 * tolerance );
            EXPECT_EQ( events[i].what, "v2report 239.1.1.1" );
        }
    }
};

TEST_F( PeriodicTimeline, Version2ReportsGoOnAtTheConfiguredInterval ) {
    runUntilElapsed( 1 );
    EXPECT_DOUBLE_EQ( status().unsolicitedReportInterval(), 10.0 );
    EXPECT_THAT( timeline(), ElementsAre( at( 0, "v2report 239.1.1.1" ) ) );
    sent().clear();
    runUntilElapsed( 60 );
    expectEveryFiveSecondsFrom( 1.708280 );
}

TEST_F( PeriodicTimeline, SenderFiresSilentlyAtTheConfiguredInterval ) {
    for ( Kiv::Seconds const firing : { 10.0, 15.0, 20.0 } ) {
        runUntilElapsed( firing - 0.1 );
        EXPECT_NEAR( sm().aggregatedSenderSm()->responseDelayRemaining(), 0.1, 1e-3 );
    }
    EXPECT_EQ( status().v3CurrentStateReportSent() + status().v3StateChangeReportSent(), 0U );
}

TEST_F( PeriodicTimeline, OneForeignReportPutsTheNextOffByAQueryInterval ) {
    runUntilElapsed( 22 );
    sent().clear();
    hearReport( G );
    runUntilElapsed( 271 );
    EXPECT_THAT( timeline(), ElementsAre( at( 147, "v2report 239.1.1.1" ) ) );
    sent().clear();
    runUntilElapsed( 300 );
    expectEveryFiveSecondsFrom( 272 );
}

TEST_F( PeriodicTimeline, TwoForeignReportsRestartTheStream ) {
    runUntilElapsed( 22 );
    sent().clear();
    hearReport( G );
    hearReport( G );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
    runUntilElapsed( 60 );
    expectEveryFiveSecondsFrom( 32 );
}

TEST_F( GoldenTimelines, FallBackFromVersion3KeepsAnUnsentChangeForTheNextReport ) {
    enable( igmpVersion3 );
    exclude( G );
    runUntilElapsed( 20 );
    sent().clear();
    hear( Zornet::fromHex( "1164ee9b00000000" ) );
    EXPECT_EQ( status().igmpVersion(), igmpVersion2 );
    EXPECT_DOUBLE_EQ( status().unsolicitedReportInterval(), 1.0 );
    runUntilElapsed( 40 );
    host().v3groupDel( IpAddr( G ) );
    runUntilElapsed( 420.5 );
    EXPECT_EQ( status().igmpVersion(), igmpVersion3 );
    EXPECT_THAT(
        timeline(),
        ElementsAre( at( 21.963717, "v2report 239.1.1.1" ), at( 40, "leave 239.1.1.1 to 224.0.0.2" ) )
    );
    sent().clear();
    U32 const stateChanges = status().v3StateChangeReportSent();
    U32 const currentStates = status().v3CurrentStateReportSent();
    runUntilElapsed( 421 );
    exclude( "239.1.1.2" );
    runUntilElapsed( 430 );
    ASSERT_THAT( sent(), SizeIs( 2 ) );
    EXPECT_NEAR( sent()[0].elapsed, 421, tolerance );
    EXPECT_NEAR( sent()[1].elapsed, 421.577304, tolerance );
    for ( auto const& frame : sent() ) {
        EXPECT_EQ( frame.bytes.size(), 62U );
        EXPECT_THAT( describe( frame.bytes ), ::testing::HasSubstr( "TO_IN 239.1.1.1 {}" ) );
        EXPECT_THAT( describe( frame.bytes ), ::testing::HasSubstr( "TO_EX 239.1.1.2 {}" ) );
    }
    EXPECT_EQ( status().v3StateChangeReportSent(), stateChanges + 1 );
    EXPECT_EQ( status().v3CurrentStateReportSent(), currentStates + 1 );
}

TEST_F( GoldenTimelines, RaisedToVersion3ReportsTheOldGroupWithTheNextChange ) {
    enable();
    exclude( G );
    runUntilElapsed( 20 );
    sent().clear();
    host().igmpVersionIs( igmpVersion3 );
    runUntilElapsed( 30 );
    EXPECT_THAT( timeline(), IsEmpty() );
    EXPECT_DOUBLE_EQ( status().unsolicitedReportInterval(), 1.0 );
    exclude( "239.1.1.2" );
    runUntilElapsed( 40 );
    ASSERT_THAT( sent(), SizeIs( 2 ) );
    EXPECT_NEAR( sent()[0].elapsed, 30, tolerance );
    EXPECT_NEAR( sent()[1].elapsed, 30.196372, tolerance );
    for ( auto const& frame : sent() ) {
        EXPECT_THAT( describe( frame.bytes ), ::testing::HasSubstr( "TO_EX 239.1.1.1 {}" ) );
        EXPECT_THAT( describe( frame.bytes ), ::testing::HasSubstr( "TO_EX 239.1.1.2 {}" ) );
    }
    EXPECT_EQ( status().v3StateChangeReportSent(), 1U );
    EXPECT_EQ( status().v3CurrentStateReportSent(), 1U );
}

} // namespace
