#pragma once

#include "engine/V3ReportTimerSm.h"
#include "platform/zornet/IgmpV3QueryHdr.h"

namespace Igmp {

/// A host's answer to version 3 queries for one group, or for sources of it: one packet with one record. The
/// sources asked about add up until the timer fires; a query for the whole group clears them.
class IgmpV3HostGroupQueryTimerSm : public V3ReportTimerSm {
  public:
    static Ptr<IgmpV3HostGroupQueryTimerSm> IgmpV3HostGroupQueryTimerSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Zornet::IpAddr const& mcastAddr, Ptr<IgmpHost> const& igmpHost,
        Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
    );

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3HostGroupQueryTimerSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Zornet::IpAddr const& fwkKey() const { return mcastAddr_; }
    Zornet::IpAddr const& mcastAddr() const { return mcastAddr_; }
    /// Declared; nothing in this class changes it.
    bool waitForQueryInterval() const { return waitForQueryInterval_; }
    void waitForQueryIntervalIs( bool value ) { waitForQueryInterval_ = value; }
    /// Learned from queries; nothing in this class uses it.
    Seconds queryInterval() const { return queryInterval_; }
    void queryIntervalIs( Seconds interval ) { queryInterval_ = interval; }
    /// The configuration's record of the group as it stood when the machine was made, or null.
    Ptr<IgmpV3GroupRecord> const& groupRecord() const { return groupRecord_; }
    /// The sources asked about by queries not yet answered.
    Ptr<IgmpV3HostGroupSourceList> const& source() const { return source_; }

    void handleInitialized();
    /// Takes the sources of a query of `size` bytes.
    void processGroupQuerySources( Zornet::IgmpV3QueryHdr const* igmpV3Hdr, U32 size );
    void doSetTimer( Seconds const& delay ) override;
    void handleResponseDelayTimer() override;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpV3HostGroupQueryTimerSm(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Zornet::IpAddr const& mcastAddr, Ptr<IgmpHost> const& igmpHost,
        Ptr<IgmpHostStatus> const& igmpHostStatus, IgmpHostSm* igmpHostSm
    );
    bool answer( Ptr<Zornet::Pkt> const& pkt, Ptr<IgmpV3ReportProcessInfo> const& reportInfo );
    void keepWantedSources();

    Zornet::IpAddr const mcastAddr_;
    bool waitForQueryInterval_ = false;
    Seconds queryInterval_;
    Ptr<IgmpV3GroupRecord> groupRecord_;
    Ptr<IgmpV3HostGroupSourceList> const source_;
};

/// Starts the answer to a query at a version 3 host, for the general query (group 0.0.0.0) or for one group,
/// unless an earlier answer is pending. `mrt` is in whole seconds; 0 takes the host's v1MaxResponseTime, in
/// whole seconds too.
void maybeStartGroupTimerV3( IgmpHostSm* sm, Zornet::IpAddr group, U32 mrt, Seconds queryInterval );

} // namespace Igmp
