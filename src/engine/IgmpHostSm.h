#pragma once

#include "engine/IgmpHostGroupTimerSm.h"
#include "engine/IgmpV3GroupCallbackSm.h"
#include "engine/IgmpV3HostAggregatedSenderSm.h"
#include "engine/IgmpV3HostGeneralQueryTimerSm.h"
#include "engine/IgmpV3HostGroupQueryTimerSm.h"
#include "engine/ReportSending.h"
#include "model/IgmpHost.h"
#include "model/IgmpHostStatusDir.h"
#include "platform/zornet/EthDevPam.h"
#include "vlan/VlanTaggingPam.h"

namespace Igmp {

class IgmpHostDirSm;

/// The state machine of one emulated host. It watches the host's configuration, its status, its receive side
/// and two timers; it owns every companion of the host (group timers, version 3 sender, query timers, group
/// callbacks) and its ready-made packets. The companions and the status exist exactly while the host is
/// enabled. Its operations stand by concern in the folder engine/host.
class IgmpHostSm : public Kiv::StateMachine, public Kiv::HashMember {
  public:
    class KivIgmpHost;
    class KivIgmpHostStatus;
    class KivRxPam;
    class KivV1RouterPresentTimer;
    class KivV2RouterPresentTimer;
    using GroupTimerSms = Kiv::HashMap<IgmpHostGroupTimerSm, Zornet::IpAddr>;
    using V3GroupQueryTimerSms = Kiv::HashMap<IgmpV3HostGroupQueryTimerSm, Zornet::IpAddr>;
    using V3GroupCallbackSms = Kiv::HashMap<IgmpV3GroupCallbackSm, Zornet::IpAddr>;

    static Ptr<IgmpHostSm> IgmpHostSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
        Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir,
        IgmpHostDirSm* dirSm
    );
    ~IgmpHostSm() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    // What the machine holds.
    Kiv::Name const& fwkKey() const { return name_; }
    Kiv::Name const& name() const { return name_; }
    /// The configuration. A machine without one ends the process here.
    IgmpHost* igmpHost() const;
    /// The status; null while the host is disabled.
    IgmpHostStatus* igmpHostStatus() const;
    /// Where packets are read, or null.
    Zornet::Pam* rxPam() const;
    /// Where packets are sent, or null.
    Ptr<Zornet::EthDevPam> const& txPam() const { return txPam_; }
    /// The present binding holds a reference on the multiplexer of useMuxIntfId().
    bool useMux() const { return useMux_; }
    Zornet::IntfId const& useMuxIntfId() const { return useMuxIntfId_; }
    Ptr<Lumo::TimerWheel const> const& timerWheel() const { return timerWheel_; }
    Ptr<IgmpHostStatusDir> const& igmpHostStatusDir() const { return igmpHostStatusDir_; }
    IgmpHostDirSm* igmpHostDirSm() const { return igmpHostDirSm_; }
    /// The enable sequence has run to its end; the host's own `enabled` is only the wish.
    bool enabled() const { return enabled_; }
    bool initialized() const { return initialized_; }
    Lumo::TimerWheel::NotifieeConst* v1RouterPresentTimer() const;
    Lumo::TimerWheel::NotifieeConst* v2RouterPresentTimer() const;

