#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/platform/kiv/Gauge.h"

namespace {

using Kiv::Ptr;
using Log = Probe::Log;

/// What a mutator tells its reactors, inline.
class NotificationTest : public ::testing::Test {
  protected:
    Ptr<Probe> probe( std::string const& prefix = "" ) { return Probe::on( gauge_, log_, prefix ); }

    Ptr<Gauge> gauge_{ new Gauge };
    Log log_;
};

class StreamAdapter : public Probe {
  public:
    using Probe::Probe;
    bool isStreamAdapter() const override { return true; }
};

TEST_F( NotificationTest, ChangeIsToldInsideTheMutator ) {
    auto const reactor = probe();
    gauge_->levelIs( 3 );
    EXPECT_EQ( log_, Log{ "level" } );
    EXPECT_EQ( gauge_->modificationCount(), 1U );
}

TEST_F( NotificationTest, ReactorSeesTheNewValue ) {
    auto const reactor = probe();
    int seen = -1;
    reactor->then = [&] { seen = gauge_->level(); };
    gauge_->levelIs( 3 );
    EXPECT_EQ( seen, 3 );
}

TEST_F( NotificationTest, CurrentValueReachesNoReactor ) {
    auto const reactor = probe();
    gauge_->levelIs( 0 );
    gauge_->labelIs( "" );
    EXPECT_TRUE( log_.empty() );
    EXPECT_EQ( gauge_->modificationCount(), 0U );
}

TEST_F( NotificationTest, ChangeWithoutReactorsIsCounted ) {
    EXPECT_FALSE( gauge_->hasNotifiees() );
    gauge_->levelIs( 1 );
    EXPECT_EQ( gauge_->modificationCount(), 1U );
}

TEST_F( NotificationTest, IncrementWrapsAtTheWidthOfItsType ) {
    gauge_->levelIs( 250 );
    auto const reactor = probe();
    gauge_->levelInc( 10 );
    EXPECT_EQ( gauge_->level(), 4 );
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( NotificationTest, DecrementWrapsBelowZero ) {
    gauge_->levelDec( 1 );
    EXPECT_EQ( gauge_->level(), 255 );
}

TEST_F( NotificationTest, IncrementByNothingReachesNoReactor ) {
    auto const reactor = probe();
    gauge_->levelInc( 0 );
    EXPECT_TRUE( log_.empty() );
}

TEST_F( NotificationTest, ReactorsAreToldInTheOrderOfRegistration ) {
    auto const a = probe( "a " );
    auto const b = probe( "b " );
    auto const c = probe( "c " );
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, ( Log{ "a level", "b level", "c level" } ) );
}

TEST_F( NotificationTest, StreamAdaptersAreToldFirst ) {
    auto const a = probe( "a " );
    Ptr<StreamAdapter> const first( new StreamAdapter( gauge_, log_, "adapter 1 " ) );
    Ptr<StreamAdapter> const second( new StreamAdapter( gauge_, log_, "adapter 2 " ) );
    first->isRegisteredNotifieeIs( true );
    second->isRegisteredNotifieeIs( true );
    auto const b = probe( "b " );
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, ( Log{ "adapter 2 level", "adapter 1 level", "a level", "b level" } ) );
}

TEST_F( NotificationTest, StreamAdapterAloneLeavesTheTailToOthers ) {
    Ptr<StreamAdapter> const adapter( new StreamAdapter( gauge_, log_, "adapter " ) );
    adapter->isRegisteredNotifieeIs( true );
    auto const a = probe( "a " );
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, ( Log{ "adapter level", "a level" } ) );
}

TEST_F( NotificationTest, UnregisteredReactorIsNotTold ) {
    auto const first = probe( "1 " );
    auto const middle = probe( "2 " );
    auto const last = probe( "3 " );
    middle->isRegisteredNotifieeIs( false );
    gauge_->levelIs( 1 );
    last->isRegisteredNotifieeIs( false );
    gauge_->levelIs( 2 );
    first->isRegisteredNotifieeIs( false );
    gauge_->levelIs( 3 );
    EXPECT_EQ( log_, ( Log{ "1 level", "3 level", "1 level" } ) );
    EXPECT_FALSE( gauge_->hasNotifiees() );
}

TEST_F( NotificationTest, RegisteringAgainGoesToTheTail ) {
    auto const a = probe( "a " );
    auto const b = probe( "b " );
    a->isRegisteredNotifieeIs( false );
    a->isRegisteredNotifieeIs( true );
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, ( Log{ "b level", "a level" } ) );
}

