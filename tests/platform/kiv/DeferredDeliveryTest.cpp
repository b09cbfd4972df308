#include <stdexcept>

#include "tests/platform/kiv/Gauge.h"
#include "tests/support/SimulatedTest.h"

namespace {

using Kiv::Ptr;
using Log = Probe::Log;

/// Delivery at the next turn of the activity instead of inside the mutator.
class DeferredDeliveryTest : public Support::SimulatedTest {
  protected:
    DeferredDeliveryTest() { deferredDeliveryIs( true ); }

    Ptr<Gauge> gauge_{ new Gauge };
    Log log_;
    Ptr<Probe> probe_ = Probe::on( gauge_, log_ );
};

class Alarm : public Lumo::TimerWheel::NotifieeConst {
  public:
    Alarm( Ptr<Lumo::TimerWheel const> const& wheel, std::function<void()> rings )
        : NotifieeConst( wheel ), rings_( std::move( rings ) ) {
        isRegisteredNotifieeIs( true );
    }
    void onTime() override { rings_(); }

  private:
    std::function<void()> rings_;
};

TEST_F( DeferredDeliveryTest, MutatorTellsNobody ) {
    gauge_->levelIs( 1 );
    EXPECT_TRUE( log_.empty() );
    settle();
    EXPECT_EQ( log_, Log{ "level" } );
    settle();
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( DeferredDeliveryTest, TwoChangesOfAScalarAreOneCallThatSeesTheLastValue ) {
    int seen = 0;
    probe_->then = [&] { seen = gauge_->level(); };
    gauge_->levelIs( 1 );
    gauge_->levelIs( 2 );
    settle();
    EXPECT_EQ( log_, Log{ "level" } );
    EXPECT_EQ( seen, 2 );
}

TEST_F( DeferredDeliveryTest, TwoScalarsAreDeliveredWithAllOthersInSlotOrder ) {
    gauge_->labelIs( "x" );
    gauge_->levelIs( 1 );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "label" } ) );
    EXPECT_EQ( probe_->defaults, ( std::vector<std::pair<Kiv::AttributeId, bool>>{ { -1, false } } ) );
}

TEST_F( DeferredDeliveryTest, DeliveryOfAllReachesScalarsThatDidNotChange ) {
    gauge_->labelIs( "x" );
    gauge_->markIs( "m" );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "label", "mark m" } ) );
}

TEST_F( DeferredDeliveryTest, ChangeMadeByACallbackOfADeliveryOfAllIsHeldBackAgain ) {
    probe_->then = [&] { gauge_->levelIs( 9 ); };
    gauge_->labelIs( "x" );
    gauge_->levelIs( 1 );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "label", "level" } ) );
}

TEST_F( DeferredDeliveryTest, OneKeyIsToldAsThatKey ) {
    gauge_->markIs( "a" );
    settle();
    EXPECT_EQ( log_, Log{ "mark a" } );
}

TEST_F( DeferredDeliveryTest, SameKeyTwiceIsToldAsThatKey ) {
    gauge_->markIs( "a" );
    gauge_->markDel( "a" );
    settle();
    EXPECT_EQ( log_, Log{ "mark a" } );
}

TEST_F( DeferredDeliveryTest, TwoKeysAreToldWithoutAKey ) {
    gauge_->markIs( "a" );
    gauge_->markIs( "b" );
    settle();
    EXPECT_EQ( log_, Log{ "marks" } );
}

TEST_F( DeferredDeliveryTest, TwoKeysInTurnAreToldWithoutAKey ) {
    gauge_->markNotify( "a" );
    gauge_->markNotify( "b" );
    gauge_->markNotify( "a" );
    settle();
    EXPECT_EQ( log_, Log{ "marks" } );
}

TEST_F( DeferredDeliveryTest, MoreKeysThanTheCountHoldsAreToldWithoutAKey ) {
    for ( int i = 0; i < 257; ++i ) {
        gauge_->markNotify( Kiv::Name( std::to_string( i ) ) );
    }
    settle();
    EXPECT_EQ( log_, Log{ "marks" } );
}

TEST_F( DeferredDeliveryTest, KeysCountAnewAfterDelivery ) {
    gauge_->markIs( "a" );
    settle();
    gauge_->markIs( "b" );
    settle();
    EXPECT_EQ( log_, ( Log{ "mark a", "mark b" } ) );
}

