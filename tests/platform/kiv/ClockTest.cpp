#include "platform/kiv/Clock.h"

#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/HurryingClock.h"

namespace {

TEST( ClockTest, SystemClockIsSetToTheWallClockAndGoesForward ) {
    Kiv::SystemClock const clock;
    Kiv::Seconds const first = clock.now();
    EXPECT_NEAR( first, static_cast<double>( std::time( nullptr ) ), 5.0 );
    EXPECT_GE( clock.now(), first );
    EXPECT_FALSE( clock.isSimulated() );
}

TEST( ClockTest, SystemClockIsNotMovedByHand ) {
    Kiv::SystemClock clock;
    clock.advanceTo( 1e12 );
    EXPECT_LT( clock.now(), 1e11 );
    EXPECT_FALSE( clock.instantServed() );
}

TEST( ClockTest, SystemClockIsInForceByDefault ) {
    EXPECT_FALSE( Kiv::clock().isSimulated() );
    EXPECT_GT( Kiv::now(), 1e9 );
}

TEST( ClockTest, SimulatedClockStartsAwayFromZeroAndStandsStill ) {
    Kiv::SimulatedClock const clock;
    EXPECT_EQ( clock.now(), 1000.0 );
    EXPECT_EQ( clock.now(), 1000.0 );
    EXPECT_TRUE( clock.isSimulated() );
}

TEST( ClockTest, SimulatedClockNeverGoesBack ) {
    Kiv::SimulatedClock clock( 5.0 );
    clock.advanceTo( 7.0 );
    clock.advanceTo( 6.0 );
    EXPECT_EQ( clock.now(), 7.0 );
}

TEST( ClockTest, MarkOfAServedInstantGoesWithTheInstant ) {
    Kiv::SimulatedClock clock( 5.0 );
    clock.instantServedIs( true );
    clock.advanceTo( 5.0 );
    EXPECT_TRUE( clock.instantServed() );
    clock.advanceTo( 6.0 );
    EXPECT_FALSE( clock.instantServed() );
}

TEST( ClockTest, ScopesExchangeTheClockAndNest ) {
    Kiv::SimulatedClock outer( 10.0 );
    Kiv::SimulatedClock inner( 20.0 );
    {
        Kiv::ClockScope const outerScope( outer );
        EXPECT_EQ( Kiv::now(), 10.0 );
        {
            Kiv::ClockScope const innerScope( inner );
            EXPECT_EQ( Kiv::now(), 20.0 );
        }
        EXPECT_EQ( Kiv::now(), 10.0 );
    }
    EXPECT_FALSE( Kiv::clock().isSimulated() );
}

TEST( ClockTest, MomentScopeStopsTheClockInForce ) {
    Support::HurryingClock clock;
    Kiv::ClockScope const scope( clock );
    {
        Kiv::MomentScope const moment;
        EXPECT_EQ( Kiv::now(), 1.0 );
        EXPECT_EQ( Kiv::now(), 1.0 );
        Kiv::MomentScope const same;
        EXPECT_EQ( Kiv::now(), 1.0 );
    }
    EXPECT_EQ( Kiv::now(), 2.0 );
}

TEST( ClockTest, MomentScopeLeavesASimulatedClockInForce ) {
    Kiv::SimulatedClock clock( 5.0 );
    Kiv::ClockScope const scope( clock );
    Kiv::MomentScope const moment;
    EXPECT_EQ( &Kiv::clock(), &clock );
}

TEST( ClockTest, NeverIsTheOnlyTimeAboveTheLargestFiniteOne ) {
    EXPECT_TRUE( Kiv::isFinite( 0.0 ) );
    EXPECT_TRUE( Kiv::isFinite( std::numeric_limits<double>::max() ) );
    EXPECT_FALSE( Kiv::isFinite( std::numeric_limits<double>::quiet_NaN() ) );
    EXPECT_FALSE( Kiv::isFinite( Kiv::never ) );
    EXPECT_FALSE( Kiv::isFinite( Kiv::never - 1e300 ) );
}

} // namespace
