#pragma once

#include <array>

#include "platform/kiv/Activity.h"
#include "platform/kiv/NotifieeConst.h"
#include "platform/lumo/TimerSlot.h"

namespace Lumo {

using Kiv::Ptr;
using Kiv::Seconds;
using Kiv::U16;
using Kiv::U64;

/// The clock work behind every deadline of an activity: a hierarchical timing wheel of one tick per
/// microsecond. Nine wheels of 64 slots each stand above one another; a timer hangs in the wheel of the
/// highest digit (base 64) in which its tick differs from the present one, and moves down as that digit comes
/// round. What has reached the present tick waits in one list, sorted by exact time, so no timer fires early
/// and all fire in the order of their times, those of one time in the order of arming. Arming, rearming and
/// cancelling take constant time and mostly touch no other timer's memory. A timer that is set for a time
/// already past fires with the next expire(), never inside the call that set it; so does one that is set for
/// now by a timer that is just firing.
class TimerWheel : public Kiv::PtrInterface, private Kiv::DeadlineSource {
  public:
    class NotifieeConst;

    /// A wheel served by `activity`, the default one where null.
    explicit TimerWheel( Ptr<Kiv::ActivityConfig> const& activity = nullptr );
    ~TimerWheel() override;

    /// Timers that are armed.
    std::size_t armedTimers() const { return armed_; }
    /// The time of the first armed timer, exactly; it may lie in the past. Never where none is armed.
    Seconds nextDeadline() override;
    std::size_t expire( Seconds now ) override;

  private:
    static constexpr unsigned digitBits = 6;
    static constexpr unsigned slotsPerWheel = 1U << digitBits;
    static constexpr unsigned wheels = 9;
    static constexpr U64 lastTick = ( U64{ 1 } << 53 ) - 1;

    /// The tick in which a time lies. It never falls as the time grows.
    static U64 tickOf( Seconds time );
    static Seconds timeOfFirst( TimerSlot const& list );
    static constexpr U16 tagOf( unsigned wheel, unsigned slot ) {
        return static_cast<U16>( wheel << digitBits | slot );
    }

    void arm( NotifieeConst& timer );
    void disarm( NotifieeConst& timer );
    void place( Seconds time, TimerPlace& timer );
    void advance( U64 tick );
    bool earliestSlot( unsigned& wheel, unsigned& slot ) const;
    void enterSlot( unsigned wheel, unsigned slot, U64 tick );
    U64 slotStart( unsigned wheel, unsigned slot ) const;
    void sortDue();
    void takeDue( Seconds now );
    void fire( NotifieeConst& timer );

    Kiv::ActivitySm* activity_;
    Ptr<Kiv::ActivityConfig> activityConfig_;
    U64 current_;
    std::size_t armed_ = 0;
    std::array<U64, wheels> occupied_{};
    std::array<std::array<TimerSlot, slotsPerWheel>, wheels> slots_;
    TimerSlot due_; ///< has reached the present tick
    bool dueUnsorted_ = false;
    TimerSlot run_; ///< taken by an expire() in progress
    TimerBlockStore blocks_;
    Seconds nextTime_ = 0.0; ///< the earliest time in the wheels, where nextKnown_
    bool nextKnown_ = false;
};

/// A timer: a reactor on a wheel with at most one pending expiry. Times are absolute, on Kiv::now().
class TimerWheel::NotifieeConst : public Kiv::PtrInterface::NotifieeConst, private TimerPlace {
  public:
    ~NotifieeConst() override;

    /// Sets the time at which onTime() is wanted, in place of any earlier one. Infinity disarms.
    void timeMinIs( Seconds const& time );
    /// The time last set; infinity for a timer that was never armed or has fired.
    Seconds timeMin() const { return timeMin_; }

    /// Runs on the activity once the clock has reached timeMin(). The wheel does not repeat.
    virtual void onTime() {}

  protected:
    explicit NotifieeConst( Ptr<TimerWheel const> const& wheel );

    TimerWheel* wheel() const {
        return const_cast<TimerWheel*>( static_cast<TimerWheel const*>( notifierObject() ) );
    }
    void doLink( bool link ) override;

  private:
    friend class TimerWheel;

    bool linked() const { return isRegisteredNotifiee() && hasNotificationActive() && wheel() != nullptr; }

    Seconds timeMin_ = Kiv::never;
};

} // namespace Lumo
