#pragma once

#include "engine/IgmpV3HostGroupSm.h"
#include "engine/V3ReportTimerSm.h"

namespace Igmp {

/// The one timer of a host behind all its unsolicited version 3 reports. It owns the memory of every group
/// and, when it fires, packs what each one owes into a single packet; while periodic reporting runs, a group
/// that owes nothing adds its current state. A new setting always replaces the one before, also by a later
/// time.
class IgmpV3HostAggregatedSenderSm : public V3ReportTimerSm {
  public:
    using V3GroupSms = Kiv::HashMap<IgmpV3HostGroupSm, Zornet::IpAddr>;

    static Ptr<IgmpV3HostAggregatedSenderSm> IgmpV3HostAggregatedSenderSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
    );

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3HostAggregatedSenderSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    V3GroupSms const& v3GroupSm() const { return v3GroupSm_; }
    /// The group's machine, or null.
    Ptr<IgmpV3HostGroupSm> v3GroupSm( Zornet::IpAddr const& group ) const { return v3GroupSm_.find( group ); }
    std::size_t v3GroupSms() const { return v3GroupSm_.size(); }
    Ptr<IgmpV3HostGroupSm> newV3GroupSm(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost,
        Ptr<IgmpHostStatus> const& igmpHostStatus
    );
    Ptr<IgmpV3HostGroupSm> v3GroupSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group, Ptr<IgmpHost> const& igmpHost,
        Ptr<IgmpHostStatus> const& igmpHostStatus
    );
    void v3GroupSmDel( Zornet::IpAddr const& group ) { v3GroupSm_.remove( group ); }

    void handleInitialized();
    void doSetTimer( Seconds const& delay ) override;
    void handleResponseDelayTimer() override;

  protected:
    void forEachChild( Kiv::FunctionRef<void( StateMachine& )> visit ) override;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpV3HostAggregatedSenderSm(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Ptr<IgmpHost> const& igmpHost, Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
    );
    bool addGroupRecords( Ptr<Zornet::Pkt> const& pkt, Ptr<IgmpV3ReportProcessInfo> const& reportInfo );
    void schedule( bool wanted, bool stateChangeSeen );

    V3GroupSms v3GroupSm_;
};

} // namespace Igmp
