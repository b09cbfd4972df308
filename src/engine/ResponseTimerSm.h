#pragma once

#include "model/Enumerations.h"
#include "platform/kiv/HashMap.h"
#include "platform/kiv/StateMachine.h"
#include "platform/lumo/TimerWheel.h"

namespace Igmp {

/// The idiom of the four timers behind which a host delays its reports: one reactor on the wheel, a state
/// that says whether a report is pending (not whether the wheel is armed), and the deadline last set. The
/// machine keeps the deadline itself, so that a firing which is dropped leaves no time remaining. Each timer
/// says in doSetTimer() what it adds.
class ResponseTimerSm : public Kiv::StateMachine, public Kiv::HashMember {
  public:
    class KivResponseDelay;

    ~ResponseTimerSm() override;

    Ptr<Lumo::TimerWheel const> const& timerWheel() const { return timerWheel_; }
    KivResponseDelay* responseDelay() const { return responseDelay_.get(); }
    TimerState responseDelayTimerState() const { return responseDelayTimerState_; }
    void responseDelayTimerStateIs( TimerState state ) { responseDelayTimerState_ = state; }
    bool initialized() const { return initialized_; }

    /// Time until the pending report: 0 where its deadline has passed, infinity where none is pending.
    Seconds responseDelayRemaining() const;
    /// `delay` counts from now; infinity cancels.
    virtual void doSetTimer( Seconds const& delay ) = 0;
    /// Runs when the wheel fires.
    virtual void handleResponseDelayTimer() = 0;

  protected:
    ResponseTimerSm(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel
    );

    void initializedIs( bool value ) { initialized_ = value; }
    /// Sets the wheel to an absolute time and records the state.
    void timerIs( Seconds deadline, TimerState state );
    /// The plain rule: a finite delay arms and is pending, infinity disarms.
    void plainTimerIs( Seconds const& delay );
    void forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) override;

  private:
    Ptr<Lumo::TimerWheel const> const timerWheel_;
    Ptr<KivResponseDelay> responseDelay_;
    Seconds deadline_ = Kiv::never;
    TimerState responseDelayTimerState_ = timerDisabled;
    bool initialized_ = false;
};

/// The wheel's call reaches the machine for as long as the machine lives.
class ResponseTimerSm::KivResponseDelay : public Lumo::TimerWheel::NotifieeConst {
  public:
    KivResponseDelay( Ptr<Lumo::TimerWheel const> const& wheel, ResponseTimerSm* timerSm );

    void onTime() override;
    void timerSmDel() { timerSm_ = nullptr; }

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    ResponseTimerSm* timerSm_;
};

} // namespace Igmp
