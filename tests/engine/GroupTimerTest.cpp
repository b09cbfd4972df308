/// The timer machine of one group: arming and cancelling, with and without periodic reporting, and what an
/// expiry does.

#include "engine/IgmpHostGroupTimerSm.h"

#include <functional>

#include "platform/kiv/Exception.h"
#include "tests/engine/EngineTest.h"
#include "tests/support/FedPam.h"

namespace {

using namespace Igmp;
using Support::Delivery;
using Support::nextDrawIs;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::IpAddr;

constexpr double tolerance = 1e-9;

class GroupTimer : public EngineDeliveryTest {
  protected:
    Kiv::Seconds remaining() { return timer().responseDelayRemaining(); }
    /// Until the wheel fires, whatever the state says.
    Kiv::Seconds armedFor() { return timer().responseDelay()->timeMin() - Kiv::now(); }
    bool isArmed() { return Kiv::isFinite( armedFor() ); }
};
INSTANTIATE_DELIVERY_TESTS( GroupTimer );

// A machine as it is made.

TEST_P( GroupTimer, NewMachineIsIdleLastReporterAndNotJoined ) {
    enable();
    include( G, {} );
    EXPECT_EQ( timer().group(), IpAddr( G ) );
    EXPECT_FALSE( timer().waitForQueryInterval() );
    EXPECT_EQ( timer().queryInterval(), 125.0 );
    EXPECT_EQ( timer().timerWheel(), sm().timerWheel() );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_TRUE( timer().lastReporter() );
    EXPECT_FALSE( timer().joined() );
    EXPECT_TRUE( timer().initialized() );
    EXPECT_FALSE( isArmed() );
    EXPECT_FALSE( Kiv::isFinite( remaining() ) );
}

TEST_P( GroupTimer, SecondAskingGivesTheSameMachine ) {
    enable();
    exclude( G );
    auto const& made = timer();
    EXPECT_EQ( sm().groupTimerSmIs( nullptr, IpAddr( G ), sm().timerWheel() ).get(), &made );
}

TEST_P( GroupTimer, AskingWithAnotherWheelIsRefused ) {
    enable();
    exclude( G );
    Kiv::Ptr<Lumo::TimerWheel> const other( new Lumo::TimerWheel );
    std::ostringstream text;
    text << "Reinstantiating the pointer interface where constructor parameter attribute _timerWheel has a "
            "different value of "
         << static_cast<Lumo::TimerWheel const*>( other.get() ) << " than the current value of "
         << sm().timerWheel().get() << " not allowed";
    try {
        sm().groupTimerSmIs( nullptr, IpAddr( G ), other );
        ADD_FAILURE() << "not refused";
    } catch ( Kiv::NameInUseException const& refusal ) {
        EXPECT_EQ( refusal.what(), text.str() );
    }
}

// Arming and cancelling without periodic reporting.

TEST_P( GroupTimer, DelayArmsAndIsPending ) {
    joinAndRest();
    timer().doSetTimer( 3.0 );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_DOUBLE_EQ( remaining(), 3.0 );
    runFor( 1.0 );
    EXPECT_NEAR( remaining(), 2.0, tolerance );
}

TEST_P( GroupTimer, DelayReplacesAPendingOne ) {
    joinAndRest();
    timer().doSetTimer( 3.0 );
    timer().doSetTimer( 5.0 );
    EXPECT_DOUBLE_EQ( remaining(), 5.0 );
    runFor( 4.9 );
    EXPECT_THAT( takeSent(), IsEmpty() );
    runFor( 0.1 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( GroupTimer, GreatestFiniteDelayIsADelay ) {
    joinAndRest();
    timer().doSetTimer( std::numeric_limits<double>::max() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_TRUE( isArmed() );
}

TEST_P( GroupTimer, InfinityDisarms ) {
    joinAndRest();
    timer().doSetTimer( 3.0 );
    timer().doSetTimer( Kiv::never );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_FALSE( isArmed() );
    EXPECT_FALSE( Kiv::isFinite( remaining() ) );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( GroupTimer, NothingRemainsOfAnExpiryThatHasJustPassed ) {
    joinAndRest();
    timer().doSetTimer( 1.0 );
    clock().advanceTo( Kiv::now() + 1.5 );
    EXPECT_EQ( remaining(), 0.0 );
}

TEST_P( GroupTimer, DelayOfZeroFiresWithTheNextTurn ) {
    joinAndRest();
    timer().doSetTimer( 0.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    settle();
    settle(); // deferred, the firing is told a turn later
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( GroupTimer, TimeThatHasPassedFiresWithTheNextTurn ) {
    joinAndRest();
    timer().doSetTimer( -5.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    settle();
    settle();
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( GroupTimer, SaysHowItWasSet ) {
    joinAndRest();
    TraceCapture const trace( "IgmpHost", 9 );
    timer().doSetTimer( 2.5 );
    timer().doSetTimer( Kiv::never );
    EXPECT_THAT(
        trace.texts(),
        ElementsAre( "Setting timer to expire in 2.5", " tstate : timerRunning", " tstate : timerDisabled" )
    );
}

// Expiry.

TEST_P( GroupTimer, ExpiryReportsOnceAndDisarms ) {
    joinAndRest();
    timer().lastReporterIs( false );
    timer().doSetTimer( 3.0 );
    runFor( 3.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_FALSE( isArmed() );
    EXPECT_TRUE( timer().lastReporter() );
    runFor( 1000.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( GroupTimer, ExpiryReportsAGroupThatIsNotJoined ) {
    enable();
    include( G, {} );
    timer().doSetTimer( 1.0 );
    runFor( 1.0 );
    EXPECT_FALSE( timer().joined() );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( GroupTimer, ExpiryAtVersion3SendsNothingAndMakesTheLastReporter ) {
    joinAndRest( igmpVersion3 );
    timer().lastReporterIs( false );
    timer().doSetTimer( 1.0 );
    runFor( 1.0 );
    EXPECT_TRUE( timer().lastReporter() );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( GroupTimer, SaysThatItExpired ) {
    joinAndRest();
    timer().doSetTimer( 1.0 );
    TraceCapture const trace( "IgmpHost", 9 );
    runFor( 1.0 );
    EXPECT_EQ( trace.texts().front(), "Host host response delay timer expired for group 239.1.1.1" );
}

TEST_P( GroupTimer, RemovedMachineFiresNoMore ) {
    joinAndRest();
    timer().doSetTimer( 1.0 );
    sm().groupTimerSmDel( IpAddr( G ) );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( GroupTimer, DisablingTheHostRemovesEveryMachine ) {
    joinAndRest();
    exclude( "239.1.1.2" );
    host().enabledIs( false );
    settle();
    EXPECT_EQ( sm().groupTimerSm().size(), 0U );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    sent().clear();
    runFor( 100.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

// Periodic reporting.

class PeriodicGroupTimer : public GroupTimer {
  protected:
    /// Reports go out every 5 seconds. 20 seconds have passed.
    PeriodicGroupTimer() {
        host().enablePeriodicReportIs( true );
        host().unsolicitedReportIntervalIs( 5.0 );
        settle();
        joinAndRest();
    }
    /// Puts the machine into a wait for the query interval.
    void wait() {
        timer().doSetTimer( Kiv::never );
        settle();
    }
};
INSTANTIATE_DELIVERY_TESTS( PeriodicGroupTimer );

TEST_P( PeriodicGroupTimer, ExpiryRearmsForTheConfiguredInterval ) {
    ASSERT_EQ( status().unsolicitedReportInterval(), 10.0 );
    status().continueUnsolicitedReportIs( true );
    settle();
    timer().doSetTimer( 1.0 );
    runFor( 1.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_FALSE( timer().waitForQueryInterval() );
    EXPECT_NEAR( remaining(), 5.0, 1e-5 );
}

TEST_P( PeriodicGroupTimer, EndOfTheWaitReportsAndRearmsForTheQueryInterval ) {
    wait();
    ASSERT_TRUE( timer().waitForQueryInterval() );
    status().continueUnsolicitedReportIs( true );
    settle();
    runFor( 125.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_FALSE( timer().waitForQueryInterval() );
    EXPECT_NEAR( remaining(), 125.0, 1e-5 );
}

TEST_P( PeriodicGroupTimer, FirstReportHeardWaitsOutTheQueryInterval ) {
    auto const before = changes();
    hearReport( G );
    EXPECT_THAT( before.list(), ElementsAre( "v12ReportReceived=1" ) );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_TRUE( timer().waitForQueryInterval() );
    EXPECT_DOUBLE_EQ( remaining(), 125.0 );
    EXPECT_FALSE( timer().lastReporter() );
}

TEST_P( PeriodicGroupTimer, FirstReportHeardDoesNotSilenceTheGroup ) {
    timer().doSetTimer( 3.0 );
    hearReport( G );
    runFor( 124.9 );
    EXPECT_THAT( takeSent(), IsEmpty() );
    runFor( 0.2 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( PeriodicGroupTimer, SecondReportHeardRestartsTheStream ) {
    hearReport( G );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
    runFor( 60.0 );
    hearReport( G );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_FALSE( timer().waitForQueryInterval() );
    EXPECT_NEAR( armedFor(), 10.0, tolerance ); // the interval in force, not the configured one
    EXPECT_FALSE( Kiv::isFinite( remaining() ) );
    EXPECT_FALSE( timer().lastReporter() );
}

TEST_P( PeriodicGroupTimer, QueryOrJoinEndsTheWaitAndTheStream ) {
    wait();
    status().continueUnsolicitedReportIs( true );
    settle();
    timer().doSetTimer( 3.0 );
    EXPECT_FALSE( timer().waitForQueryInterval() );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_DOUBLE_EQ( remaining(), 3.0 );
}

TEST_P( PeriodicGroupTimer, AtVersion3ADelayIsPlain ) {
    status().igmpVersionIs( igmpVersion3 );
    status().continueUnsolicitedReportIs( true );
    settle();
    timer().doSetTimer( 3.0 );
    EXPECT_TRUE( status().continueUnsolicitedReport() );
    EXPECT_DOUBLE_EQ( remaining(), 3.0 );
}

TEST_P( PeriodicGroupTimer, AtVersion3ACancelIsPlain ) {
    status().igmpVersionIs( igmpVersion3 );
    settle();
    timer().doSetTimer( Kiv::never );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_FALSE( isArmed() );
    EXPECT_FALSE( timer().waitForQueryInterval() );
    EXPECT_FALSE( status().continueUnsolicitedReport() );
}

TEST_P( PeriodicGroupTimer, ExpiryAtVersion3RearmsAllTheSame ) {
    status().igmpVersionIs( igmpVersion3 );
    settle();
    timer().doSetTimer( 1.0 );
    runFor( 1.0 );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_NEAR( remaining(), 5.0, 1e-5 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( PeriodicGroupTimer, ConfiguredIntervalOfZeroRearmsForNow ) {
    host().unsolicitedReportIntervalIs( 0.0 );
    settle();
    timer().doSetTimer( 0.0 );
    runFor( 20e-6 );
    EXPECT_EQ( remaining(), 0.0 );
    EXPECT_GE( sent().size(), 8U );
}

TEST_P( PeriodicGroupTimer, ConfiguredIntervalOfZeroRearmsForNowAtVersion3TooAndSendsNothing ) {
    host().unsolicitedReportIntervalIs( 0.0 );
    settle();
    status().igmpVersionIs( igmpVersion3 );
    settle();
    sm().aggregatedSenderSm()->doSetTimer( Kiv::never );
    timer().doSetTimer( 0.0 );
    runFor( 20e-6 );
    EXPECT_EQ( remaining(), 0.0 );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( PeriodicGroupTimer, IntervalThatIsWrittenEndsTheRearmingForNow ) {
    host().unsolicitedReportIntervalIs( 0.0 );
    settle();
    timer().doSetTimer( 0.0 );
    runFor( 20e-6 );
    host().unsolicitedReportIntervalIs( 5.0 );
    runFor( 20e-6 );
    sent().clear();
    runFor( 4.9 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_NEAR( remaining(), 0.1, 1e-3 );
}

TEST_P( PeriodicGroupTimer, ExpiryAsksTheStatusAndNotTheConfiguration ) {
    status().enablePeriodicReportIs( false );
    settle();
    timer().doSetTimer( 1.0 );
    runFor( 1.0 );
    EXPECT_FALSE( isArmed() );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( PeriodicGroupTimer, SwitchedOffItDisarmsWithTheNextExpiry ) {
    host().enablePeriodicReportIs( false );
    settle();
    EXPECT_TRUE( isArmed() );
    runFor( 5.1 );
    EXPECT_THAT( takeSent(), SizeIs( 1 ) );
    EXPECT_FALSE( isArmed() );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
}

TEST_P( PeriodicGroupTimer, DisablingTheHostStopsTheStream ) {
    host().enabledIs( false );
    settle();
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_P( PeriodicGroupTimer, SaysHowItWasSet ) {
    TraceCapture trace( "IgmpHost", 6 );
    timer().doSetTimer( 2.5 );
    EXPECT_THAT(
        trace.texts(), ElementsAre(
                           "Disabling unsolicited report generation", "Setting timer to expire in 2.5",
                           " tstate : timerRunning"
                       )
    );
    trace.clear();
    timer().doSetTimer( Kiv::never );
    EXPECT_THAT( trace.texts(), ElementsAre( "Setting timer for 125 seconds.", " tstate : timerRunning" ) );
    trace.clear();
    timer().doSetTimer( Kiv::never );
    EXPECT_EQ( trace.texts().front(), "Enabling unsolicited report generation" );
    EXPECT_EQ( trace.texts().back(), " tstate : timerDisabled" );
}

// Between the steps of an expiry.

class GroupTimerInline : public EngineTest {
  protected:
    GroupTimerInline() {
        host().externalPamIs( true );
        host().pamIs( pam );
        joinAndRest();
        pam->sent.clear();
    }
    Kiv::Ptr<Support::FedPam> pam{ new Support::FedPam };
};

TEST_F( GroupTimerInline, ExpiryRearmsAndMakesTheLastReporterBeforeItSends ) {
    timer().lastReporterIs( false );
    timer().doSetTimer( 1.0 );
    TimerState stateAtSend = pending;
    bool lastReporterAtSend = false;
    pam->onSend = [&] {
        stateAtSend = timer().responseDelayTimerState();
        lastReporterAtSend = timer().lastReporter();
    };
    runFor( 1.0 );
    EXPECT_THAT( pam->sent, SizeIs( 1 ) );
    EXPECT_EQ( stateAtSend, idle );
    EXPECT_TRUE( lastReporterAtSend );
}

TEST_F( GroupTimerInline, GroupMayGoWhileItsReportIsSent ) {
    timer().doSetTimer( 1.0 );
    pam->onSend = [&] { host().v3groupDel( IpAddr( G ) ); };
    runFor( 1.0 );
    EXPECT_FALSE( hasTimer() );
    EXPECT_THAT( pam->sent, SizeIs( 2 ) ); // the report and the leave
}

// A change of configuration in the turn of an expiry.

/// Somebody else's timer on the same wheel.
class Action : public Lumo::TimerWheel::NotifieeConst {
  public:
    Action( Kiv::Ptr<Lumo::TimerWheel> const& wheel, std::function<void()> const& what )
        : NotifieeConst( wheel ), what_( what ) {
        isRegisteredNotifieeIs( true );
    }
    ~Action() override { unlink(); }
    void onTime() override { what_(); }

  private:
    std::function<void()> what_;
};

class ExpiryBeforeAChange : public EngineTest {
  protected:
    explicit ExpiryBeforeAChange( Delivery delivery = Delivery::isInline ) : EngineTest( delivery ) {
        joinAndRest();
        timer().doSetTimer( 1.0 );
    }
    /// Runs to the instant at which the group's timer fires and then `what` happens.
    void runWith( std::function<void()> const& what ) {
        Kiv::Ptr<Action> const action( new Action( wheel(), what ) );
        action->timeMinIs( Kiv::now() + 1.0 );
        runFor( 2.0 );
    }
    void disable() {
        runWith( [this] { host().enabledIs( false ); } );
    }
    void remove() {
        runWith( [this] { host().v3groupDel( IpAddr( G ) ); } );
    }
};

TEST_F( ExpiryBeforeAChange, DisablingFollowsTheReport ) {
    disable();
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    EXPECT_FALSE( sm().enabled() );
}

TEST_F( ExpiryBeforeAChange, RemovalFollowsTheReport ) {
    remove();
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1", "leave 239.1.1.1 to 224.0.0.2" ) );
}

class DeferredExpiryDeathTest : public ExpiryBeforeAChange {
  protected:
    DeferredExpiryDeathTest() : ExpiryBeforeAChange( Delivery::isDeferred ) {}
};

TEST_F( DeferredExpiryDeathTest, DisablingInTheTurnOfAnExpiry ) {
    EXPECT_DEATH( disable(), "assertion failed: igmpHost\\(\\)->enabled\\(\\)\n" );
}

TEST_F( DeferredExpiryDeathTest, RemovalInTheTurnOfAnExpiry ) {
    EXPECT_DEATH( remove(), "assertion failed: igmpHost\\(\\)->v3group\\( group \\)\n" );
}

// What ends the process.

class GroupTimerDeathTest : public EngineTest {
  protected:
    GroupTimerDeathTest() { joinAndRest(); }
};

TEST_F( GroupTimerDeathTest, ExpiryOfADisabledHost ) {
    host().enabledIs( false );
    EXPECT_DEATH(
        sm().doGroupTimerExpired( IpAddr( G ) ), "assertion failed: igmpHost\\(\\)->enabled\\(\\)\n"
    );
}

TEST_F( GroupTimerDeathTest, ExpiryOfAGroupWithoutARecord ) {
    EXPECT_DEATH(
        sm().doGroupTimerExpired( IpAddr( unknownGroup ) ),
        "assertion failed: igmpHost\\(\\)->v3group\\( group \\)\n"
    );
}

TEST_F( GroupTimerDeathTest, ExpiryOfAGroupWithoutAMachine ) {
    sm().groupTimerSmDel( IpAddr( G ) );
    EXPECT_DEATH( sm().doGroupTimerExpired( IpAddr( G ) ), "assertion failed: groupTimerSm\\( group \\)\n" );
}

TEST_F( GroupTimerDeathTest, ExpiryAfterTheRecordWentUnprocessed ) {
    host().processV3GroupChangeIs( false );
    timer().doSetTimer( 1.0 );
    removeGroup();
    ASSERT_TRUE( hasTimer() );
    EXPECT_DEATH( runFor( 1.0 ), "assertion failed: igmpHost\\(\\)->v3group\\( group \\)\n" );
}

} // namespace
