#include "engine/V3ReportTimerSm.h"

#include "engine/IgmpHostSm.h"
#include "engine/Trace.h"

namespace Igmp {

V3ReportTimerSm::V3ReportTimerSm(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
    Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
)
    : ResponseTimerSm( activity, timerWheel ),
      igmpHost_( igmpHost ),
      igmpHostStatus_( igmpHostStatus ),
      igmpHostSm_( igmpHostSm ) {}

bool
V3ReportTimerSm::mayTransmit() const {
    if ( igmpHost_->blocked() ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << igmpHost_->name() << " blocked.";
        return false;
    }
    if ( igmpHost_->direction() == Bridging::AllowedTrafficDirection::ingress ) {
        KIV_TRACE( igmpHostTrace, traceAction )
            << "IgmpHost " << igmpHost_->name() << " direction is ingress ";
        return false;
    }
    return true;
}

/// The host may be disabled, or be gone, when this returns.
bool
V3ReportTimerSm::transmit( Ptr<Zornet::Pkt> const& pkt, IgmpV3ReportProcessInfo const& reportInfo ) const {
    Ptr<Zornet::EthDevPam> const pam = igmpHostSm_->txPam();
    if ( !pam || reportInfo.numGroups() == 0 || !isVersion3() ) {
        return false;
    }
    pam->txPktIs( pkt );
    return true;
}

} // namespace Igmp
