#include "engine/Trace.h"
#include "engine/host/Reactors.h"

namespace Igmp {

/// The answer for a group is due. Whether the group is joined is not asked: its record's existence is enough.
void
IgmpHostSm::doGroupTimerExpired( Zornet::IpAddr group ) {
    Kiv::invariant( igmpHost()->enabled(), "igmpHost()->enabled()" );
    Kiv::invariant( igmpHost()->v3group( group ) != nullptr, "igmpHost()->v3group( group )" );
    Ptr<IgmpHostGroupTimerSm> const timer = groupTimerSm( group );
    Kiv::invariant( timer != nullptr, "groupTimerSm( group )" );
    timer->lastReporterIs( true );
    sendV12Report( this, group );
}

/// Another host has reported a group: this one need not (RFC 1112, RFC 2236 section 3). Sender and version of
/// the report do not matter, nor whether an answer was pending.
void
IgmpHostSm::handleV12Report( Zornet::IgmpV12Hdr* hdr ) {
    Kiv::invariant( igmpHost()->enabled(), "igmpHost()->enabled()" );
    Zornet::IpAddr const group = hdr->groupAddress();
    Ptr<IgmpHostGroupTimerSm> const timer = groupTimerSm( group );
    if ( !timer ) {
        return;
    }
    timer->doSetTimer( Kiv::never );
    timer->lastReporterIs( false );
    KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " suppress report for group " << group;
}

} // namespace Igmp
