#include "agent/control/ControlListener.h"

#include <gmock/gmock.h>

#include "agent/control/SocketPath.h"
#include "tests/agent/TemporaryFolder.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
namespace fs = std::filesystem;

class ControlListenerTest : public ::testing::Test {
  protected:
    std::unique_ptr<ControlListener> listener() {
        return std::make_unique<ControlListener>( path_, [this]( Zornet::FileDescriptor ) { ++taken_; } );
    }
    /// What it says about a path that it does not take.
    std::string refusal() {
        try {
            listener();
            return "none";
        } catch ( std::exception const& fault ) {
            return fault.what();
        }
    }
    int connectOnce() const { return connectTo( newStreamSocket(), socketAddress( path_ ) ); }
    /// A socket that nobody listens at any more.
    void leaveStaleSocket() const {
        Zornet::FileDescriptor const socket = newStreamSocket();
        sockaddr_un const address = socketAddress( path_ );
        ASSERT_EQ( bind( socket.get(), reinterpret_cast<sockaddr const*>( &address ), sizeof address ), 0 );
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.file( "control" );
    int taken_ = 0;
};

TEST_F( ControlListenerTest, HandsOverWhoConnects ) {
    auto const listening = listener();
    EXPECT_FALSE( listening->hasReplaced() );
    EXPECT_EQ( connectOnce(), 0 );
    EXPECT_EQ( connectOnce(), 0 );
    Kiv::defaultActivity()->activitySm().runUntil( [this] { return taken_ == 2; }, 10.0 );
    EXPECT_EQ( taken_, 2 );
}

TEST_F( ControlListenerTest, SocketIsForItsUserAlone ) {
    auto const listening = listener();
    EXPECT_EQ( fs::status( path_ ).permissions(), fs::perms::owner_read | fs::perms::owner_write );
}

TEST_F( ControlListenerTest, PathGoesWithIt ) {
    listener();
    EXPECT_FALSE( fs::exists( path_ ) );
}

TEST_F( ControlListenerTest, WhatAnotherHasPutThereStays ) {
    auto listening = listener();
    fs::remove( path_ );
    leaveStaleSocket();
    listening.reset();
    EXPECT_TRUE( fs::is_socket( path_ ) );
}

TEST_F( ControlListenerTest, StaleSocketIsReplaced ) {
    leaveStaleSocket();
    EXPECT_EQ( connectOnce(), ECONNREFUSED );
    auto const listening = listener();
    EXPECT_TRUE( listening->hasReplaced() );
    EXPECT_EQ( connectOnce(), 0 );
}

TEST_F( ControlListenerTest, LiveSocketIsRefusedAndStays ) {
    auto const first = listener();
    EXPECT_EQ( refusal(), "cannot listen at " + path_ + ": an agent that is running listens there" );
    EXPECT_EQ( connectOnce(), 0 );
}

TEST_F( ControlListenerTest, FileThatIsNoSocketIsRefusedAndStays ) {
    folder_.fileWith( "control", "text" );
    EXPECT_EQ( refusal(), "cannot listen at " + path_ + ": there is a regular file, which is left alone" );
    EXPECT_EQ( folder_.contents( "control" ), "text" );
}

TEST_F( ControlListenerTest, FolderThatDoesNotExistIsTold ) {
    path_ = folder_.file( "none/control" );
    EXPECT_EQ( refusal(), "cannot listen at " + path_ + ": No such file or directory" );
}

TEST_F( ControlListenerTest, PathThatIsTooLongIsToldWithTheLimit ) {
    path_ = "/" + std::string( 107, 'x' );
    EXPECT_EQ( refusal(), "the path of a socket has at most 107 bytes, found 108: " + path_ );
    path_ = "";
    EXPECT_EQ( refusal(), "expected the path of a socket, found ''" );
}

TEST( SocketPath, OnlyTheUserAndRootMayControl ) {
    EXPECT_TRUE( mayControl( 1000, 1000 ) );
    EXPECT_TRUE( mayControl( 0, 1000 ) );
    EXPECT_FALSE( mayControl( 1001, 1000 ) );
    EXPECT_FALSE( mayControl( 1000, 0 ) );
    EXPECT_EQ( userText( 0 ), "root" );
    EXPECT_EQ( userText( 4'000'000'000U ), "user 4000000000" );
}

} // namespace

} // namespace Agent
