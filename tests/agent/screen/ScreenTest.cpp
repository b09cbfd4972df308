#include <chrono>
#include <thread>

#include "tests/agent/CableTest.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

using Support::outputOf;
using ::testing::HasSubstr;
using ::testing::Not;

/// The real command in a terminal that the test types into and reads from.
class Screen : public CableTest {
  protected:
    void SetUp() override {
        CableTest::SetUp();
        if ( !IsSkipped() ) {
            tmux( "new-session -d -x 100 -y 30 'sh'" );
        }
    }
    void TearDown() override {
        if ( far_ ) {
            tmux( "kill-server" );
        }
    }

    std::string tmux( std::string const& arguments ) const {
        return outputOf( "env -u TMUX tmux -f /dev/null -S " + folder_.file( "tmux" ) + " " + arguments );
    }
    void type( std::string const& text ) const { tmux( "send-keys -l '" + text + "'" ); }
    void enter( std::string const& command ) const {
        type( command );
        tmux( "send-keys Enter" );
    }
    std::string shown() const { return tmux( "capture-pane -p" ); }
    /// Waits until the text stands on the terminal. Returns what stands there in the end.
    std::string await( std::string const& text ) const {
        using namespace std::chrono_literals;
        for ( int i = 0; i < 500 && shown().find( text ) == std::string::npos; ++i ) {
            std::this_thread::sleep_for( 20ms );
        }
        return shown();
    }
    std::string command( std::string const& more ) {
        return Support::agentBinary() + " run " + scenario() + " " + more;
    }
};

TEST_F( Screen, ShowsTheRunAndLeavesTheTerminalClean ) {
    enter( "stty -a > " + folder_.file( "before" ) );
    enter( command( "" ) );
    std::string const screen = await( "frames " );
    EXPECT_THAT( screen, HasSubstr( "hosts   2   v1 0   v2 2   v3 0   disabled 0" ) );
    EXPECT_THAT( screen, HasSubstr( "groups  4" ) );
    EXPECT_THAT( await( near_->name() ), HasSubstr( near_->name() + "/near0" ) );
    tmux( "send-keys C-c" );
    EXPECT_THAT( await( "igmphost: frames on" ), Not( HasSubstr( "frames    " ) ) );
    enter( "stty -a > " + folder_.file( "after" ) + "; echo ended with $?" );
    await( "ended with 0" );
    EXPECT_EQ( folder_.contents( "after" ), folder_.contents( "before" ) );
    EXPECT_EQ( tmux( "display -p '#{cursor_flag} #{alternate_on}'" ), "1 0\n" );
}

TEST_F( Screen, StaysAwayWhereTheTerminalIsToShowTheOutcome ) {
    for ( std::string const place : { "-", "$(tty)" } ) {
        std::string const told = place == "-" ? "ended at first with " : "ended at last with ";
        enter( command( "--duration 0.1 --junit " + place + "; echo " + told + "$?" ) );
        EXPECT_THAT( await( told + "0" ), HasSubstr( "</testsuite" ) ) << place;
        enter( "clear" );
    }
}

/// Of so many groups that they take seconds to make.
TEST_F( Screen, OpensWhileHostsAreBroughtUpAndShowsHowFarTheyAre ) {
    std::string const hosts = "hosts: [ { name: rx, count: 4000, groups: 239.0.0.0/22 } ]\n";
    enter( Support::agentBinary() + " run " + folder_.fileWith( "many.yaml", hosts ) );
    std::string const screen = await( "  start-up" );
    EXPECT_THAT( screen, HasSubstr( "many.yaml  start-up" ) );
    EXPECT_THAT( screen, HasSubstr( "] " ) );
    EXPECT_THAT( screen, HasSubstr( " of 4,000 hosts made, " ) );
    EXPECT_THAT( screen, HasSubstr( " of 4,096,000 groups" ) );
    tmux( "send-keys C-c" );
    EXPECT_THAT( await( "igmphost: ended" ), Not( HasSubstr( "start-up" ) ) );
}

TEST_F( Screen, FollowsTheTerminalsSizeAndShowsHowFarItIs ) {
    enter( command( "--duration 3600" ) );
    EXPECT_THAT( await( "] 0 %" ), HasSubstr( "of 1:00:00" ) );
    tmux( "resize-window -x 40 -y 12" );
    EXPECT_THAT( await( "[" + std::string( 30, '.' ) + "]" ), HasSubstr( "] 0 %" ) );
    tmux( "send-keys C-c" );
    await( "igmphost: ended" );
}

TEST_F( Screen, ShowsMessagesAndTellsThemAgain ) {
    enter( command( "" ) );
    await( "frames " );
    near_->ip( "link set near0 down" );
    EXPECT_THAT( await( "device is down; waiting for it" ), HasSubstr( "hosts   2" ) );
    tmux( "send-keys C-c" );
    EXPECT_THAT( await( "igmphost: ended" ), HasSubstr( "device is down; waiting for it" ) );
}

TEST_F( Screen, IsNotForPipesAndNotForTheQuiet ) {
    enter( command( "--duration 0.05 --quiet" ) + "; echo ended with $?" );
    EXPECT_THAT( await( "ended with 0" ), Not( HasSubstr( "hosts  " ) ) );
    enter( command( "--duration 0.05" ) + " | cat; echo piped with $?" );
    EXPECT_THAT( await( "piped with 0" ), Not( HasSubstr( "hosts   2" ) ) );
}

} // namespace

} // namespace Agent
