#include <sys/syscall.h>
#include <unistd.h>

#include <deque>
#include <functional>

#include "platform/zornet/device/Device.h"
#include "platform/zornet/device/SendBatch.h"
#include "tests/interop/DeviceFixture.h"

namespace {

/// Stands between the device and the kernel: for each call, how many frames the kernel takes, or minus an
/// error number. Once the list is used up, `always` counts, and 0 stands for the kernel itself.
std::deque<int> nextAnswers;
int always = 0;
unsigned calls = 0;

} // namespace

extern "C" int
sendmmsg( int socket, mmsghdr* messages, unsigned count, int flags ) {
    ++calls;
    int answer = always;
    if ( !nextAnswers.empty() ) {
        answer = nextAnswers.front();
        nextAnswers.pop_front();
    }
    if ( answer < 0 ) {
        errno = -answer;
        return -1;
    }
    unsigned const taken = answer == 0 ? count : std::min( count, static_cast<unsigned>( answer ) );
    return static_cast<int>( syscall( SYS_sendmmsg, socket, messages, taken, flags ) );
}

namespace Zornet {

namespace {

constexpr U32 burst = SendBatch::burst;

/// A device whose kernel does not always take what it is given.
class DeviceRefusalTest : public CableFixture {
  protected:
    void SetUp() override {
        CableFixture::SetUp();
        calls = 0;
    }
    void TearDown() override {
        nextAnswers.clear();
        always = 0;
    }

    static void sendMarks( Station const& station, U32 count ) {
        for ( U32 mark = 0; mark < count; ++mark ) {
            station.send( igmpFrame( mark ) );
        }
    }
    /// True where the far end hears that many frames, in the order of their marks.
    bool allHeard( std::size_t count ) {
        if ( !eventually( [&] { return farEnd().heard().size() >= count; } ) ) {
            return false;
        }
        for ( U32 mark = 0; mark < farEnd().heard().size(); ++mark ) {
            EXPECT_EQ( markOf( farEnd().heard()[mark] ), mark );
        }
        return farEnd().heard().size() == count;
    }
    static void turn() { Kiv::defaultActivity()->activitySm().runOnce(); }
};

/// A reactor that does what the test says when a send error is counted.
class ErrorReader : public Pam::Notifiee {
  public:
    ErrorReader( Kiv::Ptr<Pam> const& pam, std::function<void()> reaction )
        : Notifiee( pam ), reaction_( std::move( reaction ) ) {
        isRegisteredNotifieeIs( true );
    }
    void onTxErrors() override { reaction_(); }

