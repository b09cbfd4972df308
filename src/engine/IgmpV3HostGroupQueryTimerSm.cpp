#include "engine/IgmpV3HostGroupQueryTimerSm.h"

#include "engine/IgmpHostSm.h"
#include "engine/RandomDelay.h"
#include "engine/Trace.h"

namespace Igmp {

Ptr<IgmpV3HostGroupQueryTimerSm>
IgmpV3HostGroupQueryTimerSm::IgmpV3HostGroupQueryTimerSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
    Zornet::IpAddr const& mcastAddr, Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus,
    IgmpHostSm* igmpHostSm
) {
    return Kiv::stateMachineIs<IgmpV3HostGroupQueryTimerSm>(
        activity, timerWheel, mcastAddr, igmpHost, igmpHostStatus, igmpHostSm
    );
}

IgmpV3HostGroupQueryTimerSm::IgmpV3HostGroupQueryTimerSm(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
    Zornet::IpAddr const& mcastAddr, Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus,
    IgmpHostSm* igmpHostSm
)
    : V3ReportTimerSm( activity, timerWheel, igmpHost, igmpHostStatus, igmpHostSm ),
      mcastAddr_( mcastAddr ),
      queryInterval_( queryIntervalDefault ),
      source_( igmpV3HostGroupSourceListFactory() ) {
    handleResponseDelayTimer();
    handleInitialized();
}

void
IgmpV3HostGroupQueryTimerSm::handleInitialized() {
    initializedIs( true );
    groupRecord_ = igmpHost()->v3group( mcastAddr_ );
    doSetTimer( Kiv::never );
}

void
IgmpV3HostGroupQueryTimerSm::processGroupQuerySources( Zornet::IgmpV3QueryHdr const* igmpV3Hdr, U32 size ) {
    Kiv::invariant( igmpV3Hdr != nullptr, "igmpV3Hdr != __null" );
    U16 const numSources = igmpV3Hdr->numSources();
    Kiv::invariant(
        numSources * sizeof( U32 ) + sizeof( Zornet::IgmpV3QueryHdr ) == size,
        "numSources * sizeof( U32 ) + sizeof ( Zornet::IgmpV3QueryHdr ) == size"
    );
    if ( numSources == 0 ) {
        source_->sourceIpDelAll();
        igmpHostStatus()->v3GroupQueryReceivedInc( 1 );
        return;
    }
    igmpHostStatus()->v3GroupSourceQueryReceivedInc( 1 );
    for ( U16 i = 0; i < numSources; ++i ) {
        Zornet::IpAddr const source = igmpV3Hdr->source( i );
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Goup Query on source " << source;
        if ( source_->sourceIp( source ) == 0 ) {
            source_->sourceIpIs( source, 1 );
            KIV_TRACE( igmpHostTrace, traceDetail ) << "Adding " << source << " on group source list";
        }
    }
}

void
IgmpV3HostGroupQueryTimerSm::doSetTimer( Seconds const& delay ) {
    if ( Kiv::isFinite( delay ) ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Setting timer to expire in " << delay;
    }
    plainTimerIs( delay );
}

void
IgmpV3HostGroupQueryTimerSm::handleResponseDelayTimer() {
    if ( !initialized() || !mayTransmit() || !isVersion3() ) {
        return;
    }
    Ptr<IgmpV3ReportProcessInfo> const reportInfo = IgmpV3ReportProcessInfo::IgmpV3ReportProcessInfoIs();
    Ptr<Zornet::Pkt> const pkt = openReportPkt( *igmpHostSm() );
    bool const maySend = answer( pkt, reportInfo );
    closeReportPkt( *igmpHostSm(), pkt, *reportInfo );
    if ( maySend && transmit( pkt, *reportInfo ) ) {
        igmpHostStatus()->v3CurrentStateReportSentInc( 1 );
    }
    doSetTimer( Kiv::never );
}

/// Writes the answer's record. What does not fit is lost. Returns false where none of the sources asked about
/// is wanted.
bool
IgmpV3HostGroupQueryTimerSm::answer(
    Ptr<Zornet::Pkt> const& pkt, Ptr<IgmpV3ReportProcessInfo> const& reportInfo
) {
    if ( source_->sourceIps() == 0 ) {
        populateGroupRecord( groupRecord_, pkt, reportInfo, igmpHost() );
        return true;
    }
    keepWantedSources();
    if ( source_->sourceIps() == 0 ) {
        return false;
    }
    auto const type = static_cast<U8>( Zornet::IgmpV3GroupRecordType::MODE_IS_INCLUDE );
    fillV3ReportGroupRecord( pkt, type, mcastAddr_, source_, reportInfo, igmpHost() );
    source_->sourceIpDelAll();
    return true;
}

/// Of the sources asked about, keeps those that the record lets through (RFC 3376 section 5.2).
void
IgmpV3HostGroupQueryTimerSm::keepWantedSources() {
    for ( auto source = source_->sourceIp().begin(); source; ++source ) {
        bool const present =
            groupRecord_ && groupRecord_->source() && groupRecord_->source()->sourceIp( source->key ) != 0;
        auto const mode = groupRecord_->filterMode();
        if ( ( !present && mode == IgmpV3GroupRecord::include ) ||
             ( present && mode == IgmpV3GroupRecord::exclude ) ) {
            source_->sourceIpDel( source );
        }
    }
}

namespace {

/// Of all answers that a timer may be asked for, the earliest stands; a tie leaves the running one.
bool
earlierAnswerPending( ResponseTimerSm const& timer, Seconds delay ) {
    return timer.responseDelayTimerState() == timerRunning &&
           ( !Kiv::isFinite( timer.responseDelayRemaining() ) || delay >= timer.responseDelayRemaining() );
}

Seconds
intervalOrDefault( Seconds queryInterval ) {
    return queryInterval > 0.0 ? queryInterval : queryIntervalDefault;
}

} // namespace

void
maybeStartGroupTimerV3( IgmpHostSm* sm, Zornet::IpAddr group, U32 mrt, Seconds queryInterval ) {
    if ( mrt == 0 ) {
        mrt = sm->igmpHost()->v1MaxResponseTime();
    }
    Seconds const delay = randomDelay( mrt );
    if ( group.isZero() ) {
        Ptr<IgmpV3HostGeneralQueryTimerSm> const timer = sm->igmpV3HostGeneralQueryTimerSm();
        if ( earlierAnswerPending( *timer, delay ) ) {
            return;
        }
        timer->queryReportInfo()->resetValues();
        timer->queryReportInfo()->responseDelayRemainingIs( delay );
        timer->queryIntervalIs( intervalOrDefault( queryInterval ) );
        timer->doSetTimer( delay );
    } else if ( Ptr<IgmpV3HostGroupQueryTimerSm> const timer = sm->v3GroupQueryTimerSm( group ) ) {
        if ( earlierAnswerPending( *timer, delay ) ) {
            return;
        }
        timer->queryIntervalIs( intervalOrDefault( queryInterval ) );
        timer->doSetTimer( delay );
    }
    KIV_TRACE( igmpHostTrace, traceAction )
        << "IgmpHost " << sm->name() << " start timer for group " << group << " delay " << delay << " sec ";
}

} // namespace Igmp
