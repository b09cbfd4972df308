#pragma once

#include <functional>

#include "platform/lumo/TimerWheel.h"

/// A timer that runs a function of the test.
class Alarm : public Lumo::TimerWheel::NotifieeConst {
  public:
    static Kiv::Ptr<Alarm> on(
        Kiv::Ptr<Lumo::TimerWheel> const& wheel, std::function<void()> rings = [] {}
    ) {
        Kiv::Ptr<Alarm> const alarm( new Alarm( wheel, std::move( rings ) ) );
        alarm->isRegisteredNotifieeIs( true );
        return alarm;
    }
    Alarm( Kiv::Ptr<Lumo::TimerWheel> const& wheel, std::function<void()> whenRinging )
        : NotifieeConst( wheel ), rings( std::move( whenRinging ) ) {}

    void onTime() override { rings(); }
    void onNotificationException( Kiv::AttributeId id ) override { exceptionOf = id; }

    std::function<void()> rings;
    Kiv::AttributeId exceptionOf = 0;
};
