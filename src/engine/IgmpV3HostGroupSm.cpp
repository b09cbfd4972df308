#include "engine/IgmpV3HostGroupSm.h"

#include "engine/IgmpV3HostAggregatedSenderSm.h"
#include "engine/Trace.h"

namespace Igmp {

Ptr<IgmpV3HostGroupSm>
IgmpV3HostGroupSm::IgmpV3HostGroupSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost,
    Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpV3HostAggregatedSenderSm* aggregatedSenderSm
) {
    return Kiv::stateMachineIs<IgmpV3HostGroupSm>(
        activity, group, igmpHost, igmpHostStatus, aggregatedSenderSm
    );
}

Ptr<IgmpV3HostGroupSm>
igmpV3HostGroupSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost
) {
    return IgmpV3HostGroupSm::IgmpV3HostGroupSmIs( activity, group, igmpHost, nullptr, nullptr );
}

IgmpV3HostGroupSm::IgmpV3HostGroupSm(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost,
    Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpV3HostAggregatedSenderSm* aggregatedSenderSm
)
    : StateMachine( activity ),
      group_( group ),
      igmpHost_( igmpHost ),
      igmpHostStatus_( igmpHostStatus ),
      aggregatedSenderSm_( aggregatedSenderSm ) {
    handleInitialized();
}

void
IgmpV3HostGroupSm::handleInitialized() {
    addedSourceTransCount_ = igmpV3HostGroupSourceListFactory();
    deletedSourceTransCount_ = igmpV3HostGroupSourceListFactory();
    static Kiv::Name const currentName( "curr_group_rec" );
    static Kiv::Name const leaveName( "group_rec_on_leave" );
    currGroupRecord_ = igmpV3GroupRecordFactory( currentName, group_ );
    currGroupRecord_->sourceIs();
    hostSm_ = aggregatedSenderSm_ ? aggregatedSenderSm_->igmpHostSm() : nullptr;
    groupRecordOnLeave_ = igmpV3GroupRecordFactory( leaveName, group_ );
    groupRecordOnLeave_->versionIs( 1 );
    initialized_ = true;
}

Ptr<IgmpV3GroupRecord>
IgmpV3HostGroupSm::wantedRecord() const {
    Ptr<IgmpV3GroupRecord> const configured = igmpHost_->v3group( group_ );
    return configured ? configured : groupRecordOnLeave_;
}

void
IgmpV3HostGroupSm::process() {
    if ( !initialized_ ) {
        return;
    }
    Ptr<IgmpV3GroupRecord> const wanted = wantedRecord();
    if ( wanted->version() == 0 ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Group Record version is 0. Skip Processing.";
        return;
    }
    if ( wanted->filterMode() != currGroupRecord_->filterMode() ) {
        adoptFilterMode( *wanted );
    } else {
        adoptAddedSources( *wanted );
        adoptDeletedSources( *wanted );
    }
    noteOwing();
}

void
IgmpV3HostGroupSm::filterModeTransCountIs( U32 count ) {
    filterModeTransCount_ = count;
    noteOwing();
}

void
IgmpV3HostGroupSm::noteOwing() {
    if ( aggregatedSenderSm_ ) {
        aggregatedSenderSm_->noteOwing( *this );
    }
}

/// A change of mode is counted under every version, on purpose: it waits until the host is back on version 3.
void
IgmpV3HostGroupSm::adoptFilterMode( IgmpV3GroupRecord const& wanted ) {
    KIV_TRACE( igmpHostTrace, traceDetail ) << "filterModeChange to " << wanted.filterMode();
    filterModeTransCount_ = igmpHost_->robustness();
    addedSourceTransCount_->sourceIpDelAll();
    deletedSourceTransCount_->sourceIpDelAll();
    currGroupRecord_->filterModeIs( wanted.filterMode() );
    currGroupRecord_->source()->sourceIpDelAll();
    if ( wanted.source() ) {
        for ( auto const& source : wanted.source()->sourceIp() ) {
            currGroupRecord_->source()->sourceIpIs( source.key, 1 );
        }
    }
}

void
IgmpV3HostGroupSm::adoptAddedSources( IgmpV3GroupRecord const& wanted ) {
    if ( !wanted.source() ) {
        return;
    }
    Ptr<IgmpV3HostGroupSourceList> const& current = currGroupRecord_->source();
    for ( auto const& source : wanted.source()->sourceIp() ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "groupRecord has source: " << source.key;
        if ( current->sourceIp( source.key ) == 1 ) {
            continue;
        }
        KIV_TRACE( igmpHostTrace, traceDetail )
            << " add to added list IGMP version ="
            << ( igmpHostStatus_ ? igmpHostStatus_->igmpVersion() : igmpVersionUnknown );
        current->sourceIpIs( source.key, 1 );
        if ( isVersion3() ) {
            KIV_TRACE( igmpHostTrace, traceDetail ) << "Processing source since igmp version is 3";
            addedSourceTransCount_->sourceIpIs( source.key, static_cast<U8>( igmpHost_->robustness() ) );
            deletedSourceTransCount_->sourceIpDel( source.key );
        }
    }
}

void
IgmpV3HostGroupSm::adoptDeletedSources( IgmpV3GroupRecord const& wanted ) {
    Ptr<IgmpV3HostGroupSourceList> const& current = currGroupRecord_->source();
    for ( auto source = current->sourceIp().begin(); source; ++source ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "currGroupRecord has source: " << source->key;
        if ( wanted.source() && wanted.source()->sourceIp( source->key ) == 1 ) {
            continue;
        }
        KIV_TRACE( igmpHostTrace, traceDetail ) << " add to deleted list";
        current->sourceIpDel( source );
        if ( isVersion3() ) {
            deletedSourceTransCount_->sourceIpIs( source->key, static_cast<U8>( igmpHost_->robustness() ) );
            addedSourceTransCount_->sourceIpDel( source->key );
        }
    }
}

bool
IgmpV3HostGroupSm::isVersion3() const {
    return igmpHostStatus_ && igmpHostStatus_->igmpVersion() == igmpVersion3;
}

bool
IgmpV3HostGroupSm::reportsGoOn() const {
    return igmpHostStatus_ && igmpHostStatus_->continueUnsolicitedReport();
}

bool
IgmpV3HostGroupSm::isStateChanged() const {
    return addedSourceTransCount_->sourceIps() != 0 || deletedSourceTransCount_->sourceIps() != 0 ||
           filterModeTransCount_ != 0;
}

bool
IgmpV3HostGroupSm::isOwing() const {
    return isStateChanged() || !igmpHost_->v3group( group_ );
}

} // namespace Igmp