TEST_F( DeferredDeliveryTest, KeyWithoutAPendingCountIsNotTold ) {
    EXPECT_TRUE( probe_->kivOnAttribute( Gauge::attrMark, nullptr ) );
    settle();
    EXPECT_TRUE( log_.empty() );
}

TEST_F( DeferredDeliveryTest, AllWithTheKeyedOneTellsItWithoutAPendingKey ) {
    EXPECT_TRUE( probe_->kivOnAttribute( Probe::everyAndKey, nullptr ) );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "label", "marks" } ) );
    EXPECT_EQ( probe_->defaults, ( std::vector<std::pair<Kiv::AttributeId, bool>>{ { -2, false } } ) );
}

TEST_F( DeferredDeliveryTest, AllWithTheKeyedOneTellsItWithoutTheOneKeyThatWaits ) {
    gauge_->markIs( "a" );
    EXPECT_TRUE( probe_->kivOnAttribute( Probe::everyAndKey, nullptr ) );
    gauge_->levelIs( 1 );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "label", "marks" } ) );
}

TEST_F( DeferredDeliveryTest, AllWithoutTheKeyedOneLeavesItOutWhereNoKeyWaits ) {
    EXPECT_TRUE( probe_->kivOnAttribute( Probe::every, nullptr ) );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "label" } ) );
}

TEST_F( DeferredDeliveryTest, UnwatchedIdGoesToTheDefault ) {
    EXPECT_TRUE( probe_->kivOnAttribute( 999, nullptr ) );
    settle();
    EXPECT_EQ( probe_->defaults, ( std::vector<std::pair<Kiv::AttributeId, bool>>{ { 999, true } } ) );
    EXPECT_EQ( log_, Log{ "attribute 999" } );
}

TEST_F( DeferredDeliveryTest, CallbackLeftOutOfADeliveryOfAllLetsNothingThroughLater ) {
    EXPECT_TRUE( probe_->kivOnAttribute( Probe::every, nullptr ) );
    settle();
    log_.clear();
    gauge_->levelIs( 1 );
    EXPECT_TRUE( log_.empty() );
}

TEST_F( DeferredDeliveryTest, CallbackThatThrowsAtOnceLetsNothingThroughLater ) {
    struct Hasty : Probe {
        using Probe::Probe;
        bool throwsNow = false;
        void onLevel() override {
            if ( throwsNow ) {
                throw std::runtime_error( "oops" );
            }
            Probe::onLevel();
        }
    };
    Ptr<Hasty> const hasty( new Hasty( gauge_, log_, "" ) );
    EXPECT_TRUE( hasty->kivOnAttribute( Gauge::attrLevel, nullptr ) );
    hasty->throwsNow = true;
    settle();
    EXPECT_EQ( log_, Log{ "exception 258" } );
    hasty->throwsNow = false;
    hasty->onLevel();
    EXPECT_EQ( log_, Log{ "exception 258" } );
}

TEST_F( DeferredDeliveryTest, NothingPendingDeliversNothing ) {
    probe_->handleNotification( nullptr );
    EXPECT_TRUE( log_.empty() );
    EXPECT_TRUE( probe_->defaults.empty() );
}

TEST_F( DeferredDeliveryTest, ExceptionOfOneAttributeIsReportedWithItsId ) {
    auto const other = Probe::on( gauge_, log_, "other " );
    probe_->then = [] { throw std::runtime_error( "oops" ); };
    gauge_->levelIs( 1 );
    EXPECT_NO_THROW( settle() );
    EXPECT_EQ( log_, ( Log{ "level", "exception 258", "other level" } ) );
}

TEST_F( DeferredDeliveryTest, ExceptionOfADeliveryOfAllIsReportedWithoutId ) {
    probe_->then = [] { throw std::runtime_error( "oops" ); };
    gauge_->levelIs( 1 );
    gauge_->labelIs( "x" );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "exception" } ) );
}

