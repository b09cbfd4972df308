#pragma once

#include <gtest/gtest.h>

#include "platform/kiv/Activity.h"
#include "platform/kiv/Clock.h"
#include "platform/lumo/TimerWheel.h"

namespace Support {

/// A test on a simulated clock: the clock in force, a wheel of its own, and the default activity to run them.
/// Time passes only where the test says so. The activity delivers inline unless the test says otherwise, and
/// does so again when the test is over.
class SimulatedTest : public ::testing::Test {
  protected:
    explicit SimulatedTest( Kiv::Seconds start = 1000.0 );
    ~SimulatedTest() override;

    Kiv::SimulatedClock& clock() { return clock_; }
    Kiv::Seconds start() const { return start_; }
    /// Time that has passed since the test's start.
    Kiv::Seconds elapsed() const { return clock_.now() - start_; }
    Kiv::Ptr<Lumo::TimerWheel> const& wheel() const { return wheel_; }
    static Kiv::ActivitySm& activity() { return Kiv::defaultActivity()->activitySm(); }

    /// Lets `span` seconds pass; what falls due on the way and at the end is served.
    static void runFor( Kiv::Seconds span ) { activity().runFor( span ); }
    /// Lets time pass until `after` seconds from the test's start.
    void runUntilElapsed( Kiv::Seconds after ) { activity().runUntilTime( start_ + after ); }
    /// Serves what is due at this instant.
    static void settle() { runFor( 0.0 ); }
    static void deferredDeliveryIs( bool value ) { activity().deferredDeliveryIs( value ); }

  private:
    Kiv::Seconds start_;
    Kiv::SimulatedClock clock_;
    Kiv::ClockScope clockScope_;
    Kiv::Ptr<Lumo::TimerWheel> wheel_;
};

} // namespace Support
