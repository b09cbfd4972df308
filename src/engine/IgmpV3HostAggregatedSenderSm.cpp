#include "engine/IgmpV3HostAggregatedSenderSm.h"

#include "engine/IgmpHostSm.h"
#include "engine/RandomDelay.h"
#include "engine/Reinstantiation.h"
#include "engine/Trace.h"

namespace Igmp {

Ptr<IgmpV3HostAggregatedSenderSm>
IgmpV3HostAggregatedSenderSm::IgmpV3HostAggregatedSenderSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
    Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
) {
    return Kiv::stateMachineIs<IgmpV3HostAggregatedSenderSm>(
        activity, timerWheel, igmpHost, igmpHostStatus, igmpHostSm
    );
}

IgmpV3HostAggregatedSenderSm::IgmpV3HostAggregatedSenderSm(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
    Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
)
    : V3ReportTimerSm( activity, timerWheel, igmpHost, igmpHostStatus, igmpHostSm ) {
    handleResponseDelayTimer();
    handleInitialized();
}

void
IgmpV3HostAggregatedSenderSm::handleInitialized() {
    initializedIs( true );
    KIV_TRACE( igmpHostTrace, traceDetail ) << " host " << igmpHost()->name();
    doSetTimer( Kiv::never );
}

void
IgmpV3HostAggregatedSenderSm::forEachChild( Kiv::FunctionRef<void( StateMachine& )> visit ) {
    for ( IgmpV3HostGroupSm& groupSm : v3GroupSm_ ) {
        visit( groupSm );
    }
}

Ptr<IgmpV3HostGroupSm>
IgmpV3HostAggregatedSenderSm::newV3GroupSm(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& host,
    Ptr<IgmpHostStatus> const& status
) {
    Ptr<IgmpV3HostGroupSm> const groupSm =
        IgmpV3HostGroupSm::IgmpV3HostGroupSmIs( activity, group, host, status, this );
    v3GroupSm_.insert( groupSm );
    if ( !igmpHost()->v3group( group ) ) {
        groupSm->leaveNotedIs( true );
        noteOwing( *groupSm );
    }
    return groupSm;
}

Ptr<IgmpV3HostGroupSm>
IgmpV3HostAggregatedSenderSm::v3GroupSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& host,
    Ptr<IgmpHostStatus> const& status
) {
    Ptr<IgmpV3HostGroupSm> const present = v3GroupSm( group );
    if ( !present ) {
        return newV3GroupSm( activity, group, host, status );
    }
    checkSameParameter( "igmpHost", host.get(), present->igmpHost().get() );
    checkSameParameter( "igmpHostStatus", status.get(), present->igmpHostStatus().get() );
    return present;
}

/// No sender records the expired state; the guard against it is kept.
void
IgmpV3HostAggregatedSenderSm::doSetTimer( Seconds const& delay ) {
    if ( responseDelayTimerState() == timerExpired ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "Aggregated timer not in the correct state, returning";
        return;
    }
    KIV_TRACE( igmpHostTrace, traceDetail ) << "Setting timer to expire in " << delay;
    plainTimerIs( delay );
}

void
IgmpV3HostAggregatedSenderSm::handleResponseDelayTimer() {
    if ( !initialized() || !mayTransmit() ) {
        return;
    }
    if ( !isVersion3() ) {
        if ( igmpHost()->enablePeriodicReport() ) {
            doSetTimer( igmpHost()->unsolicitedReportInterval() );
        }
        return;
    }
    KIV_TRACE( igmpHostTrace, traceAction )
        << "AggregatedSenderSm for " << igmpHost()->name() << " response delay timer expired";
    Ptr<IgmpV3ReportProcessInfo> const reportInfo = IgmpV3ReportProcessInfo::IgmpV3ReportProcessInfoIs();
    Ptr<Zornet::Pkt> const pkt = openReportPkt( *igmpHostSm() );
    bool const stateChangeSeen = addGroupRecords( pkt, reportInfo );
    closeReportPkt( *igmpHostSm(), pkt, *reportInfo );
    if ( transmit( pkt, *reportInfo ) ) {
        if ( stateChangeSeen ) {
            igmpHostStatus()->v3StateChangeReportSentInc( 1 );
        } else {
            igmpHostStatus()->v3CurrentStateReportSentInc( 1 );
        }
    }
    schedule( reportInfo->scheduleTimer(), stateChangeSeen );
}

/// Lets each group that may owe something add it until one does not fit. Returns whether a group still owes
/// something afterwards, so the last report of a change counts as one of the current state: on purpose.
bool
IgmpV3HostAggregatedSenderSm::addGroupRecords(
    Ptr<Zornet::Pkt> const& pkt, Ptr<IgmpV3ReportProcessInfo> const& reportInfo
) {
    if ( !knowsOwing() ) {
        collectOwing();
    }
    bool stateChangeSeen = false;
    Zornet::IpAddr lastAsked;
    for ( auto at = firstAsked(); at; at = askedAfter( at ) ) {
        lastAsked = at->group();
        at->doGroupRecordPktConstruct( pkt, reportInfo );
        stateChangeSeen = stateChangeSeen || ( at->isStateChanged() && v3GroupSm( at->group() ) );
        if ( !reportInfo->recordComplete() ) {
            break;
        }
    }
    settleOwing( lastAsked );
    return stateChangeSeen;
}

void
IgmpV3HostAggregatedSenderSm::schedule( bool wanted, bool stateChangeSeen ) {
    if ( !wanted ) {
        doSetTimer( Kiv::never );
        return;
    }
    Seconds const interval = igmpHostStatus()->unsolicitedReportInterval();
    Seconds const delay = stateChangeSeen ? randomDelay( interval ) : interval;
    KIV_TRACE( igmpHostTrace, traceDetail ) << "aggregated timer schedule a delay " << delay << " sec ";
    doSetTimer( delay );
}

} // namespace Igmp
