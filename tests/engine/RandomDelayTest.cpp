#include "engine/RandomDelay.h"

#include "tests/support/HostTest.h"
#include "tests/support/NextDraw.h"
#include "tests/support/TraceCapture.h"

namespace {

using Igmp::randomDelay;
using Support::nextDrawIs;
using ::testing::ElementsAre;

constexpr double tolerance = 1e-9;

TEST( RandomDelay, DrawAboveATenthScalesTheMaximum ) {
    nextDrawIs( 0.5 );
    EXPECT_DOUBLE_EQ( randomDelay( 10.0 ), 5.0 );
    nextDrawIs( 0.25 );
    EXPECT_DOUBLE_EQ( randomDelay( 3.0 ), 0.75 );
}

TEST( RandomDelay, DrawBelowATenthIsRaisedByATenth ) {
    nextDrawIs( 0.05 );
    EXPECT_NEAR( randomDelay( 10.0 ), 1.5, tolerance );
}

TEST( RandomDelay, DrawOfZeroGivesATenth ) {
    nextDrawIs( 0.0 );
    EXPECT_DOUBLE_EQ( randomDelay( 10.0 ), 1.0 );
}

TEST( RandomDelay, DrawOfATenthIsNotRaised ) {
    nextDrawIs( 0.1 );
    EXPECT_NEAR( randomDelay( 10.0 ), 1.0, tolerance );
}

TEST( RandomDelay, DrawJustBelowATenthIsRaised ) {
    nextDrawIs( static_cast<std::uint64_t>( 0.1 * static_cast<double>( Support::drawModulus ) ) );
    EXPECT_NEAR( randomDelay( 10.0 ), 2.0, tolerance );
}

TEST( RandomDelay, GreatestDrawStaysBelowTheMaximum ) {
    nextDrawIs( Support::drawModulus - 1 );
    EXPECT_LT( randomDelay( 10.0 ), 10.0 );
}

TEST( RandomDelay, LiesFromATenthToTheMaximum ) {
    srand48( 7 );
    for ( int i = 0; i < 100'000; ++i ) {
        double const delay = randomDelay( 10.0 );
        ASSERT_GE( delay, 1.0 );
        ASSERT_LT( delay, 10.0 );
    }
}

TEST( RandomDelay, SecondTenthIsTwiceAsLikelyAsAnyOther ) {
    srand48( 7 );
    int counts[10] = {};
    for ( int i = 0; i < 100'000; ++i ) {
        ++counts[static_cast<int>( randomDelay( 10.0 ) )];
    }
    EXPECT_EQ( counts[0], 0 );
    EXPECT_NEAR( counts[1], 20'000, 600 );
    for ( int tenth = 2; tenth < 10; ++tenth ) {
        EXPECT_NEAR( counts[tenth], 10'000, 400 );
    }
}

TEST( RandomDelay, TakesOneDrawEachTime ) {
    srand48( 7 );
    drand48();
    double const second = drand48();
    srand48( 7 );
    randomDelay( 10.0 );
    EXPECT_EQ( drand48(), second );
    nextDrawIs( 0.0 ); // the one that is raised
    drand48();
    double const next = drand48();
    nextDrawIs( 0.0 );
    randomDelay( 10.0 );
    EXPECT_EQ( drand48(), next );
}

TEST( RandomDelay, MaximumOfZeroGivesZero ) {
    EXPECT_EQ( randomDelay( 0.0 ), 0.0 );
}

TEST( RandomDelay, SaysWhatItDrew ) {
    Support::TraceCapture trace( "IgmpHost", 9 );
    nextDrawIs( 0.5 );
    randomDelay( 10.0 );
    EXPECT_THAT( trace.texts(), ElementsAre( "randomDelay: maxSecs 10 delay 5" ) );
}

TEST( RandomDelay, SaysWhatItRaised ) {
    Support::TraceCapture trace( "IgmpHost", 9 );
    nextDrawIs( 0.05 );
    randomDelay( 10.0 );
    EXPECT_THAT(
        trace.texts(),
        ElementsAre(
            "randomDelay: making r bigger.  orig: 0.05 new 0.15", "randomDelay: maxSecs 10 delay 1.5"
        )
    );
}

class DelaySeed : public Support::HostTest {
  protected:
    static double firstDrawOfSeed( long seed ) {
        srand48( seed );
        return drand48();
    }
};

TEST_F( DelaySeed, NewHostStartsTheSequenceOfItsWholeSecondsAnew ) {
    double const expected = firstDrawOfSeed( 1003 );
    srand48( 7 );
    runUntilElapsed( 3.999 );
    addHost( "second", "10.0.0.2" );
    EXPECT_EQ( drand48(), expected );
}

TEST_F( DelaySeed, LaterHostReseedsForAll ) {
    double const expected = firstDrawOfSeed( 1000 );
    drand48();
    drand48();
    addHost( "second", "10.0.0.2" );
    EXPECT_EQ( drand48(), expected );
    addHost( "third", "10.0.0.3" );
    EXPECT_EQ( drand48(), expected );
}

TEST_F( DelaySeed, EnablingDoesNotReseed ) {
    srand48( 7 );
    double const expected = firstDrawOfSeed( 7 );
    srand48( 7 );
    enable();
    EXPECT_EQ( drand48(), expected );
}

} // namespace
