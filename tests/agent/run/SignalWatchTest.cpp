#include "agent/run/SignalWatch.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace Agent {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SignalWatchTest : public ::testing::Test {
  protected:
    static Kiv::ActivitySm& activity() { return Kiv::defaultActivity()->activitySm(); }

    std::vector<int> taken_;
    SignalWatch watch_{ { SIGUSR1, SIGTERM }, [this]( int signal ) { taken_.push_back( signal ); } };
};

TEST_F( SignalWatchTest, SignalIsTakenInATurnAndNotBefore ) {
    raise( SIGUSR1 );
    EXPECT_THAT( taken_, IsEmpty() );
    activity().runOnce();
    EXPECT_THAT( taken_, ElementsAre( SIGUSR1 ) );
}

TEST_F( SignalWatchTest, EachSignalIsTaken ) {
    raise( SIGTERM );
    raise( SIGUSR1 );
    activity().runOnce();
    EXPECT_THAT( taken_, ::testing::UnorderedElementsAre( SIGTERM, SIGUSR1 ) );
}

TEST_F( SignalWatchTest, SignalEndsAWait ) {
    raise( SIGTERM );
    EXPECT_TRUE( activity().runUntil( [this] { return !taken_.empty(); } ) );
}

TEST( SignalWatch, EndLeavesSignalsAsTheyWere ) {
    sigset_t before;
    sigset_t after;
    pthread_sigmask( SIG_BLOCK, nullptr, &before );
    {
        SignalWatch const watch( { SIGUSR1 }, []( int ) {} );
    }
    pthread_sigmask( SIG_BLOCK, nullptr, &after );
    EXPECT_EQ( sigismember( &before, SIGUSR1 ), 0 );
    EXPECT_EQ( sigismember( &after, SIGUSR1 ), 0 );
}

TEST( SignalWatch, SignalThatCameTooLateToBeTakenIsDropped ) {
    auto const run = [] {
        {
            SignalWatch const watch( { SIGTERM }, []( int ) {} );
            std::raise( SIGTERM );
        }
        _exit( 3 );
    };
    EXPECT_EXIT( run(), ::testing::ExitedWithCode( 3 ), "" );
}

} // namespace

} // namespace Agent
