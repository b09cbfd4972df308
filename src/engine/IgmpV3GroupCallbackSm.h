#pragma once

#include "model/IgmpV3GroupRecord.h"
#include "platform/kiv/StateMachine.h"

namespace Igmp {

class IgmpHostSm;

/// Watches the `version` of one configured group record and passes its moves on to the host. A change of the
/// filter mode or the sources alone passes unheard: a writer changes the record and then moves `version`.
class IgmpV3GroupCallbackSm : public Kiv::StateMachine, public Kiv::HashMember {
  public:
    class KivGroupRecord;

    static Ptr<IgmpV3GroupCallbackSm> IgmpV3GroupCallbackSmIs(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& mcastAddr,
        Ptr<IgmpV3GroupRecord> const& groupRecord, IgmpHostSm* igmpHostSm
    );
    ~IgmpV3GroupCallbackSm() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpV3GroupCallbackSm>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Zornet::IpAddr const& fwkKey() const { return mcastAddr_; }
    Zornet::IpAddr const& mcastAddr() const { return mcastAddr_; }
    /// The watched record, or null.
    IgmpV3GroupRecord* groupRecord() const;
    bool initialized() const { return initialized_; }
    /// The host's machine; null for one that stands alone.
    IgmpHostSm* igmpHostSm() const { return igmpHostSm_; }

    void handleInitialized() { initialized_ = true; }
    void processGroupChange();

  protected:
    void forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) override;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpV3GroupCallbackSm(
        Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& mcastAddr,
        Ptr<IgmpV3GroupRecord> const& groupRecord, IgmpHostSm* igmpHostSm
    );

    Zornet::IpAddr const mcastAddr_;
    bool initialized_ = false;
    Ptr<KivGroupRecord> groupRecord_;
    IgmpHostSm* const igmpHostSm_;
};

/// A machine that stands alone, of no host. The first move of the record's `version` ends the process.
Ptr<IgmpV3GroupCallbackSm> igmpV3GroupCallbackSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& mcastAddr,
    Ptr<IgmpV3GroupRecord> const& groupRecord
);

} // namespace Igmp
