#include "lab/Impairment.h"

#include "platform/kiv/Exception.h"
#include "tests/lab/WireTest.h"

namespace Lab {

class ImpairmentTest : public WireTest {
  protected:
    using WireTest::WireTest;

    void impair( Impairment const& impairment ) { lan().impairmentIs( impairment ); }
    /// Sends frames from a, a millisecond apart, until b has had time to hear them all.
    void sendSpaced( int frames ) {
        for ( int i = 0; i < frames; ++i ) {
            a->send( std::string( 1, static_cast<char>( 'a' + i % 26 ) ) );
            runFor( 1e-3 );
        }
        runFor( 10.0 );
    }
};

TEST_F( ImpairmentTest, RefusesProbabilitiesOutsideZeroToOne ) {
    EXPECT_THROW( impair( { .loss = 1.1 } ), Kiv::RangeException );
    EXPECT_THROW( impair( { .duplication = -0.1 } ), Kiv::RangeException );
    EXPECT_THROW( impair( { .reordering = 0.0 / 0.0 } ), Kiv::RangeException );
}

TEST_F( ImpairmentTest, RefusesTimesBelowZeroAndWithoutEnd ) {
    EXPECT_THROW( impair( { .delay = -1.0 } ), Kiv::RangeException );
    EXPECT_THROW( impair( { .jitter = Kiv::never } ), Kiv::RangeException );
    EXPECT_THROW( impair( { .reorderingDelay = -1.0 } ), Kiv::RangeException );
    EXPECT_EQ( lan().impairment().delay, 0.0 );
}

TEST_F( ImpairmentTest, DelayIsExact ) {
    impair( { .delay = 0.25 } );
    a->send( "x" );
    Seconds const sent = Kiv::now();
    runFor( 1.0 );
    EXPECT_THAT( b->times, ElementsAre( sent + 0.25 ) );
    EXPECT_THAT( c->times, ElementsAre( sent + 0.25 ) );
}

TEST_F( ImpairmentTest, JitterAddsUpToItsSpanAndKeepsTheOrder ) {
    impair( { .delay = 0.25, .jitter = 0.5 } );
    Seconds const sent = Kiv::now();
    a->send( "abcdefghij" );
    runFor( 1.0 );
    EXPECT_EQ( b->heard, "abcdefghij" );
    EXPECT_GE( b->times.front(), sent + 0.25 );
    EXPECT_LT( b->times.back(), sent + 0.75 );
    EXPECT_LT( b->times.front(), b->times.back() );
}

TEST_F( ImpairmentTest, ShorterDelayDoesNotLetFramesOvertake ) {
    impair( { .delay = 0.5 } );
    a->send( "x" );
    impair( {} );
    a->send( "y" );
    runFor( 1.0 );
    EXPECT_EQ( b->heard, "xy" );
}

TEST_F( ImpairmentTest, TotalLossLosesEverything ) {
    impair( { .loss = 1.0 } );
    a->send( "xyz" );
    runFor( 1.0 );
    EXPECT_EQ( b->heard, "" );
    EXPECT_EQ( lan().counters().lost, 3U );
    EXPECT_EQ( a->pam->txDrops(), 0U );
}

TEST_F( ImpairmentTest, LossTakesItsShareAndTheSameOfEachReceiver ) {
    impair( { .loss = 0.3 } );
    sendSpaced( 1000 );
    EXPECT_NEAR( static_cast<double>( b->heard.size() ), 700.0, 60.0 );
    EXPECT_EQ( b->heard, c->heard );
    EXPECT_EQ( lan().counters().lost, 1000U - b->heard.size() );
}

TEST_F( ImpairmentTest, DuplicationDeliversTwice ) {
    impair( { .duplication = 1.0 } );
    a->send( "xy" );
    runFor( 1.0 );
    EXPECT_EQ( b->heard, "xxyy" );
    EXPECT_EQ( lan().counters().duplicated, 2U );
}

TEST_F( ImpairmentTest, DuplicationTakesItsShare ) {
    impair( { .duplication = 0.25 } );
    sendSpaced( 1000 );
    EXPECT_NEAR( static_cast<double>( b->heard.size() ), 1250.0, 60.0 );
}

TEST_F( ImpairmentTest, HeldBackFrameIsOvertaken ) {
    impair( { .reordering = 1.0, .reorderingDelay = 0.5 } );
    Seconds const sent = Kiv::now();
    a->send( "x" );
    impair( {} );
    a->send( "y" );
    runFor( 1.0 );
    EXPECT_EQ( b->heard, "yx" );
    EXPECT_DOUBLE_EQ( b->times.at( 1 ), sent + 0.5 );
    EXPECT_EQ( lan().counters().heldBack, 1U );
}

TEST_F( ImpairmentTest, ReorderingLosesNothing ) {
    impair( { .reordering = 0.5, .reorderingDelay = 5e-3 } );
    a->send( "abcdefghijklmnopqrstuvwxyz" );
    runFor( 1.0 );
    std::string sorted = b->heard;
    std::sort( sorted.begin(), sorted.end() );
    EXPECT_EQ( sorted, "abcdefghijklmnopqrstuvwxyz" );
    EXPECT_NE( b->heard, sorted );
}

TEST_F( ImpairmentTest, ScriptDecidesOverEachFrame ) {
    std::string seen;
    lan().dropIs( [&]( WireFrame const& frame ) {
        seen += std::string( frame.device ) + static_cast<char>( frame.bytes.back() ) + " ";
        return frame.bytes.back() == 'y';
    } );
    a->send( "xyz" );
    c->send( "y" );
    settle();
    EXPECT_EQ( b->heard, "xz" );
    EXPECT_EQ( seen, "ax ay az cy " );
    EXPECT_EQ( lan().counters().lost, 2U );
}

TEST_F( ImpairmentTest, EmptyScriptLosesNothing ) {
    lan().dropIs( []( WireFrame const& ) { return true; } );
    lan().dropIs( {} );
    a->send( "x" );
    settle();
    EXPECT_EQ( b->heard, "x" );
}

/// What b hears of a thousand frames under every impairment at once.
class SeedTest : public ::testing::Test {
  protected:
    class Run : public ImpairmentTest {
      public:
        explicit Run( Zornet::U64 seed ) : ImpairmentTest( seed ) {
            impair( { .loss = 0.1, .duplication = 0.1, .reordering = 0.1, .delay = 1e-3, .jitter = 1e-2 } );
            sendSpaced( 1000 );
        }
        void TestBody() override {}
        std::string const& heard() const { return b->heard; }
        std::vector<Seconds> const& times() const { return b->times; }
    };
};

TEST_F( SeedTest, OneSeedGivesOneRun ) {
    std::string heard;
    std::vector<Seconds> times;
    {
        Run const run( 7 );
        heard = run.heard();
        times = run.times();
    }
    Run const again( 7 );
    EXPECT_EQ( again.heard(), heard );
    EXPECT_EQ( again.times(), times );
}

TEST_F( SeedTest, AnotherSeedGivesAnotherRun ) {
    std::string heard;
    {
        Run const run( 7 );
        heard = run.heard();
    }
    EXPECT_NE( Run( 8 ).heard(), heard );
}

TEST_F( SeedTest, ProcessWideGeneratorIsLeftAlone ) {
    srand48( 42 );
    double const first = drand48();
    srand48( 42 );
    Run const run( 7 );
    EXPECT_EQ( drand48(), first );
}

} // namespace Lab
