#pragma once

#include "platform/bridging/VlanId.h"
#include "platform/kiv/HashMap.h"
#include "platform/kiv/StateMachine.h"
#include "platform/zornet/IntfId.h"
#include "platform/zornet/Pam.h"
#include "vlan/LiveCount.h"

namespace Zornet {

class EthDevPam;

/// Stands between one device and the VLANs on it: told of each frame that the device has received, and asked
/// to send for a VLAN. What becomes of a frame is a derived class's business; here both operations end the
/// process. It does nothing until it is given a device.
class VlanPktMultiplexer : public Kiv::StateMachine, public LiveCount<VlanPktMultiplexer> {
  public:
    class KivInnerPam;
    class KivBlocked;
    using Blocked = Kiv::HashMap<KivBlocked, Bridging::VlanId>;

    enum : Kiv::AttributeId {
        attrKivFwkActivity = 130,
        attrIntf,
        attrInnerPam,
        attrInnerEthDevPam,
        attrBlocked,
        attrCopyPktBeforeTx,
    };

    static Kiv::Ptr<VlanPktMultiplexer>
    VlanPktMultiplexerIs( Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf );
    ~VlanPktMultiplexer() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<VlanPktMultiplexer>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    IntfId const& intf() const { return intf_; }

    /// The device to read from and to write to, or null. A frame that waits in the first one is not read
    /// before that signals again; a move from one to another reads a frame at once.
    Kiv::Ptr<Pam> innerPam() const;
    virtual void innerPamIs( Kiv::Ptr<Pam> const& pam );
    virtual void innerPamDel();
    /// The same object by its device type, for whoever opens, shares and closes it.
    Kiv::Ptr<EthDevPam> const& innerEthDevPam() const { return innerEthDevPam_; }
    virtual void innerEthDevPamIs( Kiv::Ptr<EthDevPam> const& pam );

    /// Kept for its users only: neither direction looks at it. False for a VLAN of which nothing is stored.
    bool blocked( Bridging::VlanId vlanId ) const;
    Blocked const& blocked() const { return blocked_; }
    virtual void blockedIs( Bridging::VlanId vlanId, bool value );
    virtual void blockedDel( Bridging::VlanId vlanId );
    virtual void blockedDel( Blocked::Iterator const& at );
    /// A multiplexer has no watchers to tell; a derived class may have.
    virtual void blockedNotify( Bridging::VlanId ) {}

    /// True, the default, sends a copy and leaves the caller's packet as it is; false retags and sends the
    /// caller's own packet.
    bool copyPktBeforeTx() const { return copyPktBeforeTx_; }
    virtual void copyPktBeforeTxIs( bool value ) { copyPktBeforeTx_ = value; }

    /// Runs once for each signal of the device.
    virtual void handleRxPkt();
    virtual void handleTxPkt( Bridging::VlanId vlanId, Kiv::Ptr<Pkt> const& pkt );
    /// Sends with the tag of that VLAN, or without one. Untagged it must not be a frame with two tags.
    void handleVerifiedTxPkt( Bridging::VlanId vlanId, Kiv::Ptr<Pkt> const& pkt, bool tag );

  protected:
    VlanPktMultiplexer( Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf );

    void forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) override;

  private:
    template <class Sm, class... Args>
    friend Kiv::Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IntfId const intf_;
    Kiv::Ptr<KivInnerPam> innerPam_;
    Kiv::Ptr<EthDevPam> innerEthDevPam_;
    Blocked blocked_;
    bool copyPktBeforeTx_ = true;
};

/// Passes the device's signals to the multiplexer.
class VlanPktMultiplexer::KivInnerPam : public Pam::Notifiee {
  public:
    KivInnerPam( Kiv::Ptr<Pam> const& pam, VlanPktMultiplexer* multiplexer );

    void onReadableCount() override;
    void notifierIs( Kiv::Ptr<Kiv::PtrInterface const> const& pam ) override;

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    VlanPktMultiplexer* const vlanPktMultiplexer_;
};

/// The mark of one VLAN.
class VlanPktMultiplexer::KivBlocked : public Kiv::PtrInterface, public Kiv::HashMember {
  public:
    explicit KivBlocked( Bridging::VlanId vlanId ) : vlanId_( vlanId ) {}

    Bridging::VlanId fwkKey() const { return vlanId_; }
    bool blocked() const { return blocked_; }
    void blockedIs( bool value ) { blocked_ = value; }

  private:
    Bridging::VlanId const vlanId_;
    bool blocked_ = false;
};

} // namespace Zornet
