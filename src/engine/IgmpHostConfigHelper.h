#pragma once

#include "model/IgmpHost.h"
#include "platform/kiv/StateMachine.h"

namespace Igmp {

/// Spreads a template over its block on a host that no state machine serves, for controllers from outside.
class IgmpHostConfigHelper : public Kiv::StateMachine {
  public:
    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostConfigHelper>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Kiv::Name const& name() const { return name_; }
    Ptr<IgmpHost> const& igmpHost() const { return igmpHost_; }

    void replicateGroup( Zornet::IpAddr group );

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> Kiv::stateMachineIs( Args&&... args );

    IgmpHostConfigHelper(
        Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& igmpHost
    )
        : StateMachine( activity ), name_( name ), igmpHost_( igmpHost ) {}

    Kiv::Name const name_;
    Ptr<IgmpHost> const igmpHost_;
};

Ptr<IgmpHostConfigHelper> igmpHostConfigHelperFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& igmpHost
);

} // namespace Igmp
