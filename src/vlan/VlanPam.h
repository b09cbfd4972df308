#pragma once

#include "platform/zornet/Pam.h"
#include "vlan/LiveCount.h"

namespace Zornet {

class VlanPktMultiplexer;

/// One VLAN's view of a device that several VLANs share: a channel of the multiplexer that sits on the
/// device. Its name is the VLAN's number. It has one place for a received frame and no queue: a frame that
/// comes before the last was read takes that one's place, and `readableCount` rises all the same. So its
/// reader must be told inline. It holds its multiplexer and is held by it; the two stay until the channel is
/// taken out.
class VlanPam : public Pam, public LiveCount<VlanPam> {
  public:
    enum : Kiv::AttributeId { attrMultiplexer = attrDerived, attrInputPkt, attrVlanId, attrInitialized };

    class NotifieeConst;
    class Notifiee;

    static Kiv::Ptr<VlanPam>
    VlanPamIs( Kiv::Name const& name, Kiv::Ptr<VlanPktMultiplexer> const& multiplexer );
    ~VlanPam() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<VlanPam>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Kiv::Ptr<VlanPktMultiplexer> const& multiplexer() const { return multiplexer_; }

    /// The frame that waits, or null. The multiplexer sets it, without a tag; its readers have run when the
    /// call returns.
    Kiv::Ptr<Pkt> const& inputPkt() const { return inputPkt_; }
    void inputPktIs( Kiv::Ptr<Pkt> const& pkt );

    U16 vlanId() const { return vlanId_; }
    void vlanIdIs( U16 vlanId );
    bool initialized() const { return initialized_; }
    void initializedIs( bool value );

    void doGetRxPkt() override;
    /// Sends with this VLAN's tag, if the multiplexer has a channel for it. Raises RangeException for a
    /// `vlanId` that no frame can be tagged with.
    void txPktIs( Kiv::Ptr<Pkt> const& pkt ) override;

    void handleInitialized();
    void handleInput();

  private:
    VlanPam( Kiv::Name const& name, Kiv::Ptr<VlanPktMultiplexer> const& multiplexer );

    Kiv::Ptr<VlanPktMultiplexer> const multiplexer_;
    Kiv::Ptr<Pkt> inputPkt_;
    U16 vlanId_ = 0;
    bool initialized_ = false;
};

/// Base of the reactors on a channel. Reactors on any access object stand in the same list, so what is told
/// of a channel's own attributes comes through onAttribute().
class VlanPam::NotifieeConst : public Pam::NotifieeConst {
  public:
    VlanPam const* notifier() const { return static_cast<VlanPam const*>( Pam::NotifieeConst::notifier() ); }

    void onAttribute( Kiv::AttributeId id ) override;
    virtual void onInputPkt() {}
    virtual void onVlanId() {}
    virtual void onInitialized() {}

  protected:
    explicit NotifieeConst( Kiv::Ptr<VlanPam const> const& pam ) : Pam::NotifieeConst( pam ) {}
};

/// The same for a reactor that may change the channel.
class VlanPam::Notifiee : public VlanPam::NotifieeConst {
  public:
    VlanPam* notifier() const { return const_cast<VlanPam*>( NotifieeConst::notifier() ); }

  protected:
    explicit Notifiee( Kiv::Ptr<VlanPam> const& pam ) : NotifieeConst( pam ) {}
};

Kiv::Ptr<VlanPam> vlanPamFactory( Kiv::Name const& name, Kiv::Ptr<VlanPktMultiplexer> const& multiplexer );

} // namespace Zornet
