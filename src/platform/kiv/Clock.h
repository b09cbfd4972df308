#pragma once

#include "platform/kiv/Types.h"

namespace Kiv {

/// Where the process takes its time from. Every deadline is an absolute value on this one clock, which never
/// goes back.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual Seconds now() const = 0;
    /// True for a clock that stands still until it is told to advance.
    virtual bool isSimulated() const { return false; }
    /// Moves a simulated clock forward to `time`; an earlier time leaves it alone.
    virtual void advanceTo( Seconds time );
    /// Whether a turn of the loop has served something at the present instant of a simulated clock.
    virtual bool instantServed() const { return false; }
    virtual void instantServedIs( bool ) {}
};

/// The system's steady clock, set to the wall clock at its construction, so that two machines do not seed
/// their hosts' delays alike.
class SystemClock : public Clock {
  public:
    SystemClock();
    Seconds now() const override;

  private:
    Seconds offset_;
};

/// A clock for tests and simulation. It starts at 1000 seconds by default and not at zero, which code may
/// read as "unset".
class SimulatedClock : public Clock {
  public:
    explicit SimulatedClock( Seconds start = 1000.0 ) : now_( start ) {}
    Seconds now() const override { return now_; }
    bool isSimulated() const override { return true; }
    void advanceTo( Seconds time ) override;
    bool instantServed() const override { return instantServed_; }
    void instantServedIs( bool value ) override { instantServed_ = value; }

  private:
    Seconds now_;
    bool instantServed_ = false;
};

/// The process's clock in force: the system's, unless a ClockScope stands.
Clock& clock();

/// The current time on clock().
Seconds now();

/// Puts another clock in force for the scope's life. The clock must outlive the scope.
class ClockScope {
  public:
    explicit ClockScope( Clock& clock );
    ~ClockScope();
    ClockScope( ClockScope const& ) = delete;
    ClockScope& operator=( ClockScope const& ) = delete;

  private:
    Clock* outer_;
};

/// A clock of the system that has stopped.
class StoppedClock : public Clock {
  public:
    explicit StoppedClock( Seconds time ) : now_( time ) {}
    Seconds now() const override { return now_; }

  private:
    Seconds now_;
};

/// For the scope's life it is the moment of the scope's start, however long what is done in it takes: all to
/// whom one event is told count from the same time. The loop must not be run within.
class MomentScope {
  public:
    MomentScope() : stopped_( Kiv::now() ), scope_( clock().isSimulated() ? clock() : stopped_ ) {}

  private:
    StoppedClock stopped_;
    ClockScope scope_;
};

} // namespace Kiv