TEST_F( NotificationTest, RegisteringTwiceTellsOnce ) {
    auto const reactor = probe();
    reactor->isRegisteredNotifieeIs( true );
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( NotificationTest, DestroyedReactorIsUnlinked ) {
    auto reactor = probe();
    reactor = nullptr;
    EXPECT_FALSE( gauge_->hasNotifiees() );
    gauge_->levelIs( 1 );
    EXPECT_TRUE( log_.empty() );
}

TEST_F( NotificationTest, ReactorThatDetachesItselfDoesNotDisturbTheNext ) {
    auto const a = probe( "a " );
    auto const b = probe( "b " );
    a->then = [&] { a->isRegisteredNotifieeIs( false ); };
    gauge_->levelIs( 1 );
    gauge_->levelIs( 2 );
    EXPECT_EQ( log_, ( Log{ "a level", "b level", "b level" } ) );
}

TEST_F( NotificationTest, ReactorThatDropsItselfDoesNotDisturbTheNext ) {
    auto a = probe( "a " );
    auto const b = probe( "b " );
    a->then = [&] { a = nullptr; };
    gauge_->levelIs( 1 );
    gauge_->levelIs( 2 );
    EXPECT_EQ( log_, ( Log{ "a level", "b level", "b level" } ) );
}

TEST_F( NotificationTest, ReactorThatOnlyTheSnapshotHoldsIsSkipped ) {
    auto const a = probe( "a " );
    auto b = probe( "b " );
    auto const c = probe( "c " );
    a->then = [&] { b = nullptr; };
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, ( Log{ "a level", "c level" } ) );
}

TEST_F( NotificationTest, ReactorThatLeavesDuringTheWalkButLivesIsStillTold ) {
    auto const a = probe( "a " );
    auto const b = probe( "b " );
    a->then = [&] { b->isRegisteredNotifieeIs( false ); };
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, ( Log{ "a level", "b level" } ) );
}

TEST_F( NotificationTest, ReactorAddedDuringTheWalkIsNotToldOfThatChange ) {
    auto const a = probe( "a " );
    Ptr<Probe> b;
    a->then = [&] { b = b ? b : probe( "b " ); };
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, Log{ "a level" } );
    gauge_->levelIs( 2 );
    EXPECT_EQ( log_, ( Log{ "a level", "a level", "b level" } ) );
}

TEST_F( NotificationTest, ManyReactorsAreAllTold ) {
    std::vector<Ptr<Probe>> probes;
    for ( int i = 0; i < 20; ++i ) {
        probes.push_back( probe() );
    }
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_.size(), 20U );
}

TEST_F( NotificationTest, ZombieOfTheSnapshotGetsNoHandlerCall ) {
    auto const a = probe( "a " );
    auto const b = probe( "b " );
    auto const c = probe( "c " );
    a->then = [&] { b->kivDoZombieReactors( true ); };
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, ( Log{ "a level", "c level" } ) );
}

TEST_F( NotificationTest, ThrowingCallbackDoesNotStopTheNext ) {
    auto const a = probe( "a " );
    auto const b = probe( "b " );
    a->then = [] { throw std::runtime_error( "oops" ); };
    EXPECT_NO_THROW( gauge_->levelIs( 1 ) );
    EXPECT_EQ( log_, ( Log{ "a level", "a exception 258", "b level" } ) );
    EXPECT_EQ( gauge_->level(), 1 );
}

TEST_F( NotificationTest, ExceptionOfAnyTypeStaysInTheWalk ) {
    auto const reactor = probe();
    reactor->then = [] { throw 42; };
    EXPECT_NO_THROW( gauge_->markIs( "m" ) );
    EXPECT_EQ( log_, ( Log{ "mark m", "exception 260" } ) );
}

TEST_F( NotificationTest, CallbackRunsWithExceptionZeroExpected ) {
    auto const reactor = probe();
    Kiv::Exception::IdBitArray during;
    reactor->then = [&] { during = Kiv::Expect::current(); };
    gauge_->levelIs( 1 );
    EXPECT_TRUE( during.test( 0 ) );
    EXPECT_TRUE( Kiv::Expect::current().none() );
}

TEST_F( NotificationTest, HandlerMaySetTheAttributeThatItIsToldOf ) {
    auto const reactor = probe();
    reactor->then = [&] {
        if ( gauge_->level() < 3 ) {
            gauge_->levelInc( 1 );
        }
    };
    gauge_->levelIs( 1 );
    EXPECT_EQ( gauge_->level(), 3 );
    EXPECT_EQ( log_.size(), 3U );
}

TEST_F( NotificationTest, ReactorMayDropTheLastOutsideReferenceToItsEntity ) {
    bool destroyed = false;
    gauge_->onDestroyed = [&] { destroyed = true; };
    auto reactor = probe();
    reactor->then = [&] { gauge_ = nullptr; };
    Gauge* const raw = gauge_.get();
    raw->levelIs( 1 );
    EXPECT_FALSE( destroyed ) << "the reactor holds its notifier";
    reactor = nullptr;
    EXPECT_TRUE( destroyed );
}

