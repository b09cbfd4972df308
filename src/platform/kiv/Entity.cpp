#include "platform/kiv/Entity.h"

#include "platform/kiv/SnapshotIterator.h"

namespace Kiv {

Entity::~Entity() = default;

void
Entity::link( Reactor* reactor ) {
    if ( reactor->isStreamAdapter() || !notifiees_.head ) {
        reactor->nextInList_ = notifiees_.head;
        notifiees_.head = reactor;
        if ( !notifiees_.tail ) {
            notifiees_.tail = reactor;
        }
        return;
    }
    notifiees_.tail->nextInList_ = reactor;
    notifiees_.tail = reactor;
}

void
Entity::unlink( Reactor* reactor ) {
    Reactor* before = nullptr;
    for ( Reactor* at = notifiees_.head; at != reactor; at = at->nextInList_ ) {
        before = at;
    }
    ( before ? before->nextInList_ : notifiees_.head ) = reactor->nextInList_;
    if ( notifiees_.tail == reactor ) {
        notifiees_.tail = before;
    }
    reactor->nextInList_ = nullptr;
}

void
Entity::notifyAll( AttributeId id, FunctionRef<void( Reactor& )> call ) {
    SnapshotIterator snapshot;
    for ( Reactor* at = notifiees_.head; at; at = at->nextInList_ ) {
        snapshot.add( at );
    }
    for ( ; snapshot; ++snapshot ) {
        if ( snapshot->references() == 1 ) { // the snapshot alone still holds it
            continue;
        }
        Expect const guard( 0 );
        try {
            call( *snapshot );
        } catch ( ... ) {
            snapshot->onNotificationException( id );
        }
    }
}

Entity::Reactor*
Entity::streamAdapter( FunctionRef<bool( Reactor& )> found ) const {
    Reactor* at = notifiees_.head;
    while ( at && at->isStreamAdapter() && !found( *at ) ) {
        at = at->nextInList_;
    }
    return at && at->isStreamAdapter() ? at : nullptr;
}

void
Entity::orphan( Entity& child ) {
    child.parentIs( nullptr );
    if ( child.hasNotifiees() ) {
        child.notifyAll( attrParent, []( Reactor& reactor ) {
            if ( reactor.isGeneric() ) {
                reactor.onChange( attrParent, {} );
            }
        } );
    }
}

void
Entity::NotifieeConst::doLink( bool link ) {
    auto* const entity = const_cast<Entity*>( notifierEntity() );
    link ? entity->link( this ) : entity->unlink( this );
}

Name
Entity::NotifieeConst::name() const {
    return notifierEntity() ? notifierEntity()->name() : Name();
}

} // namespace Kiv
