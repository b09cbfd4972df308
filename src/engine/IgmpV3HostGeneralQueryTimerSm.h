#pragma once

#include "engine/V3ReportTimerSm.h"

namespace Igmp {

/// A host's answer to version 3 general queries: the state of all its groups, in as many packets as they
/// need. The further packets together take less time than the delay before the first. With periodic reporting
/// it stops the unsolicited reports while a querier is heard and lets them go on one query interval after the
/// last answer.
class IgmpV3HostGeneralQueryTimerSm : public V3ReportTimerSm {
  public:
    static Ptr<IgmpV3HostGeneralQueryTimerSm> IgmpV3HostGeneralQueryTimerSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
    );

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3HostGeneralQueryTimerSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    /// The timer runs out a query interval, not a response.
    bool waitForQueryInterval() const { return waitForQueryInterval_; }
    /// The querier's interval as last learned.
    Seconds queryInterval() const { return queryInterval_; }
    void queryIntervalIs( Seconds interval ) { queryInterval_ = interval; }
    /// The state of the chain of reports that answers one query.
    Ptr<IgmpV3ReportProcessInfo> const& queryReportInfo() const { return queryReportInfo_; }

    void handleInitialized();
    void doSetTimer( Seconds const& delay ) override;
    void handleResponseDelayTimer() override;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpV3HostGeneralQueryTimerSm(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
    );
    void scheduleResponse( Seconds delay );
    void endResponse();
    void addGroupRecords( Ptr<Zornet::Pkt> const& pkt );
    void scheduleNextPacket();

    bool waitForQueryInterval_ = false;
    Seconds queryInterval_;
    Ptr<IgmpV3ReportProcessInfo> queryReportInfo_;
};

} // namespace Igmp
