#pragma once

#include "engine/ResponseTimerSm.h"
#include "engine/V3Report.h"
#include "model/IgmpHostStatus.h"

namespace Igmp {

/// What the three senders of version 3 reports share beside the timer idiom: whose host they report for,
/// whether that host may transmit, and the hand-over of a finished packet.
class V3ReportTimerSm : public ResponseTimerSm {
  public:
    Ptr<IgmpHost> const& igmpHost() const { return igmpHost_; }
    Ptr<IgmpHostStatus> const& igmpHostStatus() const { return igmpHostStatus_; }
    /// The owner, which outlives its senders.
    IgmpHostSm* igmpHostSm() const { return igmpHostSm_; }

  protected:
    V3ReportTimerSm(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
    );

    bool isVersion3() const { return igmpHostStatus_->igmpVersion() == igmpVersion3; }
    /// False, with a trace, for a host that is blocked or ingress-only. The firing is then dropped and
    /// nothing rearms.
    bool mayTransmit() const;
    /// Hands the packet to the wire, if there is one and the packet holds a record. Returns whether it did.
    bool transmit( Ptr<Zornet::Pkt> const& pkt, IgmpV3ReportProcessInfo const& reportInfo ) const;

  private:
    Ptr<IgmpHost> const igmpHost_;
    Ptr<IgmpHostStatus> const igmpHostStatus_;
    IgmpHostSm* const igmpHostSm_;
};

} // namespace Igmp
