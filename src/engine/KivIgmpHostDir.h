#pragma once

#include "engine/IgmpHostDirSm.h"

namespace Igmp {

/// Brings the coming and going of hosts to the root: one name to the handler of that name, several at once,
/// and a move to another directory, to the sweep. It holds a plain pointer back to the root, which takes it
/// away when it dies.
class IgmpHostDirSm::KivIgmpHostDir : public IgmpHostDir::Notifiee {
  public:
    KivIgmpHostDir( Ptr<IgmpHostDir> const& dir, IgmpHostDirSm* sm ) : Notifiee( dir ), sm_( sm ) {}
    void notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) override;
    void igmpHostDirSmDel() { sm_ = nullptr; }

    void onIgmpHost( Kiv::Name name ) override;
    void onIgmpHost() override;

  protected:
    std::span<Kiv::Watch const> watches() const override;

  private:
    IgmpHostDirSm* sm_;
    Kiv::PendingKey<Kiv::Name> pendingName_;
};

} // namespace Igmp
