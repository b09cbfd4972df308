#pragma once

#include "platform/kiv/StateMachine.h"
#include "platform/zornet/Pam.h"

namespace Zornet {

class VlanTaggingPam;

/// Watches the access object beneath a tagging one and passes its signals up, one for one, and one at the
/// start. It reads nothing: that is for the reader of the outer object to do.
class VTaggingInnerPamSm : public Kiv::StateMachine {
  public:
    class KivInnerPam;

    enum : Kiv::AttributeId { attrKivFwkActivity = 130, attrOuterPam, attrInnerPam };

    /// A null `innerPam` never signals.
    static Kiv::Ptr<VTaggingInnerPamSm> VTaggingInnerPamSmIs(
        Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
        Kiv::Ptr<Pam const> const& innerPam
    );
    ~VTaggingInnerPamSm() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<VTaggingInnerPamSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Kiv::Ptr<VlanTaggingPam> const& outerPam() const { return outerPam_; }
    Kiv::Ptr<Pam const> innerPam() const;

    void handleInput();

  private:
    template <class Sm, class... Args>
    friend Kiv::Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    VTaggingInnerPamSm(
        Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
        Kiv::Ptr<Pam const> const& innerPam
    );

    void forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) override;

    Kiv::Ptr<VlanTaggingPam> const outerPam_;
    Kiv::Ptr<KivInnerPam> innerPam_;
};

/// Brings the inner access object's signals to the state machine.
class VTaggingInnerPamSm::KivInnerPam : public Pam::NotifieeConst {
  public:
    KivInnerPam( Kiv::Ptr<Pam const> const& pam, VTaggingInnerPamSm* sm );

    void onReadableCount() override;
    void notifierIs( Kiv::Ptr<Kiv::PtrInterface const> const& pam ) override;

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    VTaggingInnerPamSm* const vTaggingInnerPamSm_;
};

} // namespace Zornet
