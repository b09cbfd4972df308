#include "engine/Trace.h"
#include "engine/host/Reactors.h"

namespace Igmp {

/// Runs when the version in force changes, yet asks for the configured one: a version 3 host that has fallen
/// back keeps the interval of version 3, on purpose.
void
IgmpHostSm::setIntervalValue() {
    if ( !initialized_ || !enabled_ ) {
        return;
    }
    Ptr<IgmpHostStatus> const status = igmpHostStatus();
    Seconds const requested = igmpHost()->unsolicitedReportInterval();
    if ( requested != 0.0 ) {
        status->unsolicitedReportIntervalIs( requested );
    } else if ( igmpHost()->igmpVersion() == igmpVersion3 ) {
        status->unsolicitedReportIntervalIs( igmpHost()->defaultIgmpV3UnsolicitedReportIntvl() );
    } else {
        status->unsolicitedReportIntervalIs( igmpHost()->defaultIgmpV1V2UnsolicitedReportIntvl() );
    }
    KIV_TRACE( igmpHostTrace, traceDetail )
        << " host " << name_ << " set to " << status->unsolicitedReportInterval();
}

/// Takes a new request over as it stands, 0 included; but an interval in force of 0 stays until the version
/// in force changes. Both on purpose.
void
IgmpHostSm::setUnsolicitedReportIntvl() {
    if ( !initialized_ || !enabled_ ) {
        return;
    }
    Ptr<IgmpHostStatus> const status = igmpHostStatus();
    if ( status->unsolicitedReportInterval() != 0.0 ) {
        status->unsolicitedReportIntervalIs( igmpHost()->unsolicitedReportInterval() );
    }
    KIV_TRACE( igmpHostTrace, traceDetail )
        << " host " << name_ << " set to " << status->unsolicitedReportInterval() << " after configuration ";
}

void
IgmpHostSm::handleEnablePeriodicReport() {
    if ( !initialized_ || !enabled_ ) {
        return;
    }
    Ptr<IgmpHostStatus> const status = igmpHostStatus();
    status->enablePeriodicReportIs( igmpHost()->enablePeriodicReport() );
    status->continueUnsolicitedReportIs( igmpHost()->enablePeriodicReport() );
}

/// Starts the periodic stream of version 3. The version in force is not asked here: the sender does so when
/// it fires.
void
IgmpHostSm::handleContinueUnsolicitedReport() {
    IgmpHostStatus const* const status = igmpHostStatus();
    if ( !status || !status->enablePeriodicReport() || !status->continueUnsolicitedReport() ||
         !aggregatedSenderSm_ ) {
        return;
    }
    Seconds const delay = status->unsolicitedReportInterval();
    KIV_TRACE( igmpHostTrace, traceDetail ) << "aggregated timer schedule a delay " << delay;
    aggregatedSenderSm_->doSetTimer( delay );
}

} // namespace Igmp
