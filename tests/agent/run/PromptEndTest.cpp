#include "agent/run/PromptEnd.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "agent/run/SignalWatch.h"

namespace Agent {

namespace {

constexpr double interval = 0.01;

/// Works for ten times as long as it takes to be noticed.
void
work() {
    std::clock_t const begin = std::clock();
    while ( static_cast<double>( std::clock() - begin ) / CLOCKS_PER_SEC < 20 * interval ) {
    }
}

/// In a process of its own, ends as a run that goes well.
template <class F>
void
inAProcess( F f ) {
    SignalWatch const watch( { SIGINT, SIGTERM, SIGUSR1 }, []( int ) {} );
    PromptEnd end( { SIGINT, SIGTERM }, interval );
    f( end );
    _exit( 0 );
}

TEST( PromptEnd, SignalThatNobodyTakesEndsTheProcess ) {
    auto const run = []( PromptEnd& ) {
        std::raise( SIGTERM );
        work();
    };
    EXPECT_EXIT(
        inAProcess( run ), ::testing::KilledBySignal( SIGTERM ), "ended at once, in the midst of work"
    );
}

TEST( PromptEnd, LastActComesFirst ) {
    auto const run = []( PromptEnd& ) {
        PromptEnd::lastActIs( [] { _exit( 7 ); } );
        std::raise( SIGINT );
        work();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 7 ), "" );
}

TEST( PromptEnd, SignalThatIsTakenDoesNot ) {
    auto const run = []( PromptEnd& ) {
        std::raise( SIGINT );
        Kiv::defaultActivity()->activitySm().runOnce();
        work();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

TEST( PromptEnd, OtherSignalsDoNot ) {
    auto const run = []( PromptEnd& ) {
        std::raise( SIGUSR1 );
        work();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

TEST( PromptEnd, WhereItIsNotAllowedTheSignalWaits ) {
    auto const run = []( PromptEnd& end ) {
        end.allowedIs( false );
        std::raise( SIGINT );
        work();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

} // namespace

} // namespace Agent
