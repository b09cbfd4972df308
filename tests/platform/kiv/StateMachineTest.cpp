#include "platform/kiv/StateMachine.h"

#include <gtest/gtest.h>

#include "tests/platform/kiv/Gauge.h"

namespace {

using Kiv::Ptr;
using Log = Probe::Log;

/// A machine with two reactors and a child; it points at itself inside its constructor as start-up handlers
/// do.
class Machine : public Kiv::StateMachine {
  public:
    Machine( Ptr<Kiv::ActivityConfig> const& activity, Ptr<Gauge> const& gauge, Log& log )
        : StateMachine( activity ),
          log_( log ),
          first( new Probe( gauge, log, "first " ) ),
          second( new Probe( gauge, log, "second " ) ) {
        install( *first );
        install( *second );
        wasActiveInConstructor = hasNotificationActive();
        {
            Ptr<Machine> const forAMoment( this );
            log_.emplace_back( "initialized" );
        }
    }
    ~Machine() override { log_.emplace_back( "destroyed" ); }

  private:
    Log& log_;

  public:
    Ptr<Probe> first;
    Ptr<Probe> second;
    Ptr<Machine> child;
    bool wasActiveInConstructor = true;

  protected:
    void forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) override {
        visit( *first );
        visit( *second );
    }
    void forEachChild( Kiv::FunctionRef<void( StateMachine& )> visit ) override {
        if ( child ) {
            visit( *child );
        }
    }
};

class StateMachineTest : public ::testing::Test {
  protected:
    Ptr<Machine> make() { return Kiv::stateMachineIs<Machine>( activity_, gauge_, log_ ); }

    Ptr<Kiv::ActivityConfig> activity_{ new Kiv::ActivityConfig };
    Ptr<Gauge> gauge_{ new Gauge };
    Log log_;
};

TEST_F( StateMachineTest, TemporaryPointerInTheConstructorDoesNotDestroyIt ) {
    Ptr<Machine> machine = make();
    EXPECT_EQ( log_, Log{ "initialized" } );
    EXPECT_EQ( machine->references(), 1U );
    machine = nullptr;
    EXPECT_EQ( log_, ( Log{ "initialized", "destroyed" } ) );
}

TEST_F( StateMachineTest, NotificationBecomesActiveByTheFactory ) {
    Ptr<Machine> const machine = make();
    EXPECT_FALSE( machine->wasActiveInConstructor );
    EXPECT_TRUE( machine->hasNotificationActive() );
}

TEST_F( StateMachineTest, ReactorsHearBeforeTheFactoryHasReturned ) {
    struct Loud : Machine {
        Loud( Ptr<Kiv::ActivityConfig> const& activity, Ptr<Gauge> const& gauge, Log& log )
            : Machine( activity, gauge, log ) {
            gauge->levelIs( 1 );
        }
    };
    Ptr<Loud> const machine = Kiv::stateMachineIs<Loud>( activity_, gauge_, log_ );
    EXPECT_EQ( log_, ( Log{ "initialized", "first level", "second level" } ) );
}

TEST_F( StateMachineTest, InstalledReactorRunsOnTheMachinesActivity ) {
    Ptr<Machine> const machine = make();
    EXPECT_EQ( machine->first->activityPtr(), activity_ );
    EXPECT_EQ( machine->kivFwkActivity(), activity_ );
}

TEST_F( StateMachineTest, ActivityIsPassedOnToReactors ) {
    Ptr<Machine> const machine = make();
    Ptr<Kiv::ActivityConfig> const other( new Kiv::ActivityConfig );
    machine->kivFwkActivityIs( other );
    EXPECT_EQ( machine->kivFwkActivity(), other );
    EXPECT_EQ( machine->second->activityPtr(), other );
}

TEST_F( StateMachineTest, ActivationCascadesToReactorsAndChildren ) {
    Ptr<Machine> const machine = make();
    machine->child = make();
    machine->hasNotificationActiveIs( false );
    EXPECT_FALSE( machine->first->hasNotificationActive() );
    EXPECT_FALSE( machine->child->hasNotificationActive() );
    EXPECT_FALSE( machine->child->second->hasNotificationActive() );
    machine->hasNotificationActiveIs( true );
    EXPECT_TRUE( machine->second->hasNotificationActive() );
    EXPECT_TRUE( machine->child->first->hasNotificationActive() );
}

TEST_F( StateMachineTest, UnchangedActivationDoesNotCascade ) {
    Ptr<Machine> const machine = make();
    machine->first->hasNotificationActiveIs( false );
    machine->hasNotificationActiveIs( true );
    EXPECT_FALSE( machine->first->hasNotificationActive() );
}

TEST_F( StateMachineTest, ZombieCascadesToReactorsAndNotToChildren ) {
    Ptr<Machine> const machine = make();
    machine->child = make();
    machine->kivDoZombieReactors( true );
    EXPECT_TRUE( machine->kivZombie() );
    EXPECT_TRUE( machine->first->kivZombie() );
    EXPECT_TRUE( machine->second->kivZombie() );
    EXPECT_FALSE( machine->child->kivZombie() );
    EXPECT_FALSE( machine->child->first->kivZombie() );
}

TEST_F( StateMachineTest, UnchangedZombieValueDoesNotCascade ) {
    Ptr<Machine> const machine = make();
    machine->first->kivDoZombieReactors( true );
    machine->kivDoZombieReactors( false );
    EXPECT_TRUE( machine->first->kivZombie() );
}

TEST_F( StateMachineTest, ZombieMachineHearsNothing ) {
    Ptr<Machine> const machine = make();
    log_.clear();
    machine->kivDoZombieReactors( true );
    gauge_->levelIs( 1 );
    EXPECT_TRUE( log_.empty() );
}

TEST_F( StateMachineTest, DestroyedMachineTakesItsReactorsAlong ) {
    Ptr<Machine> machine = make();
    EXPECT_TRUE( gauge_->hasNotifiees() );
    machine = nullptr;
    EXPECT_FALSE( gauge_->hasNotifiees() );
}

} // namespace
