#include "engine/KivIgmpHostDir.h"

namespace Igmp {

void
IgmpHostDirSm::KivIgmpHostDir::notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) {
    bool const differs = notifier.get() != notifierObject();
    Notifiee::notifierIs( notifier );
    if ( differs && notifier && !kivZombie() && sm_ ) {
        sm_->handleIgmpHostDir();
    }
}

void
IgmpHostDirSm::KivIgmpHostDir::onIgmpHost( Kiv::Name name ) {
    U8* const keyCount = pendingName_.store( name, pendingKeyCount_ );
    if ( !kivOnAttribute( IgmpHostDir::attrIgmpHost, keyCount ) && !kivZombie() && sm_ ) {
        sm_->handleIgmpHostDir( name.string() );
    }
}

void
IgmpHostDirSm::KivIgmpHostDir::onIgmpHost() {
    if ( deliverable( IgmpHostDir::attrIgmpHost ) && sm_ ) {
        sm_->handleIgmpHostDir();
    }
}

std::span<Kiv::Watch const>
IgmpHostDirSm::KivIgmpHostDir::watches() const {
    using Reactor = KivIgmpHostDir;
    static constexpr Kiv::Watch rows[] = { {
        IgmpHostDir::attrIgmpHost,
        []( PtrInterface::NotifieeConst& reactor ) { static_cast<Reactor&>( reactor ).onIgmpHost(); },
        []( PtrInterface::NotifieeConst& reactor ) {
            auto& self = static_cast<Reactor&>( reactor );
            self.onIgmpHost( self.pendingName_.pendingKey() );
        },
    } };
    return rows;
}

} // namespace Igmp
