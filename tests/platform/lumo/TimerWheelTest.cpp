#include "platform/lumo/TimerWheel.h"

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "tests/platform/lumo/Alarm.h"
#include "tests/support/SimulatedTest.h"

namespace {

using Kiv::never;
using Kiv::Ptr;
using Kiv::Seconds;

constexpr Seconds tick = Kiv::ActivitySm::tick;

class TimerWheelTest : public Support::SimulatedTest {
  protected:
    /// A timer that writes down its number and the time when it fires.
    Ptr<Alarm> alarm( int number ) {
        return Alarm::on( wheel(), [this, number] {
            fired_.push_back( number );
            times_.push_back( elapsed() );
        } );
    }
    Ptr<Alarm> alarm( int number, Seconds after ) {
        Ptr<Alarm> const made = alarm( number );
        made->timeMinIs( start() + after );
        return made;
    }
    void also( Ptr<Alarm> const& alarm, std::function<void()> what ) {
        alarm->rings = [before = alarm->rings, what = std::move( what )] {
            before();
            what();
        };
    }

    std::vector<int> fired_;
    std::vector<Seconds> times_;
};

using Fired = std::vector<int>;
using Times = std::vector<Seconds>;

TEST_F( TimerWheelTest, FiresOnceAtItsTime ) {
    auto const timer = alarm( 1, 5.0 );
    runFor( 4.999 );
    EXPECT_EQ( fired_, Fired{} );
    runFor( 100.0 );
    EXPECT_EQ( fired_, Fired{ 1 } );
    EXPECT_EQ( times_, Times{ 5.0 } );
}

TEST_F( TimerWheelTest, FiresAtItsExactTimeWithinATick ) {
    Seconds const between = 1.70828036010628972;
    auto const timer = alarm( 1, between );
    runFor( 10.0 );
    EXPECT_EQ( times_[0], start() + between - start() );
}

TEST_F( TimerWheelTest, RunUpToTheVeryTimeServesIt ) {
    Seconds const between = 0.1234567891;
    auto const timer = alarm( 1, between );
    activity().runUntilTime( timer->timeMin() );
    EXPECT_EQ( fired_, Fired{ 1 } );
}

TEST_F( TimerWheelTest, DoesNotFireEarlierInTheSameTick ) {
    auto const timer = alarm( 1, 0.5 + 0.8 * tick );
    runUntilElapsed( 0.5 + 0.1 * tick );
    EXPECT_EQ( fired_, Fired{} );
    EXPECT_EQ( wheel()->nextDeadline(), timer->timeMin() );
    runUntilElapsed( 0.5 + 2 * tick );
    EXPECT_EQ( fired_, Fired{ 1 } );
}

TEST_F( TimerWheelTest, FiresInTheOrderOfTimesWhateverTheOrderOfArming ) {
    std::vector<Ptr<Alarm>> timers;
    for ( int n : { 5, 2, 9, 1, 7 } ) {
        timers.push_back( alarm( n, n ) );
    }
    runFor( 10.0 );
    EXPECT_EQ( fired_, ( Fired{ 1, 2, 5, 7, 9 } ) );
    EXPECT_EQ( times_, ( Times{ 1, 2, 5, 7, 9 } ) );
}

TEST_F( TimerWheelTest, OrderHoldsWithinATick ) {
    auto const later = alarm( 2, 1.0 + 0.7 * tick );
    auto const sooner = alarm( 1, 1.0 + 0.3 * tick );
    clock().advanceTo( start() + 2.0 );
    settle();
    EXPECT_EQ( fired_, ( Fired{ 1, 2 } ) );
}

TEST_F( TimerWheelTest, EqualTimesFireInTheOrderOfArming ) {
    std::vector<Ptr<Alarm>> timers;
    for ( int n = 0; n < 20; ++n ) {
        timers.push_back( alarm( n, 300.0 ) );
    }
    timers[3]->timeMinIs( start() + 300.0 );
    runFor( 300.0 );
    EXPECT_EQ( fired_, ( Fired{ 0, 1, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 3 } ) );
}

TEST_F( TimerWheelTest, EqualTimesKeepTheirOrderAmongOthers ) {
    std::vector<Ptr<Alarm>> timers;
    Fired expected;
    for ( int n = 0; n < 100; ++n ) {
        timers.push_back( alarm( n, n % 2 == 0 ? -1.0 : -2.0 ) );
        expected.insert( expected.begin() + ( n % 2 == 0 ? n : n / 2 ), n );
    }
    settle();
    EXPECT_EQ( fired_, expected );
}

TEST_F( TimerWheelTest, EqualTimesArmedFromNearAndFarKeepTheirOrder ) {
    auto const far = alarm( 1, 300.0 );
    runFor( 299.9999 );
    auto const near = alarm( 2, 300.0 );
    runFor( 1.0 );
    EXPECT_EQ( fired_, ( Fired{ 1, 2 } ) );
}

TEST_F( TimerWheelTest, EqualTimesKeepTheirOrderWhenManyOfThemAreCancelled ) {
    std::vector<Ptr<Alarm>> timers;
    for ( int n = 0; n < 400; ++n ) {
        timers.push_back( alarm( n, 300.0 ) );
    }
    Fired expected;
    for ( int n = 0; n < 400; ++n ) { // a long stretch, and every third
        if ( n < 150 || n % 3 == 0 ) {
            timers[static_cast<std::size_t>( n )]->timeMinIs( never );
        } else {
            expected.push_back( n );
        }
    }
    timers[7]->timeMinIs( start() + 300.0 );
    expected.push_back( 7 );
    EXPECT_EQ( wheel()->armedTimers(), expected.size() );
    runFor( 300.0 );
    EXPECT_EQ( fired_, expected );
}

TEST_F( TimerWheelTest, CancellingTheLastTimerOfAStretchLeavesNoDeadline ) {
    std::vector<Ptr<Alarm>> timers;
    for ( int n = 0; n < 100; ++n ) {
        timers.push_back( alarm( n, 300.0 ) );
    }
    auto const late = alarm( 100, 9000.0 );
    for ( Ptr<Alarm> const& timer : timers ) {
        timer->timeMinIs( never );
    }
    EXPECT_EQ( wheel()->nextDeadline(), late->timeMin() );
    late->timeMinIs( never );
    EXPECT_EQ( wheel()->nextDeadline(), never );
}

TEST_F( TimerWheelTest, PutOffWithoutEndTimersKeepTheirMemory ) {
    std::vector<Ptr<Alarm>> timers;
    for ( int n = 0; n < 1000; ++n ) {
        timers.push_back( alarm( n, 400.0 ) );
    }
    auto const before = mallinfo2().uordblks;
    for ( int round = 0; round < 1000; ++round ) {
        for ( Ptr<Alarm> const& timer : timers ) {
            timer->timeMinIs( start() + 400.0 + 0.001 * round );
        }
    }
    EXPECT_LT( mallinfo2().uordblks, before + 64 * 1024 );
}

TEST_F( TimerWheelTest, LaterCallReplacesTheTime ) {
    auto const timer = alarm( 1, 5.0 );
    timer->timeMinIs( start() + 7.0 );
    EXPECT_EQ( wheel()->armedTimers(), 1U );
    runFor( 10.0 );
    EXPECT_EQ( times_, Times{ 7.0 } );
}

TEST_F( TimerWheelTest, TimeMayBeMovedForwardToo ) {
    auto const timer = alarm( 1, 500.0 );
    timer->timeMinIs( start() + 0.25 );
    runFor( 1000.0 );
    EXPECT_EQ( times_, Times{ 0.25 } );
}

TEST_F( TimerWheelTest, InfinityPreventsThePendingExpiryAndAFiniteTimeArmsAgain ) {
    auto const timer = alarm( 1, 5.0 );
    timer->timeMinIs( never );
    EXPECT_EQ( timer->timeMin(), never );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    runFor( 10.0 );
    EXPECT_EQ( fired_, Fired{} );
    timer->timeMinIs( start() + 12.0 );
    runFor( 10.0 );
    EXPECT_EQ( times_, Times{ 12.0 } );
}

TEST_F( TimerWheelTest, NeverArmedReadsAsInfinity ) {
    auto const timer = alarm( 1 );
    EXPECT_EQ( timer->timeMin(), never );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_F( TimerWheelTest, ReadsAsInfinityByTheTimeItFires ) {
    auto const timer = alarm( 1, 5.0 );
    Seconds within = 0.0;
    also( timer, [&] { within = timer->timeMin(); } );
    EXPECT_EQ( timer->timeMin(), start() + 5.0 );
    runFor( 5.0 );
    EXPECT_EQ( within, never );
    EXPECT_EQ( timer->timeMin(), never );
}

TEST_F( TimerWheelTest, SameAbsoluteTimeMayBeSetAgainAfterFiring ) {
    auto const timer = alarm( 1, 5.0 );
    runFor( 5.0 );
    timer->timeMinIs( start() + 5.0 );
    settle();
    EXPECT_EQ( fired_, ( Fired{ 1, 1 } ) );
}

TEST_F( TimerWheelTest, SameAbsoluteTimeSetByTheTimerItselfFiresAgain ) {
    auto const timer = alarm( 1, 5.0 );
    also( timer, [&] {
        if ( fired_.size() == 1 ) {
            timer->timeMinIs( start() + 5.0 );
        }
    } );
    runFor( 6.0 );
    EXPECT_EQ( fired_, ( Fired{ 1, 1 } ) );
}

TEST_F( TimerWheelTest, PastTimeFiresOnTheNextTurnAndNeverInsideTheCall ) {
    auto const timer = alarm( 1, -400.0 );
    EXPECT_EQ( fired_, Fired{} );
    settle();
    EXPECT_EQ( times_, Times{ 0.0 } );
}

TEST_F( TimerWheelTest, PastTimesFireInTheirOrderBeforeThePresent ) {
    auto const now = alarm( 3, 0.0 );
    auto const early = alarm( 1, -400.0 );
    auto const middle = alarm( 2, -4.0 );
    settle();
    EXPECT_EQ( fired_, ( Fired{ 1, 2, 3 } ) );
}

TEST_F( TimerWheelTest, TimesBeforeTheClocksOriginAreInThePast ) {
    auto const timer = alarm( 2, -5000.0 );
    auto const earliest = alarm( 1, -std::numeric_limits<double>::infinity() );
    settle();
    EXPECT_EQ( fired_, ( Fired{ 1, 2 } ) );
}

TEST_F( TimerWheelTest, RearmForNowFiresOnTheNextTurnATickLater ) {
    auto const timer = alarm( 1, 1.0 );
    also( timer, [&] { timer->timeMinIs( Kiv::now() ); } );
    runUntilElapsed( 1.0 );
    EXPECT_EQ( fired_.size(), 1U );
    activity().runOnce();
    activity().runOnce();
    ASSERT_EQ( fired_.size(), 3U );
    EXPECT_NEAR( times_[1] - times_[0], tick, tick * 1e-3 );
    EXPECT_NEAR( times_[2] - times_[1], tick, tick * 1e-3 );
}

TEST_F( TimerWheelTest, MachineThatRearmsForNowCannotHoldASimulation ) {
    auto const timer = alarm( 1, 0.0 );
    also( timer, [&] { timer->timeMinIs( Kiv::now() ); } );
    runFor( 100 * tick );
    EXPECT_NEAR( static_cast<double>( fired_.size() ), 100.0, 2.0 );
    EXPECT_EQ( elapsed(), start() + 100 * tick - start() );
}

TEST_F( TimerWheelTest, TimerMayRearmItself ) {
    auto const timer = alarm( 1, 5.0 );
    also( timer, [&] { timer->timeMinIs( Kiv::now() + 5.0 ); } );
    runFor( 21.0 );
    EXPECT_EQ( times_, ( Times{ 5, 10, 15, 20 } ) );
}

TEST_F( TimerWheelTest, TimerMayArmAnother ) {
    auto const second = alarm( 2 );
    auto const first = alarm( 1, 1.0 );
    also( first, [&] { second->timeMinIs( Kiv::now() + 1.0 ); } );
    runFor( 5.0 );
    EXPECT_EQ( times_, ( Times{ 1, 2 } ) );
}

TEST_F( TimerWheelTest, TimerMayCancelAnotherThatIsDueInTheSameTurn ) {
    auto const first = alarm( 1, 1.0 );
    auto const second = alarm( 2, 1.0 );
    also( first, [&] { second->timeMinIs( never ); } );
    runFor( 5.0 );
    EXPECT_EQ( fired_, Fired{ 1 } );
}

TEST_F( TimerWheelTest, TimerMayPutOffAnotherThatIsDueInTheSameTurn ) {
    auto const first = alarm( 1, 1.0 );
    auto const second = alarm( 2, 1.0 );
    also( first, [&] { second->timeMinIs( start() + 3.0 ); } );
    runFor( 5.0 );
    EXPECT_EQ( times_, ( Times{ 1, 3 } ) );
}

TEST_F( TimerWheelTest, TimerMayDestroyAnotherThatIsDueInTheSameTurn ) {
    auto const first = alarm( 1, 1.0 );
    auto second = alarm( 2, 1.0 );
    auto const third = alarm( 3, 1.0 );
    also( first, [&] { second = nullptr; } );
    runFor( 5.0 );
    EXPECT_EQ( fired_, ( Fired{ 1, 3 } ) );
}

TEST_F( TimerWheelTest, TimerMayDestroyItsOwner ) {
    auto owner = alarm( 1, 1.0 );
    auto const after = alarm( 2, 1.0 );
    Alarm* const raw = owner.get();
    raw->rings = [&, keep = raw->rings] {
        keep();
        owner = nullptr;
    };
    runFor( 5.0 );
    EXPECT_EQ( fired_, ( Fired{ 1, 2 } ) );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_F( TimerWheelTest, DestroyedTimerIsUnlinked ) {
    auto timer = alarm( 1, 5.0 );
    timer = nullptr;
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    EXPECT_EQ( wheel()->nextDeadline(), never );
    runFor( 10.0 );
}

TEST_F( TimerWheelTest, ExceptionOfATimerDoesNotStopTheNext ) {
    auto const first = alarm( 1, 1.0 );
    auto const second = alarm( 2, 1.0 );
    also( first, [] { throw std::runtime_error( "oops" ); } );
    EXPECT_NO_THROW( runFor( 2.0 ) );
    EXPECT_EQ( fired_, ( Fired{ 1, 2 } ) );
    EXPECT_EQ( first->exceptionOf, Kiv::attrTime );
}

TEST_F( TimerWheelTest, HugeTimesStayArmedAndDoNotFire ) {
    auto const timer = alarm( 1, std::numeric_limits<double>::max() );
    auto const other = alarm( 2, 1e15 );
    EXPECT_EQ( wheel()->armedTimers(), 2U );
    EXPECT_EQ( wheel()->nextDeadline(), start() + 1e15 );
    runFor( 1e6 );
    EXPECT_EQ( fired_, Fired{} );
    EXPECT_EQ( timer->timeMin(), std::numeric_limits<double>::max() );
}

TEST_F( TimerWheelTest, HugeTimesFireInOrderWhenTheyCome ) {
    auto const second = alarm( 2, 2e15 );
    auto const first = alarm( 1, 1e15 );
    runFor( 3e15 );
    EXPECT_EQ( fired_, ( Fired{ 1, 2 } ) );
}

TEST_F( TimerWheelTest, NotANumberIsNoTime ) {
    auto const timer = alarm( 1, std::nan( "" ) );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

TEST_F( TimerWheelTest, NextDeadlineIsTheFirstTimeExactly ) {
    EXPECT_EQ( wheel()->nextDeadline(), never );
    auto const far = alarm( 1, 500.0 );
    EXPECT_EQ( wheel()->nextDeadline(), start() + 500.0 );
    auto const near = alarm( 2, 0.3 );
    EXPECT_EQ( wheel()->nextDeadline(), start() + 0.3 );
}

TEST_F( TimerWheelTest, NextDeadlineIsExactAfterCancelling ) {
    auto const first = alarm( 1, 100.0 );
    auto const second = alarm( 2, 100.000003 );
    auto const third = alarm( 3, 2000.0 );
    EXPECT_EQ( wheel()->nextDeadline(), start() + 100.0 );
    first->timeMinIs( never );
    EXPECT_EQ( wheel()->nextDeadline(), start() + 100.000003 );
    second->timeMinIs( start() + 3000.0 );
    EXPECT_EQ( wheel()->nextDeadline(), start() + 2000.0 );
    third->timeMinIs( never );
    EXPECT_EQ( wheel()->nextDeadline(), start() + 3000.0 );
}

TEST_F( TimerWheelTest, NextDeadlineOfAPastTimeIsThatTime ) {
    auto const future = alarm( 1, 5.0 );
    auto const past = alarm( 2, -5.0 );
    EXPECT_EQ( wheel()->nextDeadline(), start() - 5.0 );
}

TEST_F( TimerWheelTest, UnregisteredTimerWaitsAndKeepsItsTime ) {
    auto const timer = alarm( 1, 5.0 );
    timer->isRegisteredNotifieeIs( false );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    runFor( 4.0 );
    EXPECT_EQ( timer->timeMin(), start() + 5.0 );
    timer->isRegisteredNotifieeIs( true );
    runFor( 4.0 );
    EXPECT_EQ( times_, Times{ 5.0 } );
}

TEST_F( TimerWheelTest, InactiveTimerDoesNotFire ) {
    auto const timer = alarm( 1, 5.0 );
    timer->hasNotificationActiveIs( false );
    runFor( 10.0 );
    EXPECT_EQ( fired_, Fired{} );
    timer->hasNotificationActiveIs( true );
    settle();
    EXPECT_EQ( times_, Times{ 10.0 } );
}

TEST_F( TimerWheelTest, ZombieTimerDoesNotFire ) {
    auto const timer = alarm( 1, 5.0 );
    timer->kivDoZombieReactors( true );
    timer->timeMinIs( start() + 6.0 );
    runFor( 10.0 );
    EXPECT_EQ( fired_, Fired{} );
}

TEST_F( TimerWheelTest, TimerMovesToAnotherWheelWithItsTime ) {
    auto const timer = alarm( 1, 5.0 );
    Ptr<Lumo::TimerWheel> const other( new Lumo::TimerWheel );
    timer->notifierIs( other );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    EXPECT_EQ( other->armedTimers(), 1U );
    runFor( 5.0 );
    EXPECT_EQ( times_, Times{ 5.0 } );
}

TEST_F( TimerWheelTest, TimerWithoutAWheelKeepsQuiet ) {
    auto const timer = alarm( 1, 5.0 );
    timer->notifierIs( nullptr );
    timer->timeMinIs( start() + 6.0 );
    runFor( 10.0 );
    EXPECT_EQ( fired_, Fired{} );
    EXPECT_EQ( timer->timeMin(), start() + 6.0 );
}

TEST_F( TimerWheelTest, WheelLivesAsLongAsATimerOnIt ) {
    Ptr<Lumo::TimerWheel> other( new Lumo::TimerWheel );
    auto timer = Alarm::on( other, [this] { fired_.push_back( 1 ); } );
    other = nullptr;
    timer->timeMinIs( start() + 1.0 );
    runFor( 2.0 );
    EXPECT_EQ( fired_, Fired{ 1 } );
}

TEST_F( TimerWheelTest, WheelMayLoseItsLastTimerWhileItFires ) {
    Ptr<Lumo::TimerWheel> other( new Lumo::TimerWheel );
    auto timer = Alarm::on( other );
    timer->rings = [&] { timer = nullptr; };
    timer->timeMinIs( start() + 1.0 );
    other = nullptr;
    runFor( 2.0 );
    EXPECT_EQ( timer, nullptr );
}

TEST_F( TimerWheelTest, ManyTimersFireInOrder ) {
    constexpr int count = 200'000;
    std::vector<Ptr<Alarm>> timers;
    timers.reserve( count );
    Seconds last = 0.0;
    int outOfOrder = 0;
    int served = 0;
    for ( int n = 0; n < count; ++n ) {
        timers.push_back( Alarm::on( wheel(), [&] {
            outOfOrder += Kiv::now() < last;
            last = Kiv::now();
            ++served;
        } ) );
        timers.back()->timeMinIs( start() + static_cast<double>( ( n * 7919LL ) % count ) * 5e-5 );
    }
    EXPECT_EQ( wheel()->armedTimers(), static_cast<std::size_t>( count ) );
    runFor( 10.0 );
    EXPECT_EQ( served, count );
    EXPECT_EQ( outOfOrder, 0 );
}

/// All are due when the clock, which has jumped over them, is looked at.
TEST_F( TimerWheelTest, HundredThousandTimersOfOneMillisecondFireInOrderInOneTurn ) {
    constexpr int count = 100'000;
    std::vector<Ptr<Alarm>> timers;
    std::vector<int> order; // of deadlines
    for ( int n = 0; n < count; ++n ) {
        int const place = static_cast<int>( n * 7919LL % count );
        timers.push_back( Alarm::on( wheel(), [&order, place] { order.push_back( place ); } ) );
        timers.back()->timeMinIs( start() + 1.0 + place * 1e-8 );
    }
    clock().advanceTo( start() + 3600.0 );
    EXPECT_EQ( wheel()->expire( clock().now() ), static_cast<std::size_t>( count ) );
    EXPECT_EQ( order.size(), static_cast<std::size_t>( count ) );
    EXPECT_TRUE( std::ranges::is_sorted( order ) );
}

/// Times of the size that the wall clock gives.
class WallClockTimerWheelTest : public Support::SimulatedTest {
  protected:
    WallClockTimerWheelTest() : SimulatedTest( 1.8e9 + 0.123456 ) {}
};

TEST_F( WallClockTimerWheelTest, FiresAtItsTime ) {
    Seconds at = 0.0;
    auto const timer = Alarm::on( wheel(), [&] { at = Kiv::now(); } );
    Seconds const wanted = start() + 0.7499019;
    timer->timeMinIs( wanted );
    EXPECT_EQ( wheel()->nextDeadline(), wanted );
    runFor( 1.0 );
    EXPECT_EQ( at, wanted );
}

TEST_F( WallClockTimerWheelTest, MachineThatRearmsForNowCannotHoldASimulation ) {
    int fired = 0;
    auto const timer = Alarm::on( wheel() );
    timer->rings = [&] {
        ++fired;
        timer->timeMinIs( Kiv::now() );
    };
    timer->timeMinIs( Kiv::now() );
    runFor( 0.001 );
    EXPECT_GT( fired, 500 );
    EXPECT_LT( fired, 1100 );
}

/// A clock that starts at zero.
class ZeroClockTimerWheelTest : public Support::SimulatedTest {
  protected:
    ZeroClockTimerWheelTest() : SimulatedTest( 0.0 ) {}
};

TEST_F( ZeroClockTimerWheelTest, ZeroIsATimeLikeAnyOther ) {
    int fired = 0;
    auto const timer = Alarm::on( wheel(), [&] { ++fired; } );
    timer->timeMinIs( 0.0 );
    EXPECT_EQ( wheel()->armedTimers(), 1U );
    settle();
    EXPECT_EQ( fired, 1 );
}

} // namespace