    // Companions. The get-or-make forms raise NameInUseException where a present one was made with other
    // parameters.
    GroupTimerSms const& groupTimerSm() const { return groupTimerSm_; }
    Ptr<IgmpHostGroupTimerSm> groupTimerSm( Zornet::IpAddr const& group ) const {
        return groupTimerSm_.find( group );
    }
    Ptr<IgmpHostGroupTimerSm> newGroupTimerSm(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
        Ptr<Lumo::TimerWheel const> const& timerWheel
    );
    Ptr<IgmpHostGroupTimerSm> groupTimerSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
        Ptr<Lumo::TimerWheel const> const& timerWheel
    );
    void groupTimerSmDel( Zornet::IpAddr const& group ) { groupTimerSm_.remove( group ); }
    void groupTimerSmDelAll() { groupTimerSm_.clear(); }

    Ptr<IgmpV3HostAggregatedSenderSm> const& aggregatedSenderSm() const { return aggregatedSenderSm_; }
    Ptr<IgmpV3HostAggregatedSenderSm> aggregatedSenderSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Ptr<IgmpHost> const& host, Ptr<IgmpHostStatus> const& status
    );
    void aggregatedSenderSmDel() { aggregatedSenderSm_ = nullptr; }

    Ptr<IgmpV3HostGeneralQueryTimerSm> const& igmpV3HostGeneralQueryTimerSm() const {
        return igmpV3HostGeneralQueryTimerSm_;
    }
    Ptr<IgmpV3HostGeneralQueryTimerSm> igmpV3HostGeneralQueryTimerSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Ptr<IgmpHost> const& host, Ptr<IgmpHostStatus> const& status
    );
    void igmpV3HostGeneralQueryTimerSmDel() { igmpV3HostGeneralQueryTimerSm_ = nullptr; }

    V3GroupQueryTimerSms const& v3GroupQueryTimerSm() const { return v3GroupQueryTimerSm_; }
    Ptr<IgmpV3HostGroupQueryTimerSm> v3GroupQueryTimerSm( Zornet::IpAddr const& group ) const {
        return v3GroupQueryTimerSm_.find( group );
    }
    Ptr<IgmpV3HostGroupQueryTimerSm> v3GroupQueryTimerSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& timerWheel,
        Zornet::IpAddr const& group, Ptr<IgmpHost> const& host, Ptr<IgmpHostStatus> const& status
    );
    void v3GroupQueryTimerSmDel( Zornet::IpAddr const& group );
    void v3GroupQueryTimerSmDelAll();

    V3GroupCallbackSms const& v3GroupCallbackSm() const { return v3GroupCallbackSm_; }
    Ptr<IgmpV3GroupCallbackSm> v3GroupCallbackSm( Zornet::IpAddr const& group ) const {
        return v3GroupCallbackSm_.find( group );
    }
    Ptr<IgmpV3GroupCallbackSm> v3GroupCallbackSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
        Ptr<IgmpV3GroupRecord> const& record
    );
    void v3GroupCallbackSmDel( Zornet::IpAddr const& group ) { v3GroupCallbackSm_.remove( group ); }
    void v3GroupCallbackSmDelAll() { v3GroupCallbackSm_.clear(); }

    // Packet templates and where their headers lie, in bytes from the frame's start.
    U32 mtu() const { return mtu_; }
    Ptr<Zornet::Pkt> const& v3ReportPkt() const { return v3ReportPkt_; }
    Ptr<Zornet::Pkt> const& v2ReportPkt() const { return v2ReportPkt_; }
    U16 offsetEtherHeader() const { return offsetEtherHeader_; }
    U16 offsetIpHeader() const { return offsetIpHeader_; }
    U16 offsetIgmpReportHeader() const { return offsetIgmpReportHeader_; }
    U16 offsetIgmpGroupRecStart() const { return offsetIgmpGroupRecStart_; }

    // Life: lifecycle.cpp.
    void handleInitialized();
    void handleEnabled();
    void handleEnabled( bool enabled );
    /// The disable sequence, before the owner lets go of the machine.
    void doPrepareToDie();
    // The way to the wire: binding.cpp.
    void handleIntfConfig();
    // Ready-made packets: templates.cpp.
    void pktInitialize();
    void pktBufferInitialize( Ptr<Zornet::Pkt> const& pkt );
    // What arrives: reception.cpp, queries.cpp, suppression.cpp.
    void handlePamReadable();
    void handleV12Query( Zornet::IgmpV12Hdr* hdr, U32 size );
    void handleV12Report( Zornet::IgmpV12Hdr* hdr );
    void doGroupTimerExpired( Zornet::IpAddr group );
    // Membership: membership.cpp and groups.cpp.
    void handleGroup();
    void handleGroup( Zornet::IpAddr group );
    void handleV3Group();
    void handleV3Group( Zornet::IpAddr group );
    void replicateV3Group( Zornet::IpAddr group );
    // The version in force: versions.cpp.
    void handleIgmpVersion();
    void changeIgmpVersion();
    void handleV2V3Compatibility();
    void handleV1RouterPresentTimer();
    void handleV2RouterPresentTimer();
    // Unsolicited reports: unsolicited.cpp.
    void setIntervalValue();
    void setUnsolicitedReportIntvl();
    void handleEnablePeriodicReport();
    void handleContinueUnsolicitedReport();

    void rxPamIs( Ptr<Zornet::Pam> const& pam );
    void txPamIs( Ptr<Zornet::EthDevPam> const& pam ) { txPam_ = pam; }
    void igmpHostStatusIs( Ptr<IgmpHostStatus> const& status );

  protected:
    void forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) override;
    void forEachChild( Kiv::FunctionRef<void( StateMachine& )> visit ) override;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpHostSm(
        Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
        Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir,
        IgmpHostDirSm* dirSm
    );

    void enableSequence();
    void disableSequence();
    void bindExternalPam();
    void unbind();
    Ptr<Zornet::EthDevPam> ownDevice();
    Ptr<Zornet::EthDevPam> sharedDevice();
    void releaseSharedDevice();
    void bindReceiveSide( Ptr<Zornet::EthDevPam> const& device );
    void cutTaggingPam();
    void writeEthernetHeader( Zornet::Pkt& pkt );
    U16 writeIpHeader( Zornet::Pkt& pkt );
    bool renewTemplate( Ptr<Zornet::Pkt>& held );
    void handleFrame( std::span<U8> frame );
    void handleIgmp( U8* igmp, U32 igmpBytes, U32 payloadLen );
    void raiseRouterPresentTimer( U8 maxResp );
    void handleV3Query( Zornet::IgmpV12Hdr* hdr, U32 size );
    void handleV2QueryHeldAtV3( Zornet::IgmpV12Hdr* hdr );
    void answerAsV12( Zornet::IgmpV12Hdr const& hdr );
    void joinGroup( Zornet::IpAddr const& group, IgmpHostGroupTimerSm& timer );
    void leaveGroup( Zornet::IpAddr const& group, IgmpHostGroupTimerSm& timer );
    void takeUpGroup( Zornet::IpAddr const& group );
    void dropGroup( Zornet::IpAddr const& group );
    IgmpVersion versionHeard() const;

    Kiv::Name const name_;
    Ptr<KivIgmpHost> igmpHost_;
    Ptr<KivRxPam> rxPam_;
    Ptr<Zornet::EthDevPam> txPam_;
    Ptr<Zornet::VlanTaggingPam> taggingPam_; ///< behind rxPam, where a tagged host has a device of its own
    Zornet::IntfId useMuxIntfId_;
    Ptr<Lumo::TimerWheel const> const timerWheel_;
    Ptr<IgmpHostStatusDir> const igmpHostStatusDir_;
    Ptr<KivIgmpHostStatus> igmpHostStatus_;
    GroupTimerSms groupTimerSm_;
    Ptr<IgmpV3HostAggregatedSenderSm> aggregatedSenderSm_;
    Ptr<IgmpV3HostGeneralQueryTimerSm> igmpV3HostGeneralQueryTimerSm_;
    V3GroupQueryTimerSms v3GroupQueryTimerSm_;
    V3GroupCallbackSms v3GroupCallbackSm_;
    U32 mtu_ = 1514;
    bool useMux_ = false;
    bool enabled_ = false;
    bool initialized_ = false;
    Ptr<KivV1RouterPresentTimer> v1RouterPresentTimer_;
    Ptr<KivV2RouterPresentTimer> v2RouterPresentTimer_;
    Ptr<Zornet::Pkt> v3ReportPkt_;
    Ptr<Zornet::Pkt> v2ReportPkt_;
    U16 offsetEtherHeader_ = 0;
    U16 offsetIpHeader_ = 0;
    U16 offsetIgmpReportHeader_ = 0;
    U16 offsetIgmpGroupRecStart_ = 0;
    IgmpHostDirSm* const igmpHostDirSm_;
};

Ptr<IgmpHostSm> igmpHostSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
    Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir,
    IgmpHostDirSm* dirSm
);

/// Starts the answer of a version 1 or 2 host for one group, unless one is pending that comes soon enough.
/// `mrt` is in tenths of a second; 0 takes the host's v1MaxResponseTime.
void maybeStartGroupTimer( IgmpHostSm* sm, Zornet::IpAddr group, U32 mrt );

/// A max response code in seconds: tenths, by the single-precision division that decides ties on the wire.
Seconds maxResponseTime( U32 mrt );

} // namespace Igmp
