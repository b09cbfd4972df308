#pragma once

#include "vlan/VlanPam.h"
#include "vlan/VlanPktMultiplexer.h"

namespace Zornet {

/// The multiplexer whose VLANs are channels: it hands each frame of the device, without its tag, to the
/// channel of the frame's VLAN, found with one probe however many there are, and sends what the channels are
/// given with their tags. A VLAN has one channel. Channels stay until they are replaced or taken out; each
/// holds the multiplexer, so one that has any stays with them.
class VlanPamMultiplexer : public VlanPktMultiplexer {
  public:
    class KivVlanPam;
    struct VlanKey;
    using VlanPams = Kiv::HashMap<KivVlanPam, VlanKey>;

    enum : Kiv::AttributeId { attrVlanPam = attrCopyPktBeforeTx + 1 };

    static Kiv::Ptr<VlanPamMultiplexer>
    VlanPamMultiplexerIs( Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf );
    ~VlanPamMultiplexer() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<VlanPamMultiplexer>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    /// The channel, or null.
    Kiv::Ptr<VlanPam> vlanPam( U16 vlanId ) const;
    VlanPams const& vlanPam() const { return vlanPam_; }
    std::size_t vlanPams() const { return vlanPam_.size(); }
    /// Takes a channel in under its VLAN, in place of the one that VLAN had: that one hears nothing more.
    /// Raises RangeException for a null one.
    void vlanPamIs( Kiv::Ptr<VlanPam> const& pam );
    void vlanPamDel( U16 vlanId );
    void vlanPamDel( VlanPams::Iterator const& at );
    void vlanPamDelAll();

    /// Reads one frame from the device and delivers it. Drops an untagged one and one of a VLAN without a
    /// channel.
    void handleRxPkt() override;
    /// Drops the frame if the VLAN has no channel.
    void handleTxPkt( Bridging::VlanId vlanId, Kiv::Ptr<Pkt> const& pkt ) override;

  private:
    template <class Sm, class... Args>
    friend Kiv::Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    VlanPamMultiplexer( Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf );

    VlanPams vlanPam_;
};

/// A VLAN's number as a key. Its hash spreads, so that VLANs in regular steps do not crowd a few chains.
struct VlanPamMultiplexer::VlanKey {
    U16 vlanId;

    U32 hash() const { return Kiv::bitReverse( vlanId * 0x9e3779b1U ); }
    friend auto operator<=>( VlanKey, VlanKey ) = default; // NOLINT(modernize-use-nullptr)
};

/// The channel of one VLAN. The key stays when the channel's own `vlanId` is changed.
class VlanPamMultiplexer::KivVlanPam : public Kiv::PtrInterface, public Kiv::HashMember {
  public:
    explicit KivVlanPam( VlanKey key ) : key_( key ) {}

    VlanKey fwkKey() const { return key_; }
    Kiv::Ptr<VlanPam> const& vlanPam() const { return vlanPam_; }
    void vlanPamIs( Kiv::Ptr<VlanPam> const& pam ) { vlanPam_ = pam; }

  private:
    VlanKey const key_;
    Kiv::Ptr<VlanPam> vlanPam_;
};

} // namespace Zornet
