#include "engine/IgmpV3HostGeneralQueryTimerSm.h"

#include "engine/IgmpHostSm.h"
#include "engine/RandomDelay.h"
#include "engine/Trace.h"
#include "platform/kiv/Clock.h"

namespace Igmp {

Ptr<IgmpV3HostGeneralQueryTimerSm>
IgmpV3HostGeneralQueryTimerSm::IgmpV3HostGeneralQueryTimerSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
    Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
) {
    return Kiv::stateMachineIs<IgmpV3HostGeneralQueryTimerSm>(
        activity, timerWheel, igmpHost, igmpHostStatus, igmpHostSm
    );
}

IgmpV3HostGeneralQueryTimerSm::IgmpV3HostGeneralQueryTimerSm(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
    Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
)
    : V3ReportTimerSm( activity, timerWheel, igmpHost, igmpHostStatus, igmpHostSm ),
      queryInterval_( queryIntervalDefault ) {
    handleResponseDelayTimer();
    handleInitialized();
}

void
IgmpV3HostGeneralQueryTimerSm::handleInitialized() {
    initializedIs( true );
    queryReportInfo_ = IgmpV3ReportProcessInfo::IgmpV3ReportProcessInfoIs();
    doSetTimer( Kiv::never );
}

void
IgmpV3HostGeneralQueryTimerSm::doSetTimer( Seconds const& delay ) {
    if ( Kiv::isFinite( delay ) ) {
        scheduleResponse( delay );
    } else {
        endResponse();
    }
}

void
IgmpV3HostGeneralQueryTimerSm::scheduleResponse( Seconds delay ) {
    Seconds const deadline = Kiv::now() + delay;
    if ( igmpHostStatus()->enablePeriodicReport() && isVersion3() ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Disabling unsolicited report generation";
        waitForQueryInterval_ = false;
        igmpHostStatus()->continueUnsolicitedReportIs( false );
    }
    KIV_TRACE( igmpHostTrace, traceDetail ) << "Setting timer to expire at " << deadline;
    timerIs( deadline, timerRunning );
}

/// The answer has ended. With periodic reporting a wait of one query interval begins, and at its end the
/// reports go on.
void
IgmpV3HostGeneralQueryTimerSm::endResponse() {
    bool const periodic = igmpHostStatus()->enablePeriodicReport();
    if ( !waitForQueryInterval_ && periodic && isVersion3() ) {
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Setting timer for " << queryInterval_ << " seconds.";
        waitForQueryInterval_ = true;
        timerIs( Kiv::now() + queryInterval_, timerRunning );
        return;
    }
    if ( isVersion3() ) {
        waitForQueryInterval_ = false;
        if ( periodic ) {
            KIV_TRACE( igmpHostTrace, traceDetail ) << "Enabling unsolicited report generation";
            igmpHostStatus()->continueUnsolicitedReportIs( true );
        }
    }
    timerIs( Kiv::never, timerDisabled );
}

void
IgmpV3HostGeneralQueryTimerSm::handleResponseDelayTimer() {
    if ( !initialized() || !mayTransmit() || !isVersion3() ) {
        return;
    }
    if ( waitForQueryInterval_ ) {
        doSetTimer( Kiv::never );
        return;
    }
    Ptr<Zornet::Pkt> const pkt = openReportPkt( *igmpHostSm() );
    addGroupRecords( pkt );
    KIV_TRACE( igmpHostTrace, traceAction ) << "General Query report from " << igmpHost()->ipAddr()
                                            << " with " << queryReportInfo_->numGroups() << " groups";
    closeReportPkt( *igmpHostSm(), pkt, *queryReportInfo_ );
    if ( transmit( pkt, *queryReportInfo_ ) ) {
        igmpHostStatus()->v3CurrentStateReportSentInc( 1 );
    }
    if ( queryReportInfo_->useBookMark() ) {
        scheduleNextPacket();
    } else {
        doSetTimer( Kiv::never );
    }
}

/// Goes on where the last packet stopped. A group whose record did not fit whole begins the next packet from
/// its first source, so what went out of it is repeated: on purpose.
void
IgmpV3HostGeneralQueryTimerSm::addGroupRecords( Ptr<Zornet::Pkt> const& pkt ) {
    IgmpV3ReportProcessInfo& info = *queryReportInfo_;
    auto const& groups = igmpHost()->v3group();
    auto at = info.useBookMark() ? groups.startAtHash( info.bookMarkSourceIp() ) : groups.begin();
    info.resetValues();
    for ( ; at; ++at ) {
        populateGroupRecord( at.ptr(), pkt, queryReportInfo_, igmpHost() );
        if ( !info.recordComplete() ) {
            info.useBookMarkIs( true );
            info.bookMarkSourceIpIs( at->multicastAddr() );
            break;
        }
    }
}

/// A packet of which not even one record header is true to the MTU leaves nothing to divide by.
void
IgmpV3HostGeneralQueryTimerSm::scheduleNextPacket() {
    Kiv::invariant( queryReportInfo_->numGroups() > 0, "queryReportInfo()->numGroups() > 0" );
    auto const count = static_cast<U32>( igmpHost()->v3groups() );
    U32 const divisor = count / queryReportInfo_->numGroups() + 2;
    Seconds const remaining = queryReportInfo_->responseDelayRemaining();
    Seconds const delay = randomDelay( remaining / divisor );
    queryReportInfo_->responseDelayRemainingIs( remaining - delay );
    KIV_TRACE( igmpHostTrace, traceDetail ) << "General query schedule a delay " << delay << " sec ";
    doSetTimer( delay );
}

} // namespace Igmp
