#pragma once

#include "engine/ResponseTimerSm.h"
#include "platform/zornet/IpAddr.h"

namespace Igmp {

class IgmpHostSm;

/// The querier's interval that a host assumes until it has learned another, RFC 2236 section 8.2.
inline constexpr Seconds queryIntervalDefault = 125.0;

/// What a version 1 or 2 host holds for one group: the delayed answer to a query, the repeat of the report
/// that announced a join, the rhythm of periodic reports, whether it sent the last report for the group, and
/// whether it has joined.
class IgmpHostGroupTimerSm : public ResponseTimerSm {
  public:
    static Ptr<IgmpHostGroupTimerSm> IgmpHostGroupTimerSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
        Ptr<Lumo::TimerWheel const> const& timerWheel, IgmpHostSm* igmpHostSm
    );

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostGroupTimerSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Zornet::IpAddr const& fwkKey() const { return group_; }
    Zornet::IpAddr const& group() const { return group_; }
    /// The timer runs out a query interval after a foreign report; periodic reporting only.
    bool waitForQueryInterval() const { return waitForQueryInterval_; }
    Seconds queryInterval() const { return queryInterval_; }
    void queryIntervalIs( Seconds interval ) { queryInterval_ = interval; }
    /// This host sent the last report for the group that it knows of, so its leave matters (RFC 2236 section
    /// 3).
    bool lastReporter() const { return lastReporter_; }
    void lastReporterIs( bool value ) { lastReporter_ = value; }
    bool joined() const { return joined_; }
    void joinedIs( bool value ) { joined_ = value; }
    /// The owner, which outlives its timers.
    IgmpHostSm* igmpHostSm() const { return igmpHostSm_; }

    void handleInitialized();
    void doSetTimer( Seconds const& delay ) override;
    void handleResponseDelayTimer() override;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpHostGroupTimerSm(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
        Ptr<Lumo::TimerWheel const> const& timerWheel, IgmpHostSm* igmpHostSm
    );
    bool periodicInOldVersion() const;
    void scheduleResponse( Seconds delay, bool periodic );
    void cancelResponse( bool periodic );

    Zornet::IpAddr const group_;
    bool waitForQueryInterval_ = false;
    bool lastReporter_ = true;
    bool joined_ = false;
    Seconds queryInterval_ = queryIntervalDefault;
    IgmpHostSm* const igmpHostSm_;
};

} // namespace Igmp
