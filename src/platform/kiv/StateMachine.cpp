#include "platform/kiv/StateMachine.h"

namespace Kiv {

void
StateMachine::hasNotificationActiveIs( bool value ) {
    if ( value == hasNotificationActive() ) {
        return;
    }
    flagIs( notificationActiveFlag, value );
    forEachReactor( [value]( NotifieeConst& reactor ) { reactor.hasNotificationActiveIs( value ); } );
    forEachChild( [value]( StateMachine& child ) { child.hasNotificationActiveIs( value ); } );
}

void
StateMachine::kivDoZombieReactors( bool zombie ) {
    if ( zombie == kivZombie() ) {
        return;
    }
    forEachReactor( [zombie]( NotifieeConst& reactor ) { reactor.kivDoZombieReactors( zombie ); } );
    kivMarkedForDeletionIs( zombie );
}

void
StateMachine::kivFwkActivityIs( Ptr<ActivityConfig> const& activity ) {
    activity_ = activity;
    forEachReactor( [&activity]( NotifieeConst& reactor ) { reactor.kivFwkActivityIs( activity ); } );
}

void
StateMachine::install( NotifieeConst& reactor ) const {
    reactor.kivFwkActivityIs( activity_ );
    reactor.isRegisteredNotifieeIs( true );
}

} // namespace Kiv
