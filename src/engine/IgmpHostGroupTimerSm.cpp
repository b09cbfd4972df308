#include "engine/IgmpHostGroupTimerSm.h"

#include "engine/IgmpHostSm.h"
#include "engine/Trace.h"
#include "platform/kiv/Clock.h"

namespace Igmp {

Ptr<IgmpHostGroupTimerSm>
IgmpHostGroupTimerSm::IgmpHostGroupTimerSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
    Ptr<Lumo::TimerWheel const> const& timerWheel, IgmpHostSm* igmpHostSm
) {
    return Kiv::stateMachineIs<IgmpHostGroupTimerSm>( activity, group, timerWheel, igmpHostSm );
}

IgmpHostGroupTimerSm::IgmpHostGroupTimerSm(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
    Ptr<Lumo::TimerWheel const> const& timerWheel, IgmpHostSm* igmpHostSm
)
    : ResponseTimerSm( activity, timerWheel ), group_( group ), igmpHostSm_( igmpHostSm ) {
    handleResponseDelayTimer();
    handleInitialized();
}

void
IgmpHostGroupTimerSm::handleInitialized() {
    initializedIs( true );
}

bool
IgmpHostGroupTimerSm::periodicInOldVersion() const {
    IgmpHostStatus const* const status = igmpHostSm_->igmpHostStatus();
    return status->igmpVersion() != igmpVersion3 && status->enablePeriodicReport();
}

void
IgmpHostGroupTimerSm::doSetTimer( Seconds const& delay ) {
    bool const periodic = periodicInOldVersion();
    if ( Kiv::isFinite( delay ) ) {
        scheduleResponse( delay, periodic );
    } else {
        cancelResponse( periodic );
    }
}

/// A response is due: with periodic reporting it takes the place of the unsolicited stream.
void
IgmpHostGroupTimerSm::scheduleResponse( Seconds delay, bool periodic ) {
    if ( periodic ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Disabling unsolicited report generation";
        waitForQueryInterval_ = false;
        igmpHostSm_->igmpHostStatus()->continueUnsolicitedReportIs( false );
    }
    KIV_TRACE( igmpHostTrace, traceDetail ) << "Setting timer to expire in " << delay;
    KIV_TRACE( igmpHostTrace, traceDetail ) << " tstate : " << timerRunning;
    timerIs( Kiv::now() + delay, timerRunning );
}

/// No response is due any more. With periodic reporting the first cancel waits out a query interval and the
/// second restarts the stream; the wheel is then armed although no response is pending.
void
IgmpHostGroupTimerSm::cancelResponse( bool periodic ) {
    TimerState state = timerDisabled;
    Seconds deadline = Kiv::never;
    if ( periodic && !waitForQueryInterval_ ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Setting timer for " << queryInterval_ << " seconds.";
        waitForQueryInterval_ = true;
        deadline = Kiv::now() + queryInterval_;
        state = timerRunning;
    } else if ( periodic ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Enabling unsolicited report generation";
        Ptr<IgmpHostStatus> const status = igmpHostSm_->igmpHostStatus();
        waitForQueryInterval_ = false;
        status->continueUnsolicitedReportIs( true );
        deadline = Kiv::now() + status->unsolicitedReportInterval();
    }
    KIV_TRACE( igmpHostTrace, traceDetail ) << " tstate : " << state;
    timerIs( deadline, state );
}

/// The rearming comes before the report and asks for periodic reporting in whatever version is in force. Who
/// hears of the stream meanwhile may remove the group, the host or its status.
void
IgmpHostGroupTimerSm::handleResponseDelayTimer() {
    if ( !initialized() ) {
        return;
    }
    Ptr<IgmpHostSm> const hostSm( igmpHostSm_ );
    KIV_TRACE( igmpHostTrace, traceAction )
        << "Host " << hostSm->name() << " response delay timer expired for group " << group_;
    if ( !hostSm->igmpHostStatus()->enablePeriodicReport() ) {
        doSetTimer( Kiv::never );
    } else if ( waitForQueryInterval_ ) {
        doSetTimer( queryInterval_ );
    } else {
        doSetTimer( hostSm->igmpHost()->unsolicitedReportInterval() );
    }
    if ( hostSm->groupTimerSm( group_ ).get() == this ) {
        hostSm->doGroupTimerExpired( group_ );
    }
}

} // namespace Igmp
