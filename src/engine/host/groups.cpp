#include "engine/GroupReplication.h"
#include "engine/Trace.h"
#include "engine/host/Reactors.h"

namespace Igmp {

/// Brings the machines of all groups into step with the configuration, those included that have gone from it.
void
IgmpHostSm::handleV3Group() {
    if ( !initialized_ || !enabled_ || !igmpHost()->processV3GroupChange() ) {
        return;
    }
    for ( auto at = igmpHost()->v3group().begin(); at; ++at ) {
        handleV3Group( at->multicastAddr() );
    }
    for ( auto at = aggregatedSenderSm_->v3GroupSm().begin(); at; ++at ) {
        if ( !igmpHost()->v3group( at->group() ) ) {
            handleV3Group( at->group() );
        }
    }
}

/// Takes in one change of a group: machines, state difference, version 3 sender, then the joins and leaves of
/// the older versions, then the copies of a template.
void
IgmpHostSm::handleV3Group( Zornet::IpAddr group ) {
    if ( !initialized_ || !enabled_ ) {
        return;
    }
    Kiv::invariant( aggregatedSenderSm_ != nullptr, "aggregatedSenderSm()" );
    aggregatedSenderSm_->noteConfigured( group );
    if ( !igmpHost()->processV3GroupChange() ) {
        return;
    }
    if ( igmpHost()->v3group( group ) ) {
        takeUpGroup( group );
    } else {
        dropGroup( group );
    }
    if ( igmpHostStatus()->igmpVersion() == igmpVersion3 ) {
        aggregatedSenderSm_->doSetTimer( 0.0 );
    }
    handleGroup( group );
    Ptr<IgmpV3GroupRecord> const record = igmpHost()->v3group( group );
    if ( record && record->replicate() ) {
        replicateV3Group( group );
    }
}

void
IgmpHostSm::takeUpGroup( Zornet::IpAddr const& group ) {
    if ( !v3GroupCallbackSm( group ) ) {
        v3GroupCallbackSmIs( nullptr, group, igmpHost()->v3group( group ) );
    }
    if ( !aggregatedSenderSm_->v3GroupSm( group ) ) {
        aggregatedSenderSm_->v3GroupSmIs( nullptr, group, igmpHost(), igmpHostStatus() );
    }
    if ( !v3GroupQueryTimerSm( group ) ) {
        v3GroupQueryTimerSmIs( nullptr, timerWheel_, group, igmpHost(), igmpHostStatus() );
    }
    aggregatedSenderSm_->v3GroupSm( group )->process();
}

/// The group's memory stays behind to tell the leave. There may be none where a template's sweep has deleted
/// a group before it was taken up.
void
IgmpHostSm::dropGroup( Zornet::IpAddr const& group ) {
    if ( Ptr<IgmpV3HostGroupSm> const groupSm = aggregatedSenderSm_->v3GroupSm( group ) ) {
        groupSm->process();
    }
    v3GroupQueryTimerSmDel( group );
    v3GroupCallbackSmDel( group );
}

void
IgmpHostSm::replicateV3Group( Zornet::IpAddr group ) {
    if ( initialized_ && enabled_ ) {
        replicateGroupOver( igmpHost(), group );
    }
}

} // namespace Igmp
