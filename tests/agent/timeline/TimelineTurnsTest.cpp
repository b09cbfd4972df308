#include <sys/eventfd.h>

#include <optional>

#include "agent/expecting/Expectations.h"
#include "agent/timeline/Timeline.h"
#include "platform/zornet/device/FileDescriptor.h"
#include "tests/agent/HostsBench.h"

namespace Agent {

namespace {

/// Hosts on no device, for more of which something is due than a turn does.
class TimelineTurns : public ::testing::Test {
  protected:
    void play( std::string const& events ) {
        scenario_ = scenarioOf( "hosts: [ { name: rx, count: 1500, robustness: 3 } ]\n" + events );
        loadHosts( scenario_, emulation_.hostDir() );
        context_.started = Kiv::now();
        timeline_.emplace( context_ );
        context_.nextEvent = [this] { return timeline_->nextEvent(); };
        timeline_->handleStarted();
    }
    static Kiv::ActivitySm& activity() { return Kiv::defaultActivity()->activitySm(); }
    std::size_t hostsWith( U32 robustness ) const {
        std::size_t count = 0;
        for ( Igmp::IgmpHost const& host : emulation_.hostDir().igmpHost() ) {
            count += host.robustness() == robustness ? 1 : 0;
        }
        return count;
    }

    Scenario scenario_;
    RunOptions options_;
    Kiv::Ptr<Lumo::TimerWheel> const wheel_{ new Lumo::TimerWheel };
    Emulation emulation_{ wheel_ };
    Traffic traffic_;
    StatusLedger ledger_{ emulation_ };
    Messages messages_{ LogFormat::text, false };
    RunContext context_{ options_, scenario_, wheel_, emulation_, traffic_, ledger_, messages_ };
    std::optional<Timeline> timeline_;
};

constexpr char two[] = "events:\n  - { at: 0, set: { robustness: 5 } }\n"
                       "  - { at: 0, set: { robustness: 7 } }\n";

TEST_F( TimelineTurns, EventOfManyHostsTakesSeveralAndNoneOvertakesIt ) {
    play( two );
    EXPECT_EQ( hostsWith( 5 ), 1000U );
    EXPECT_EQ( hostsWith( 3 ), 500U );
    activity().runOnce();
    EXPECT_EQ( hostsWith( 5 ), 1000U );
    EXPECT_EQ( hostsWith( 7 ), 500U );
    activity().runOnce();
    EXPECT_EQ( hostsWith( 7 ), 1500U );
}

/// A run ends with its last expectation.
TEST_F( TimelineTurns, ExpectationOfTheirTimeIsLookedAtBehindAll ) {
    play( std::string( two ) + "expect: [ { at: 0, v2LeavesSent: 0 } ]\n" );
    testing::internal::CaptureStderr();
    Expectations expectations( context_ );
    expectations.handleStarted();
    constexpr Kiv::Seconds onlyInFailure = 20.0;
    activity().runFor( onlyInFailure );
    testing::internal::GetCapturedStderr();
    EXPECT_EQ( hostsWith( 7 ), 1500U );
    EXPECT_LT( Kiv::now(), context_.started + onlyInFailure );
}

TEST_F( TimelineTurns, WhatIsDueAtTheEndIsDone ) {
    play( std::string( two ) + "  - { at: 0.000001, set: { robustness: 9 } }\nduration: 0.0000001\n" );
    activity().runFor( 0.0 );
    EXPECT_LT( hostsWith( 7 ), 1500U );
    timeline_->handleTimeOver();
    EXPECT_EQ( hostsWith( 7 ), 1500U );
}

TEST_F( TimelineTurns, WhoeverWantsTheEndIsNotKeptWaiting ) {
    context_.isToEnd = [] { return true; };
    play( std::string( two ) + "duration: 0.0000001\n" );
    timeline_->handleTimeOver();
    EXPECT_EQ( hostsWith( 7 ), 0U );
}

TEST_F( TimelineTurns, InSimulatedTimeThereIsOne ) {
    Kiv::SimulatedClock clock;
    Kiv::ClockScope const scope( clock );
    int looks = 0;
    context_.isToEnd = [&] { return ++looks == 3; };
    play( two );
    EXPECT_EQ( hostsWith( 7 ), 1500U );
    EXPECT_EQ( looks, 2 );
    EXPECT_EQ( Kiv::now(), Kiv::SimulatedClock().now() );
}

TEST_F( TimelineTurns, InSimulatedTimeWhoeverWantsTheEndIsHeard ) {
    Kiv::SimulatedClock clock;
    Kiv::ClockScope const scope( clock );
    context_.isToEnd = [] { return true; };
    play( two );
    EXPECT_EQ( hostsWith( 5 ), 1000U );
    EXPECT_EQ( hostsWith( 7 ), 0U );
}

} // namespace

} // namespace Agent
