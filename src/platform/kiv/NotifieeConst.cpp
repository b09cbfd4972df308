#include "platform/kiv/NotifieeConst.h"

namespace Kiv {

PtrInterface::NotifieeConst::NotifieeConst( Ptr<PtrInterface const> const& notifier )
    : notifier_( notifier.get() ) {
    flagIs( notificationActiveFlag, true );
    if ( notifier_ ) {
        notifier_->referencesInc();
    }
}

PtrInterface::NotifieeConst::~NotifieeConst() {
    if ( notifier_ && !weak_ ) {
        notifier_->referencesDec();
    }
}

void
PtrInterface::NotifieeConst::relink() {
    bool const link = isRegisteredNotifiee() && hasNotificationActive() && notifier_ != nullptr;
    if ( link != linked_ ) {
        linked_ = link;
        doLink( link );
    }
}

void
PtrInterface::NotifieeConst::unlink() {
    if ( linked_ ) {
        linked_ = false;
        doLink( false );
    }
}

void
PtrInterface::NotifieeConst::hasNotificationActiveIs( bool value ) {
    flagIs( notificationActiveFlag, value );
    relink();
}

void
PtrInterface::NotifieeConst::isRegisteredNotifieeIs( bool value ) {
    flagIs( registeredFlag, value );
    relink();
}

void
PtrInterface::NotifieeConst::notifierIs( Ptr<PtrInterface const> const& notifier ) {
    if ( notifier.get() == notifier_ ) {
        return;
    }
    unlink();
    if ( notifier && !weak_ ) {
        notifier->referencesInc();
    }
    PtrInterface const* const old = std::exchange( notifier_, notifier.get() );
    if ( old && !weak_ ) {
        old->referencesDec();
    }
    relink();
}

void
PtrInterface::NotifieeConst::isWeakReferenceIs( bool value ) {
    if ( value == weak_ ) {
        return;
    }
    weak_ = value;
    if ( notifier_ ) {
        weak_ ? notifier_->referencesDec() : notifier_->referencesInc();
    }
}

void
PtrInterface::NotifieeConst::kivDoZombieReactors( bool zombie ) {
    if ( zombie == kivZombie() ) {
        return;
    }
    if ( notifier_ ) {
        hasNotificationActiveIs( !zombie );
    }
    kivMarkedForDeletionIs( zombie );
}

bool
PtrInterface::NotifieeConst::kivOnAttribute( AttributeId id, U8* keyCount ) {
    if ( dispatching_ ) {
        dispatching_ = false;
        return false;
    }
    ActivitySm* const activity = actsm();
    if ( !activity->deferredDelivery() ) {
        return false;
    }
    if ( keyCount && *keyCount != std::numeric_limits<U8>::max() ) {
        ++*keyCount;
    }
    if ( pendingId_ == noAttribute ) {
        pendingId_ = id;
        activity->defer( this );
    } else if ( id == everyAttributeAndKey || pendingId_ == everyAttributeAndKey ) {
        pendingId_ = everyAttributeAndKey;
    } else if ( pendingId_ != id ) {
        pendingId_ = everyAttribute;
    }
    return true;
}

void
PtrInterface::NotifieeConst::redispatch( ActivitySm* ) {
    dispatching_ = true;
}

void
PtrInterface::NotifieeConst::handleNotification( ActivityConfig* activity ) {
    AttributeId const id = std::exchange( pendingId_, noAttribute );
    if ( id == noAttribute ) {
        return;
    }
    bool const every = id == everyAttribute || id == everyAttributeAndKey;
    bool found = false;
    for ( Watch const& watch : watches() ) {
        if ( every || watch.id == id ) {
            redispatch( actsm() );
            deliverOne( watch, id == everyAttributeAndKey );
            dispatching_ = false;
            found = true;
        }
    }
    if ( every || !found ) {
        handleDefault( activity, id, !every );
    }
}

void
PtrInterface::NotifieeConst::deliverOne( Watch const& watch, bool keyedAlways ) {
    if ( !watch.callKey ) {
        watch.call( *this );
        return;
    }
    U8 const count = std::exchange( pendingKeyCount_, U8{ 0 } );
    if ( keyedAlways || count > 1 ) {
        watch.call( *this );
    } else if ( count == 1 ) {
        watch.callKey( *this );
    }
}

void
PtrInterface::NotifieeConst::handleDefault( ActivityConfig*, AttributeId id, bool single ) {
    if ( single ) {
        onAttribute( id );
    }
}

void
PtrInterface::NotifieeConst::deliverPending() {
    AttributeId const id = pendingId_;
    try {
        handleNotification( kivFwkActivity() );
    } catch ( ... ) {
        dispatching_ = false;
        if ( id == everyAttribute || id == everyAttributeAndKey ) {
            onNotificationException();
        } else {
            onNotificationException( id );
        }
    }
}

} // namespace Kiv
