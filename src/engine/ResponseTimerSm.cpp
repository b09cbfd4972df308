#include "engine/ResponseTimerSm.h"

#include <algorithm>

#include "platform/kiv/Attribute.h"
#include "platform/kiv/Clock.h"

namespace Igmp {

ResponseTimerSm::KivResponseDelay::KivResponseDelay(
    Ptr<Lumo::TimerWheel const> const& wheel, ResponseTimerSm* timerSm
)
    : Lumo::TimerWheel::NotifieeConst( wheel ), timerSm_( timerSm ) {}

/// What the machine sends and counts may lead somebody to remove it, so it is held until it is done.
void
ResponseTimerSm::KivResponseDelay::onTime() {
    if ( deliverable( Kiv::attrTime ) && timerSm_ ) {
        Ptr<ResponseTimerSm> const held( timerSm_ );
        held->handleResponseDelayTimer();
    }
}

std::span<Kiv::Watch const>
ResponseTimerSm::KivResponseDelay::watches() const {
    static constexpr Kiv::Watch rows[] = { Kiv::watch<&KivResponseDelay::onTime>( Kiv::attrTime ) };
    return rows;
}

ResponseTimerSm::ResponseTimerSm(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel
)
    : StateMachine( activity ),
      timerWheel_( timerWheel ),
      responseDelay_( new KivResponseDelay( timerWheel, this ) ) {
    install( *responseDelay_ );
}

ResponseTimerSm::~ResponseTimerSm() {
    responseDelay_->kivDoZombieReactors( true );
    responseDelay_->timerSmDel();
}

void
ResponseTimerSm::forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) {
    visit( *responseDelay_ );
}

Seconds
ResponseTimerSm::responseDelayRemaining() const {
    return responseDelayTimerState_ == timerRunning ? std::max( 0.0, deadline_ - Kiv::now() ) : Kiv::never;
}

void
ResponseTimerSm::timerIs( Seconds deadline, TimerState state ) {
    deadline_ = deadline;
    responseDelay_->timeMinIs( deadline );
    responseDelayTimerStateIs( state );
}

void
ResponseTimerSm::plainTimerIs( Seconds const& delay ) {
    if ( Kiv::isFinite( delay ) ) {
        timerIs( Kiv::now() + delay, timerRunning );
    } else {
        timerIs( delay, timerDisabled );
    }
}

} // namespace Igmp
