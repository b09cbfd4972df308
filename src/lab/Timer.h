#pragma once

#include <functional>

#include "platform/kiv/Clock.h"
#include "platform/lumo/TimerWheel.h"

namespace Lab {

/// True for a time that lies ahead. One that is now has come, whether or not the wheel has told of it yet.
inline bool
isAhead( Kiv::Seconds time ) {
    return Kiv::isFinite( time ) && time > Kiv::now();
}

/// A timer that calls a function once when its time has come. It may be destroyed by that function. It is
/// always called from the wheel, also where its activity defers notifications.
class Timer : public Lumo::TimerWheel::NotifieeConst {
  public:
    Timer( Kiv::Ptr<Lumo::TimerWheel const> const& wheel, std::function<void()> expired )
        : NotifieeConst( wheel ), expired_( std::move( expired ) ) {
        isRegisteredNotifieeIs( true );
    }

    bool isRunning() const { return isAhead( timeMin() ); }
    /// True if more than `span` seconds remain.
    bool runsLongerThan( Kiv::Seconds span ) const {
        return Kiv::isFinite( timeMin() ) && timeMin() > Kiv::now() + span;
    }
    /// Seconds that remain; 0 for a timer that does not run.
    Kiv::Seconds remaining() const { return isRunning() ? timeMin() - Kiv::now() : 0.0; }
    /// Expires `span` seconds from now, or never.
    void remainingIs( Kiv::Seconds span ) { timeMinIs( Kiv::now() + span ); }
    void stop() { timeMinIs( Kiv::never ); }

    void onTime() override { expired_(); }

  private:
    std::function<void()> expired_;
};

} // namespace Lab
