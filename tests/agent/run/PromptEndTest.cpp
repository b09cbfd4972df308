#include "agent/run/PromptEnd.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "agent/run/SignalWatch.h"
#include "tests/agent/FullPipe.h"
#include "tests/agent/TemporaryFolder.h"

namespace Agent {

namespace {

constexpr double often = 0.01;
constexpr double byHand = 3600.0; ///< for tests that look where they want

void
look() {
    std::raise( SIGALRM );
}

/// In a process of its own, ends as a run that goes well.
template <class F>
void
inAProcess( F f, double interval = byHand ) {
    SignalWatch const watch( { SIGINT, SIGTERM, SIGUSR1 }, []( int ) {} );
    PromptEnd end( { SIGINT, SIGTERM }, interval );
    f( end );
    _exit( 0 );
}

void
takeSignals() {
    Kiv::defaultActivity()->activitySm().runOnce();
}

TEST( PromptEnd, SignalThatNobodyTakesEndsTheProcessWhileItWorks ) {
    auto const run = []( PromptEnd& ) {
        std::raise( SIGTERM );
        for ( std::time_t const begin = std::time( nullptr ); std::time( nullptr ) < begin + 30; ) {
        }
    };
    EXPECT_EXIT(
        inAProcess( run, often ), ::testing::KilledBySignal( SIGTERM ), "ended at once, in the midst of work"
    );
}

TEST( PromptEnd, SignalThatNobodyTakesEndsTheProcessWhileItWaits ) {
    TemporaryFolder const folder;
    auto const run = [&folder]( PromptEnd& ) {
        FullPipe const pipe( folder.file( "pipe" ) );
        int const end = pipe.newEnd();
        std::raise( SIGINT );
        [[maybe_unused]] ssize_t const written = write( end, "x", 1 );
    };
    EXPECT_EXIT( inAProcess( run, often ), ::testing::KilledBySignal( SIGINT ), "ended at once" );
}

TEST( PromptEnd, LastActComesFirst ) {
    auto const run = []( PromptEnd& ) {
        PromptEnd::lastActIs( [] { _exit( 7 ); } );
        std::raise( SIGINT );
        look();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 7 ), "" );
}

TEST( PromptEnd, SecondSignalEndsTheLastAct ) {
    auto const run = []( PromptEnd& ) {
        PromptEnd::lastActIs( [] {
            std::raise( SIGINT );
            _exit( 7 );
        } );
        std::raise( SIGINT );
        look();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::KilledBySignal( SIGINT ), "" );
}

TEST( PromptEnd, TellsNothingWhereNobodyReadsIt ) {
    TemporaryFolder const folder;
    auto const run = [&folder]( PromptEnd& ) {
        FullPipe const pipe( folder.file( "pipe" ) );
        dup2( pipe.newEnd(), STDERR_FILENO );
        std::raise( SIGINT );
        look();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::KilledBySignal( SIGINT ), "" );
}

TEST( PromptEnd, SignalThatIsTakenDoesNot ) {
    auto const run = []( PromptEnd& ) {
        std::raise( SIGINT );
        takeSignals();
        look();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

TEST( PromptEnd, SignalAfterOneThatWasTakenIsAnother ) {
    auto const run = []( PromptEnd& ) {
        std::raise( SIGINT );
        look();
        takeSignals();
        std::raise( SIGINT );
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

TEST( PromptEnd, OtherSignalsDoNot ) {
    auto const run = []( PromptEnd& ) {
        std::raise( SIGUSR1 );
        look();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

TEST( PromptEnd, WhereItIsNotAllowedTheSignalWaits ) {
    auto const run = []( PromptEnd& end ) {
        end.allowedIs( PromptEnd::Allowed::never );
        std::raise( SIGINT );
        look();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

/// The processor's time goes on while the thread works, and not while it waits.
void
work() {
    std::clock_t const begin = std::clock();
    while ( std::clock() < begin + CLOCKS_PER_SEC / 20 ) {
    }
}

TEST( PromptEnd, WhereItMayEndWaitingAloneWorkGoesOn ) {
    auto const run = []( PromptEnd& end ) {
        end.allowedIs( PromptEnd::Allowed::whereItWaits );
        std::raise( SIGINT );
        look();
        work();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

TEST( PromptEnd, WhereItMayEndWaitingAloneItDoes ) {
    auto const run = []( PromptEnd& end ) {
        end.allowedIs( PromptEnd::Allowed::whereItWaits );
        work();
        std::raise( SIGINT );
        look();
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::KilledBySignal( SIGINT ), "" );
}

TEST( PromptEnd, WhereItIsAllowedAgainItBeginsAnew ) {
    auto const run = []( PromptEnd& end ) {
        std::raise( SIGINT );
        look();
        end.allowedIs( PromptEnd::Allowed::never );
        end.allowedIs( PromptEnd::Allowed::always );
        look();
    };
    EXPECT_EXIT( inAProcess( run ), ::testing::ExitedWithCode( 0 ), "" );
}

TEST( PromptEnd, WithoutATimerTheSignalWaits ) {
    auto const run = [] {
        rlimit const none{};
        setrlimit( RLIMIT_SIGPENDING, &none ); // so that the system refuses any timer
        std::signal( SIGALRM, SIG_IGN );
        inAProcess( []( PromptEnd& ) {
            std::raise( SIGINT );
            look();
            look();
        } );
    };
    EXPECT_EXIT( run(), ::testing::ExitedWithCode( 0 ), "" );
}

} // namespace

} // namespace Agent
