#pragma once

#include <utility>

#include "platform/kiv/Attribute.h"
#include "platform/kiv/FunctionRef.h"

namespace Kiv {

/// Base of an object that owns reactors and child state machines. It is made by stateMachineIs() alone: its
/// start-up runs inside its constructor while nobody holds it, so this base holds it until the factory does.
class StateMachine : public PtrInterface {
  public:
    /// Sets the flag and passes it on to every reactor and child. The value in force changes nothing.
    virtual void hasNotificationActiveIs( bool value );
    /// Stops (or restarts) the callbacks of every reactor for good. Children are not reached: they die with
    /// their own last reference.
    virtual void kivDoZombieReactors( bool zombie );
    /// Moves the machine's reactors to another activity.
    virtual void kivFwkActivityIs( Ptr<ActivityConfig> const& activity );
    Ptr<ActivityConfig> const& kivFwkActivity() const { return activity_; }

  protected:
    explicit StateMachine( Ptr<ActivityConfig> const& activity ) : activity_( activity ) { referencesInc(); }

    /// Visits the reactors that stand, in the order of their declaration.
    virtual void forEachReactor( FunctionRef<void( NotifieeConst& )> ) {}
    /// Visits the members of the collections of child machines.
    virtual void forEachChild( FunctionRef<void( StateMachine& )> ) {}

    /// Gives a fresh reactor this machine's activity and registers it with its notifier.
    void install( NotifieeConst& reactor ) const;

  private:
    template <class Sm, class... Args>
    friend Ptr<Sm> stateMachineIs( Args&&... args );

    Ptr<ActivityConfig> activity_;
};

/// Makes a state machine of class `Sm`: constructor, reference, notification on, in this order.
template <class Sm, class... Args>
Ptr<Sm>
stateMachineIs( Args&&... args ) {
    Ptr<Sm> sm( new Sm( std::forward<Args>( args )... ) );
    sm->referencesRelease();
    sm->hasNotificationActiveIs( true );
    return sm;
}

} // namespace Kiv