TEST_F( DeferredDeliveryTest, DeliveryGoesOnAfterAnException ) {
    probe_->then = [] { throw std::runtime_error( "oops" ); };
    gauge_->levelIs( 1 );
    settle();
    probe_->then = nullptr;
    log_.clear();
    gauge_->levelIs( 2 );
    EXPECT_TRUE( log_.empty() );
    settle();
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( DeferredDeliveryTest, ChangeMadeByAHandlerIsDeliveredInTheSameTurn ) {
    probe_->then = [&] { gauge_->labelIs( "from the handler" ); };
    gauge_->levelIs( 1 );
    activity().runOnce();
    EXPECT_EQ( log_, ( Log{ "level", "label" } ) );
}

TEST_F( DeferredDeliveryTest, DeferredWorkIsDrainedBeforeTimersOfTheTurn ) {
    probe_->then = [&] { gauge_->labelIs( "second wave" ); };
    Ptr<Alarm> const alarm( new Alarm( wheel(), [&] { log_.emplace_back( "timer" ); } ) );
    alarm->timeMinIs( Kiv::now() );
    gauge_->levelIs( 1 );
    settle();
    EXPECT_EQ( log_, ( Log{ "level", "label", "timer" } ) );
}

TEST_F( DeferredDeliveryTest, ChangeMadeByATimerIsDeliveredAtTheSameInstant ) {
    Kiv::Seconds deliveredAt = 0.0;
    probe_->then = [&] { deliveredAt = elapsed(); };
    Ptr<Alarm> const alarm( new Alarm( wheel(), [&] { gauge_->levelIs( 1 ); } ) );
    alarm->timeMinIs( Kiv::now() + 5.0 );
    runFor( 10.0 );
    EXPECT_EQ( deliveredAt, 5.0 );
}

TEST_F( DeferredDeliveryTest, ChangeMadeByATimerAtTheEndOfARunIsDeliveredByThatRun ) {
    Ptr<Alarm> const alarm( new Alarm( wheel(), [&] { gauge_->levelIs( 1 ); } ) );
    alarm->timeMinIs( Kiv::now() + 5.0 );
    runFor( 5.0 );
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( DeferredDeliveryTest, DroppedReactorIsNotTold ) {
    gauge_->levelIs( 1 );
    probe_ = nullptr;
    settle();
    EXPECT_TRUE( log_.empty() );
}

TEST_F( DeferredDeliveryTest, ReactorDroppedByAnotherInTheSameDeliveryIsNotTold ) {
    auto other = Probe::on( gauge_, log_, "other " );
    probe_->then = [&] { other = nullptr; };
    gauge_->levelIs( 1 );
    settle();
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( DeferredDeliveryTest, ZombieIsNotTold ) {
    gauge_->levelIs( 1 );
    gauge_->markIs( "a" );
    probe_->kivDoZombieReactors( true );
    settle();
    EXPECT_TRUE( log_.empty() );
}

TEST_F( DeferredDeliveryTest, ReactorOfAnotherActivityIsInline ) {
    Ptr<Kiv::ActivityConfig> const inlineActivity( new Kiv::ActivityConfig );
    probe_->kivFwkActivityIs( inlineActivity );
    gauge_->levelIs( 1 );
    EXPECT_EQ( log_, Log{ "level" } );
}

TEST_F( DeferredDeliveryTest, NullActivityIsTheDefaultOne ) {
    EXPECT_EQ( probe_->kivFwkActivity(), nullptr );
    EXPECT_EQ( probe_->actsm(), &activity() );
    EXPECT_EQ( Kiv::kivActivitySmFor( nullptr ), Kiv::kivActivitySmFor( Kiv::defaultActivity().get() ) );
}

TEST_F( DeferredDeliveryTest, ReactorKnowsItsActivity ) {
    Ptr<Kiv::ActivityConfig> const other( new Kiv::ActivityConfig );
    probe_->kivFwkActivityIs( other );
    EXPECT_EQ( probe_->activityPtr(), other );
    EXPECT_EQ( probe_->actsm(), &other->activitySm() );
}

TEST_F( DeferredDeliveryTest, TimersAreHeldBackLikeAnyNotification ) {
    struct Idiom : Alarm {
        using Alarm::Alarm;
        int handled = 0;
        void onTime() override { handled += deliverable( Kiv::attrTime ); }
        std::span<Kiv::Watch const> watches() const override {
            static constexpr Kiv::Watch rows[] = { Kiv::watch<&Idiom::onTime>( Kiv::attrTime ) };
            return rows;
        }
    };
    Ptr<Idiom> const timer( new Idiom( wheel(), nullptr ) );
    timer->timeMinIs( Kiv::now() );
    wheel()->expire( Kiv::now() );
    EXPECT_EQ( timer->handled, 0 );
    settle();
    EXPECT_EQ( timer->handled, 1 );
}

} // namespace
