/// The interval of unsolicited reports and the switch of periodic ones: how configuration reaches the status,
/// and what each of them sets going.

#include "tests/engine/EngineTest.h"

namespace {

using namespace Igmp;
using Support::TraceCapture;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::IpAddr;

class Unsolicited : public EngineDeliveryTest {
  protected:
    Kiv::Seconds interval() { return status().unsolicitedReportInterval(); }
    void request( Kiv::Seconds value ) {
        host().unsolicitedReportIntervalIs( value );
        settle();
    }
    void periodic( bool value ) {
        host().enablePeriodicReportIs( value );
        settle();
    }
    void configure( IgmpVersion version ) {
        host().igmpVersionIs( version );
        settle();
    }
    Kiv::Seconds senderRemaining() { return sm().aggregatedSenderSm()->responseDelayRemaining(); }
};
INSTANTIATE_DELIVERY_TESTS( Unsolicited );

// The interval in force.

TEST_P( Unsolicited, DefaultIntervalIsThatOfTheConfiguredVersion ) {
    enable( igmpVersion3 );
    EXPECT_EQ( interval(), 1.0 );
    configure( igmpVersion2 );
    EXPECT_EQ( interval(), 10.0 );
    configure( igmpVersion3 );
    EXPECT_EQ( interval(), 1.0 );
    configure( igmpVersion1 );
    EXPECT_EQ( interval(), 10.0 );
}

TEST_P( Unsolicited, DefaultIntervalOfAFreshVersion1Or2HostIsTen ) {
    for ( IgmpVersion const version : { igmpVersion1, igmpVersion2 } ) {
        enable( version );
        EXPECT_EQ( interval(), 10.0 );
        host().enabledIs( false );
        settle();
    }
}

TEST_P( Unsolicited, RequestReachesAnEnabledHost ) {
    enable();
    request( 5.0 );
    EXPECT_EQ( interval(), 5.0 );
}

TEST_P( Unsolicited, RequestOutlivesChangesOfTheVersionInForce ) {
    enable( igmpVersion3 );
    request( 5.0 );
    hearQuery( 100 );
    EXPECT_EQ( interval(), 5.0 );
    hearV1Query();
    EXPECT_EQ( interval(), 5.0 );
    configure( igmpVersion2 );
    EXPECT_EQ( interval(), 5.0 );
}

TEST_P( Unsolicited, EarlierRequestDoesNotReachAFreshVersion2Host ) {
    request( 5.0 );
    enable();
    EXPECT_EQ( interval(), 10.0 );
    hearV1Query();
    EXPECT_EQ( interval(), 5.0 );
}

TEST_P( Unsolicited, EarlierRequestReachesAFreshHostOfAnotherVersion ) {
    request( 5.0 );
    for ( IgmpVersion const version : { igmpVersion1, igmpVersion3 } ) {
        enable( version );
        EXPECT_EQ( interval(), 5.0 );
        host().enabledIs( false );
        settle();
    }
}

TEST_P( Unsolicited, RequestOfZeroIsTakenAsZero ) {
    enable();
    request( 5.0 );
    request( 0.0 );
    EXPECT_EQ( interval(), 0.0 );
}

TEST_P( Unsolicited, IntervalOfZeroStaysUntilTheVersionInForceChanges ) {
    enable();
    request( 5.0 );
    request( 0.0 );
    request( 7.0 );
    EXPECT_EQ( interval(), 0.0 );
    hearV1Query();
    EXPECT_EQ( interval(), 7.0 );
}

TEST_P( Unsolicited, IntervalOfZeroBecomesTheDefaultWhenTheVersionInForceChanges ) {
    enable( igmpVersion3 );
    request( 5.0 );
    request( 0.0 );
    hearQuery( 100 );
    EXPECT_EQ( interval(), 1.0 );
}

TEST_P( Unsolicited, FallBackKeepsTheIntervalOfTheConfiguredVersion ) {
    enable( igmpVersion3 );
    hearQuery( 100 );
    ASSERT_EQ( status().igmpVersion(), igmpVersion2 );
    EXPECT_EQ( interval(), 1.0 );
    hearV1Query();
    EXPECT_EQ( interval(), 1.0 );
}

TEST_P( Unsolicited, WriteOfTheVersionThatIsInForceAlreadyKeepsTheInterval ) {
    enable( igmpVersion3 );
    hearQuery( 100 );
    configure( igmpVersion2 );
    EXPECT_EQ( interval(), 1.0 );
}

TEST_P( Unsolicited, AdoptedStatusOfTheSameVersionKeepsItsInterval ) {
    auto const adopted = statusDir->igmpHostStatusIs( "host" );
    adopted->igmpVersionIs( igmpVersion3 );
    adopted->unsolicitedReportIntervalIs( 7.0 );
    enable( igmpVersion3 );
    EXPECT_EQ( &status(), adopted.get() );
    EXPECT_EQ( interval(), 7.0 );
}

TEST_P( Unsolicited, RequestAtADisabledHostDoesNothing ) {
    enable();
    auto const kept = Kiv::Ptr<IgmpHostStatus>( &status() );
    host().enabledIs( false );
    settle();
    request( 5.0 );
    EXPECT_EQ( kept->unsolicitedReportInterval(), 10.0 );
}

TEST_P( Unsolicited, SaysWhichIntervalAVersionBrought ) {
    enable();
    TraceCapture const trace( "IgmpHost", 9 );
    configure( igmpVersion3 );
    EXPECT_THAT( trace.texts(), Contains( " host host set to 1" ) );
}

TEST_P( Unsolicited, SaysWhichIntervalARequestBrought ) {
    enable();
    TraceCapture const trace( "IgmpHost", 9 );
    request( 2.5 );
    EXPECT_THAT( trace.texts(), ElementsAre( " host host set to 2.5 after configuration " ) );
}

// The switch of periodic reports.

TEST_P( Unsolicited, SwitchReachesTheStatus ) {
    enable( igmpVersion3 );
    auto const before = changes();
    periodic( true );
    EXPECT_THAT(
        before.list(), ElementsAre( "continueUnsolicitedReport=true", "enablePeriodicReport=true" )
    );
    periodic( false );
    EXPECT_THAT( before.list(), IsEmpty() );
}

TEST_P( Unsolicited, SwitchAtADisabledHostTakesEffectWithTheEnabling ) {
    periodic( true );
    request( 5.0 );
    EXPECT_EQ( sm().igmpHostStatus(), nullptr );
    enable( igmpVersion3 );
    EXPECT_TRUE( status().enablePeriodicReport() );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
}

TEST_P( Unsolicited, SwitchingOnArmsTheSenderForTheIntervalInForce ) {
    enable( igmpVersion3 );
    EXPECT_FALSE( Kiv::isFinite( senderRemaining() ) );
    TraceCapture const trace( "IgmpHost", 9 );
    periodic( true );
    EXPECT_DOUBLE_EQ( senderRemaining(), 1.0 );
    EXPECT_THAT( trace.texts(), Contains( "aggregated timer schedule a delay 1" ) );
}

TEST_P( Unsolicited, SwitchingOnArmsTheSenderAtAnyVersion ) {
    enable();
    periodic( true );
    EXPECT_DOUBLE_EQ( senderRemaining(), 10.0 );
}

TEST_P( Unsolicited, SwitchingOffLeavesTheSenderArmed ) {
    enable( igmpVersion3 );
    periodic( true );
    runFor( 0.25 );
    periodic( false );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
    EXPECT_NEAR( senderRemaining(), 0.75, 1e-4 );
}

TEST_P( Unsolicited, StreamIsStartedOnlyWherePeriodicReportsAreOn ) {
    enable( igmpVersion3 );
    status().continueUnsolicitedReportIs( true );
    settle();
    EXPECT_FALSE( Kiv::isFinite( senderRemaining() ) );
}

TEST_P( Unsolicited, StreamIsNotStartedWhenItIsToEnd ) {
    enable( igmpVersion3 );
    periodic( true );
    runFor( 0.25 );
    status().continueUnsolicitedReportIs( false );
    settle();
    EXPECT_NEAR( senderRemaining(), 0.75, 1e-4 );
    status().continueUnsolicitedReportIs( true );
    settle();
    EXPECT_NEAR( senderRemaining(), 1.0, 1e-4 );
}

TEST_P( Unsolicited, StreamOfADisabledHostIsNoMatter ) {
    periodic( true );
    auto const kept = statusDir->igmpHostStatusIs( "host" );
    settle();
    sm().handleContinueUnsolicitedReport();
    kept->continueUnsolicitedReportIs( true );
    settle();
    EXPECT_EQ( sm().aggregatedSenderSm(), nullptr );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

// Which interval the sender is armed with, where both change.

class UnsolicitedInline : public EngineTest {
  protected:
    Kiv::Seconds senderRemaining() { return sm().aggregatedSenderSm()->responseDelayRemaining(); }
};

TEST_F( UnsolicitedInline, EnablingArmsTheSenderBeforeTheVersionBringsItsInterval ) {
    host().enablePeriodicReportIs( true );
    enable( igmpVersion3 );
    EXPECT_EQ( status().unsolicitedReportInterval(), 1.0 );
    EXPECT_DOUBLE_EQ( senderRemaining(), 10.0 );
}

TEST_F( UnsolicitedInline, WriteOfTheVersionBringsItsIntervalBeforeTheSenderIsArmed ) {
    enable();
    host().enablePeriodicReportIs( true );
    status().continueUnsolicitedReportIs( false );
    host().igmpVersionIs( igmpVersion3 );
    EXPECT_DOUBLE_EQ( senderRemaining(), 1.0 );
}

TEST_F( UnsolicitedInline, WriteOfTheForcedFlagArmsTheSenderFirst ) {
    enable( igmpVersion3 );
    host().enablePeriodicReportIs( true );
    hearQuery( 100 );
    status().unsolicitedReportIntervalIs( 7.0 );
    status().continueUnsolicitedReportIs( false );
    host().igmpVersionForcedIs( true );
    EXPECT_EQ( status().unsolicitedReportInterval(), 1.0 );
    EXPECT_DOUBLE_EQ( senderRemaining(), 7.0 );
}

// What ends unsolicited reports.

TEST_P( Unsolicited, WithoutPeriodicReportsTheRepeatIsTheLast ) {
    enable();
    exclude( G );
    runFor( 1000.0 );
    EXPECT_THAT( takeSent(), SizeIs( 2 ) );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_P( Unsolicited, WithPeriodicReportsTheyGoOn ) {
    enable();
    request( 5.0 );
    periodic( true );
    exclude( G );
    runFor( 10.0 );
    sent().clear();
    runFor( 100.0 );
    EXPECT_THAT( sent().size(), AnyOf( 20U, 21U ) );
}

TEST_P( Unsolicited, RemovingTheGroupEndsItsPeriodicReports ) {
    enable();
    request( 5.0 );
    periodic( true );
    exclude( G );
    runFor( 10.0 );
    removeGroup();
    sent().clear();
    runFor( 100.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Unsolicited, DisablingTheHostEndsThemAll ) {
    enable();
    request( 5.0 );
    periodic( true );
    exclude( G );
    host().enabledIs( false );
    settle();
    sent().clear();
    runFor( 100.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_P( Unsolicited, Version3StreamReportsTheStateAtEveryInterval ) {
    joinAndRest( igmpVersion3 );
    request( 5.0 );
    periodic( true );
    runFor( 50.1 );
    auto const reports = takeSent();
    EXPECT_THAT( reports, SizeIs( 10 ) );
    EXPECT_THAT( reports, ::testing::Each( "v3report IS_EX 239.1.1.1 {}" ) );
}

TEST_P( Unsolicited, Version3StreamEndsWithTheSwitch ) {
    joinAndRest( igmpVersion3 );
    request( 5.0 );
    periodic( true );
    runFor( 11.0 );
    periodic( false );
    sent().clear();
    runFor( 100.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

} // namespace
