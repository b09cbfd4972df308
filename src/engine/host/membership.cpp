#include "engine/RandomDelay.h"
#include "engine/Trace.h"
#include "engine/host/Reactors.h"

namespace Igmp {

void
IgmpHostSm::handleGroup() {
    if ( !initialized_ ) {
        return;
    }
    for ( auto at = igmpHost()->v3group().begin(); at; ++at ) {
        handleGroup( at->multicastAddr() );
    }
}

/// Joins and leaves of versions 1 and 2. It runs under version 3 too, where nothing is sent, so that a later
/// fall-back finds the groups as joined and does not join them afresh.
void
IgmpHostSm::handleGroup( Zornet::IpAddr group ) {
    if ( !initialized_ ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " not initialized ";
        return;
    }
    if ( !enabled_ ) {
        return;
    }
    Ptr<IgmpV3GroupRecord> const record = igmpHost()->v3group( group );
    U32 const version = record ? record->version() : 1; // a removed record takes the road of a live one
    KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " handleGroup " << group;
    bool const isJoined = groupIsJoined( record );
    Ptr<IgmpHostGroupTimerSm> timer = groupTimerSm( group );
    if ( !timer && record ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "Creating IgmpHostGroupTimerSm for group : " << group;
        timer = groupTimerSmIs( nullptr, group, timerWheel_ );
    }
    if ( isJoined && version != 0 && !timer->joined() ) {
        joinGroup( group, *timer );
    } else if ( !isJoined && timer && timer->joined() && version != 0 ) {
        leaveGroup( group, *timer );
    }
    if ( !igmpHost()->v3group( group ) ) {
        groupTimerSmDel( group );
    }
}

/// Two reports, one at once and one repeated, whatever the robustness; the repeat is set up first.
void
IgmpHostSm::joinGroup( Zornet::IpAddr const& group, IgmpHostGroupTimerSm& timer ) {
    timer.doSetTimer( randomDelay( igmpHostStatus()->unsolicitedReportInterval() ) );
    timer.lastReporterIs( true );
    KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " joining group " << group;
    sendV12Report( this, group );
    timer.joinedIs( true );
}

/// A host that was not the last to report leaves silently, and so does one that a version 1 querier holds
/// down. A pending answer is not cancelled while the record lives: on purpose.
void
IgmpHostSm::leaveGroup( Zornet::IpAddr const& group, IgmpHostGroupTimerSm& timer ) {
    if ( timer.lastReporter() && !v1QuerierSeenRecently( this ) ) {
        KIV_TRACE( igmpHostTrace, traceAction )
            << "IgmpHost " << name_ << " leave grp with leave pkt " << group;
        sendV2Leave( this, group );
        timer.lastReporterIs( false );
    } else {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << name_ << " leaving group silently" << group;
    }
    timer.joinedIs( false );
}

} // namespace Igmp