TEST_F( NotificationTest, ReactorMayDestroyItsEntityAndItself ) {
    bool destroyed = false;
    gauge_->onDestroyed = [&] { destroyed = true; };
    auto reactor = probe();
    reactor->then = [&] {
        reactor = nullptr;
        gauge_ = nullptr;
    };
    Gauge* const raw = gauge_.get();
    raw->levelIs( 1 );
    EXPECT_TRUE( destroyed );
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( NotificationTest, WeakReactorDoesNotKeepItsEntity ) {
    bool destroyed = false;
    gauge_->onDestroyed = [&] { destroyed = true; };
    auto reactor = probe();
    reactor->isWeakReferenceIs( true );
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, Log{ "level" } );
    EXPECT_EQ( gauge_->references(), 1U );
    reactor = nullptr;
    gauge_ = nullptr;
    EXPECT_TRUE( destroyed );
}

TEST_F( NotificationTest, StrongAgainKeepsTheEntity ) {
    auto const reactor = probe();
    reactor->isWeakReferenceIs( true );
    reactor->isWeakReferenceIs( true );
    reactor->isWeakReferenceIs( false );
    EXPECT_EQ( gauge_->references(), 2U );
}

TEST_F( NotificationTest, ReactorMovesToAnotherNotifier ) {
    auto const reactor = probe();
    Ptr<Gauge> const other( new Gauge( "other" ) );
    reactor->notifierIs( other );
    gauge_->levelIs( 1 );
    EXPECT_TRUE( log_.empty() );
    other->levelIs( 1 );
    EXPECT_EQ( log_, Log{ "level" } );
    EXPECT_EQ( reactor->name(), Kiv::Name( "other" ) );
    EXPECT_EQ( gauge_->references(), 1U );
}

TEST_F( NotificationTest, ReactorMayLoseItsNotifier ) {
    auto const reactor = probe();
    reactor->notifierIs( nullptr );
    gauge_->levelIs( 1 );
    EXPECT_TRUE( log_.empty() );
    EXPECT_EQ( reactor->notifier(), nullptr );
    EXPECT_TRUE( reactor->name().empty() );
}

TEST_F( NotificationTest, InactiveReactorIsUnlinkedAndComesBack ) {
    auto const reactor = probe();
    EXPECT_TRUE( reactor->hasNotificationActive() );
    reactor->hasNotificationActiveIs( false );
    EXPECT_FALSE( gauge_->hasNotifiees() );
    gauge_->levelIs( 1 );
    reactor->hasNotificationActiveIs( true );
    gauge_->levelIs( 2 );
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( NotificationTest, ActivationDoesNotRegister ) {
    auto const reactor = probe();
    reactor->isRegisteredNotifieeIs( false );
    reactor->hasNotificationActiveIs( false );
    reactor->hasNotificationActiveIs( true );
    EXPECT_FALSE( gauge_->hasNotifiees() );
}

TEST_F( NotificationTest, RegistrationWhileInactiveWaits ) {
    Ptr<Probe> const reactor( new Probe( gauge_, log_, "" ) );
    reactor->hasNotificationActiveIs( false );
    reactor->isRegisteredNotifieeIs( true );
    EXPECT_FALSE( gauge_->hasNotifiees() );
    reactor->hasNotificationActiveIs( true );
    EXPECT_TRUE( gauge_->hasNotifiees() );
}

TEST_F( NotificationTest, ZombieIsInactiveAndCanBeRevived ) {
    auto const reactor = probe();
    reactor->kivDoZombieReactors( true );
    EXPECT_TRUE( reactor->kivZombie() );
    EXPECT_FALSE( reactor->hasNotificationActive() );
    gauge_->levelIs( 1 );
    reactor->kivDoZombieReactors( false );
    gauge_->levelIs( 2 );
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( NotificationTest, ZombieWithoutNotifierOnlyTakesTheMark ) {
    auto const reactor = probe();
    reactor->notifierIs( nullptr );
    reactor->kivDoZombieReactors( true );
    EXPECT_TRUE( reactor->kivZombie() );
    EXPECT_TRUE( reactor->hasNotificationActive() );
}

TEST_F( NotificationTest, UnchangedZombieValueChangesNothing ) {
    auto const reactor = probe();
    reactor->hasNotificationActiveIs( false );
    reactor->kivDoZombieReactors( false );
    EXPECT_FALSE( reactor->hasNotificationActive() );
}

} // namespace
