#pragma once

#include "platform/zornet/Pam.h"
#include "vlan/LiveCount.h"
#include "vlan/VTaggingInnerPamSm.h"
#include "vlan/VlanPamMultiplexer.h"
#include "vlan/VlanTag.h"

namespace Zornet {

/// One VLAN's view of a device that nobody shares: takes the tag off what is read from the access object
/// beneath, and puts it on what is sent. It reads one frame from there for each that it is asked for; a frame
/// of another VLAN is used up and gives null. With `vlanId` 0 it reads untagged frames and those that are
/// tagged for priority only. It and its state machine hold each other: whoever made it cuts the pair with
/// smDel() when done with it. This header brings every VLAN class along.
class VlanTaggingPam : public Pam, public LiveCount<VlanTaggingPam> {
  public:
    enum : Kiv::AttributeId { attrVlanId = attrDerived, attrInnerPam, attrSm, attrInitialized };

    class NotifieeConst;
    class Notifiee;

    /// `readableCount` is 1 from the start. Frames are sent with the low 12 bits of `vlanId` and read with
    /// all 16, so above 4095 none is ever read.
    VlanTaggingPam( Kiv::Name const& name, U16 vlanId, Kiv::Ptr<Pam> const& innerPam );
    ~VlanTaggingPam() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<VlanTaggingPam>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    U16 vlanId() const { return vlanId_; }
    Kiv::Ptr<Pam> const& innerPam() const { return innerPam_; }

    /// The watcher of the inner access object, made with this object. smIs() puts another in its place where
    /// the arguments differ from those that it was made with.
    Kiv::Ptr<VTaggingInnerPamSm> const& sm() const { return sm_; }
    Kiv::Ptr<VTaggingInnerPamSm> smIs(
        Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
        Kiv::Ptr<Pam> const& innerPam
    );
    Kiv::Ptr<VTaggingInnerPamSm> newSm(
        Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
        Kiv::Ptr<Pam> const& innerPam
    );
    /// No signal comes from here any more, and this object goes with its last user.
    void smDel();

    bool initialized() const { return initialized_; }
    void initializedIs( bool value );

    void doGetRxPkt() override;
    /// Tags the caller's own packet, in front of any tag that it has.
    void txPktIs( Kiv::Ptr<Pkt> const& pkt ) override;

    void handleInitialized();

  private:
    U16 const vlanId_;
    Kiv::Ptr<Pam> const innerPam_;
    Kiv::Ptr<VTaggingInnerPamSm> sm_;
    bool initialized_ = false;
};

/// Base of the reactors on a tagging access object. Reactors on any access object stand in the same list, so
/// what is told of its own attributes comes through onAttribute().
class VlanTaggingPam::NotifieeConst : public Pam::NotifieeConst {
  public:
    VlanTaggingPam const* notifier() const {
        return static_cast<VlanTaggingPam const*>( Pam::NotifieeConst::notifier() );
    }

    void onAttribute( Kiv::AttributeId id ) override;
    virtual void onSm() {}
    virtual void onInitialized() {}

  protected:
    explicit NotifieeConst( Kiv::Ptr<VlanTaggingPam const> const& pam ) : Pam::NotifieeConst( pam ) {}
};

/// The same for a reactor that may change the object.
class VlanTaggingPam::Notifiee : public VlanTaggingPam::NotifieeConst {
  public:
    VlanTaggingPam* notifier() const { return const_cast<VlanTaggingPam*>( NotifieeConst::notifier() ); }

  protected:
    explicit Notifiee( Kiv::Ptr<VlanTaggingPam> const& pam ) : NotifieeConst( pam ) {}
};

} // namespace Zornet