  private:
    std::function<void()> reaction_;
};

} // namespace

TEST_F( DeviceRefusalTest, ShortReturnsKeepTheOrder ) {
    Station const host = station();
    nextAnswers = { 1, 5, 63, 2, 64, 7, 1 };
    sendMarks( host, 1000 );
    EXPECT_TRUE( allHeard( 1000 ) );
    EXPECT_EQ( host.pam->txDrops() + host.pam->txErrors(), 0U );
}

TEST_F( DeviceRefusalTest, WantOfRoomMakesFramesWaitInOrder ) {
    for ( int error : { ENOBUFS, EAGAIN, EINTR, ENETDOWN } ) {
        Station const host = station();
        nextAnswers = { -error, -error, 3, -error, 10, -error };
        sendMarks( host, 500 );
        EXPECT_TRUE( allHeard( 500 ) ) << error;
        EXPECT_EQ( host.pam->txDrops() + host.pam->txErrors(), 0U );
        farEnd().forget();
    }
}

TEST_F( DeviceRefusalTest, NothingIsTriedWhileThereIsNoRoom ) {
    Station const host = station();
    always = -ENOBUFS;
    sendMarks( host, burst );
    unsigned const before = calls;
    sendMarks( host, 1000 );
    EXPECT_EQ( calls, before );
}

TEST_F( DeviceRefusalTest, BeyondItsBoundTheBatchTakesNoMore ) {
    Station const host = station();
    always = -ENOBUFS;
    U32 taken = 0;
    for ( ; host.pam->txDrops() == 0; ++taken ) {
        host.send( igmpFrame( taken ) );
    }
    --taken; // the last was not
    EXPECT_GT( taken, 50000U );
    sendMarks( host, 9 );
    EXPECT_EQ( host.pam->txDrops(), 10U );
    always = 0;
    EXPECT_TRUE( allHeard( taken ) );
}

TEST_F( DeviceRefusalTest, ClosedDeviceStaysUntilWhatWaitsHasLeft ) {
    auto const isOpen = [&] {
        return nearNs().run( "cat /proc/net/packet" ).find( " 0003 " ) != std::string::npos;
    };
    Station const host = station();
    always = -ENOBUFS;
    sendMarks( host, 100 );
    host.pam->deviceOpenIs( false );
    turn();
    EXPECT_TRUE( isOpen() );
    always = 0;
    EXPECT_TRUE( allHeard( 100 ) );
    EXPECT_FALSE( isOpen() );
}

TEST_F( DeviceRefusalTest, ReopenedWhileFramesWaitItGoesOn ) {
    Station const host = station();
    always = -EAGAIN;
    sendMarks( host, 100 );
    host.pam->deviceOpenIs( false );
    host.pam->deviceOpenIs( true );
    host.send( igmpFrame( 100 ) );
    always = 0;
    EXPECT_TRUE( allHeard( 101 ) );
}

TEST_F( DeviceRefusalTest, FramesThatWaitOnALinkThatGoesAreTheirSendersDrops ) {
    Station const host = station();
    Station const idle = station();
    always = -ENOBUFS;
    sendMarks( host, 100 );
    nearNs().ip( "link set near0 down" );
    ASSERT_TRUE( eventually( [&] { return !host.pam->device()->running(); } ) );
    EXPECT_EQ( host.pam->txDrops(), 100U );
    EXPECT_EQ( idle.pam->txDrops(), 0U );
}

TEST_F( DeviceRefusalTest, ReactorOnAnErrorMayCloseTheDevice ) {
    Station const host = station();
    Kiv::Ptr<ErrorReader> const reader( new ErrorReader( host.pam, [&] { host.pam->deviceOpenIs( false ); } )
    );
    nextAnswers = { -EMSGSIZE };
    sendMarks( host, burst );
    EXPECT_FALSE( host.pam->deviceOpen() );
    EXPECT_EQ( host.pam->txErrors(), 1U );
    EXPECT_EQ( farEnd().heard().size(), burst - 1 );
}

TEST_F( DeviceRefusalTest, ReactorOnAnErrorMaySend ) {
    Station const host = station();
    Kiv::Ptr<ErrorReader> const reader( new ErrorReader( host.pam, [&] { host.send( igmpFrame( burst ) ); } )
    );
    nextAnswers = { -EMSGSIZE };
    sendMarks( host, burst );
    ASSERT_TRUE( eventually( [&] { return farEnd().heard().size() == burst; } ) );
    EXPECT_EQ( markOf( farEnd().heard().front() ), 1U );
    EXPECT_EQ( markOf( farEnd().heard().back() ), burst );
}

TEST_F( DeviceRefusalTest, ReactorMayReopenAStoppedDevice ) {
    Station const host = station();
    Kiv::Ptr<ErrorReader> const reader( new ErrorReader( host.pam, [&] {
        host.pam->deviceOpenIs( false );
        if ( host.pam->txErrors() < 5 ) {
            host.pam->deviceOpenIs( true );
        }
    } ) );
    always = -ENOBUFS;
    sendMarks( host, 10 );
    nearNs().ip( "link set near0 down" );
    ASSERT_TRUE( eventually( [&] { return host.pam->txErrors() >= 5; } ) );
    always = 0;
    nearNs().ip( "link set near0 up" );
    host.pam->deviceOpenIs( true );
    ASSERT_TRUE( eventually( [&] { return host.pam->device()->running(); } ) );
    farEnd().forget();
    sendMarks( host, 1 );
    EXPECT_TRUE( allHeard( 1 ) );
}

} // namespace Zornet
