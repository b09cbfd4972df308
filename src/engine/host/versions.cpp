#include "engine/Trace.h"
#include "engine/host/Reactors.h"
#include "platform/kiv/Clock.h"

namespace Igmp {

void
IgmpHostSm::handleV1RouterPresentTimer() {
    KIV_TRACE( igmpHostTrace, traceDetail ) << "for v1 router present timer";
    if ( initialized_ && enabled_ ) {
        handleV2V3Compatibility();
    }
}

void
IgmpHostSm::handleV2RouterPresentTimer() {
    KIV_TRACE( igmpHostTrace, traceDetail ) << "for v2 router present timer";
    if ( initialized_ && enabled_ ) {
        handleV2V3Compatibility();
    }
}

/// The oldest querier that is still remembered (RFC 3376 section 7.2.1). The two timers are the whole memory.
IgmpVersion
IgmpHostSm::versionHeard() const {
    if ( Kiv::isFinite( v1RouterPresentTimer_->timeMin() ) ) {
        return igmpVersion1;
    }
    return Kiv::isFinite( v2RouterPresentTimer_->timeMin() ) ? igmpVersion2 : igmpVersion3;
}

void
IgmpHostSm::handleV2V3Compatibility() {
    if ( !initialized_ || !enabled_ || igmpHost()->igmpVersionForced() ) {
        return;
    }
    Ptr<IgmpHostStatus> const status = igmpHostStatus();
    KIV_TRACE( igmpHostTrace, traceDetail ) << "v2routerpresent timer : " << v2RouterPresentTimer_->timeMin();
    IgmpVersion const version = std::min( versionHeard(), igmpHost()->igmpVersion() );
    KIV_TRACE( igmpHostTrace, traceAction ) << "Host " << name_ << " transition to " << version;
    status->igmpVersionIs( version );
    KIV_TRACE( igmpHostTrace, traceDetail )
        << "in handlev2v3compatibility igmpHostStatus version: " << status->igmpVersion();
}

void
IgmpHostSm::changeIgmpVersion() {
    if ( initialized_ && igmpHostStatus() ) {
        igmpHostStatus()->igmpVersionIs( igmpHost()->igmpVersion() );
    }
}

/// Puts the configured version in force. Without periodic reporting every querier is forgotten; with it, the
/// configured version's own timer fires on the next turn and what is still remembered counts again.
void
IgmpHostSm::handleIgmpVersion() {
    if ( !initialized_ || !enabled_ ) {
        return;
    }
    Ptr<IgmpHostStatus> const status = igmpHostStatus();
    IgmpVersion const version = igmpHost()->igmpVersion();
    if ( !igmpHost()->enablePeriodicReport() ) {
        v1RouterPresentTimer_->timeMinIs( Kiv::never );
        v2RouterPresentTimer_->timeMinIs( Kiv::never );
    } else {
        if ( version == igmpVersion1 ) {
            v1RouterPresentTimer_->timeMinIs( Kiv::now() );
        } else if ( version == igmpVersion2 ) {
            v2RouterPresentTimer_->timeMinIs( Kiv::now() );
        }
        status->continueUnsolicitedReportIs( igmpHost()->enablePeriodicReport() );
    }
    KIV_TRACE( igmpHostTrace, traceAction ) << "Host " << name_ << " igmp version set to " << version;
    KIV_TRACE( igmpHostTrace, traceDetail ) << "set v2routerpresent to :" << v2RouterPresentTimer_->timeMin();
    status->igmpVersionIs( version );
}

} // namespace Igmp
