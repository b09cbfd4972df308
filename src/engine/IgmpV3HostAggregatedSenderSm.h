#pragma once

#include <vector>

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

    /// Where the groups that the next report asks stand in its walk; those at the end are not in order yet.
    std::vector<Kiv::WalkPlace<Zornet::IpAddr>> const& owing() const { return owing_; }
    /// False where the next report looks through all groups first for those that owe something.
    bool knowsOwing() const;
    /// Takes note of a group that has come to owe something, if it has.
    void noteOwing( IgmpV3HostGroupSm& groupSm );
    /// Takes note of a change of the configuration that has added or removed this group, if one has.
    void noteConfigured( Zornet::IpAddr const& group );

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
    bool asksEveryGroup() const;
    V3GroupSms::Iterator firstAsked();
    V3GroupSms::Iterator askedAfter( V3GroupSms::Iterator at );
    void collectOwing();
    void addOwing( IgmpV3HostGroupSm& groupSm );
    void sortOwing();
    void settleOwing( Zornet::IpAddr const& lastAsked );
    void configurationSeen();

    V3GroupSms v3GroupSm_;
    /// Every group that a report has something to do with (a record to write, a later report to ask for, a
    /// machine to drop) stands here, unless knowsOwing() is false; periodic reports apart, which ask every
    /// group. A group may stand here that owes nothing any more: to ask it does nothing.
    std::vector<Kiv::WalkPlace<Zornet::IpAddr>> owing_;
    std::size_t owingInOrder_ = 0; ///< so many stand in order, and behind them those that came since
    /// Groups have come to owe something under version 1 or 2, where no report asks them. There may be many,
    /// for as long as the host lives, so they are not collected.
    bool owesFromFallback_ = false;
    /// The configuration as of which owing_ holds every group that has gone, and a machine without
    /// leaveNoted() has its group there.
    U32 seenGeneration_ = 0;
    std::size_t seenGroups_ = 0;
};

} // namespace Igmp
