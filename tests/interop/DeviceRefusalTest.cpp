#include <sys/syscall.h>
#include <unistd.h>

#include <sched.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <set>

#include "platform/zornet/device/Burst.h"
#include "platform/zornet/device/Device.h"
#include "tests/interop/DeviceFixture.h"

namespace {

/// Stands between the device and the kernel: for each call, how many frames the kernel takes, or minus an
/// error number. Once the list is used up, `always` counts, and 0 stands for the kernel itself. A device may
/// send from a thread of its own.
std::mutex answering;
std::deque<int> nextAnswers;
std::atomic<int> always = 0;
std::atomic<unsigned> calls = 0;

int
nextAnswer() {
    std::lock_guard const lock( answering );
    if ( nextAnswers.empty() ) {
        return always;
    }
    int const answer = nextAnswers.front();
    nextAnswers.pop_front();
    return answer;
}

void
nextAnswersAre( std::deque<int> answers ) {
    std::lock_guard const lock( answering );
    nextAnswers = std::move( answers );
}

} // namespace

extern "C" int
sendmmsg( int socket, mmsghdr* messages, unsigned count, int flags ) {
    ++calls;
    int const answer = nextAnswer();
    if ( answer < 0 ) {
        errno = -answer;
        return -1;
    }
    unsigned const taken = answer == 0 ? count : std::min( count, static_cast<unsigned>( answer ) );
    return static_cast<int>( syscall( SYS_sendmmsg, socket, messages, taken, flags ) );
}

namespace Zornet {

namespace {

constexpr U32 burst = Burst::capacity;

/// A device whose kernel does not always take what it is given, in a thread that may use so many processors:
/// with one the device sends all by itself, with more it has full bursts sent beside the loop.
class DeviceRefusalTest : public CableFixture, public ::testing::WithParamInterface<int> {
  protected:
    void SetUp() override {
        CableFixture::SetUp();
        calls = 0;
        sched_getaffinity( 0, sizeof processors_, &processors_ );
        if ( GetParam() == 1 ) {
            cpu_set_t one;
            CPU_ZERO( &one );
            CPU_SET( static_cast<unsigned>( sched_getcpu() ), &one );
            sched_setaffinity( 0, sizeof one, &one );
        }
    }
    void TearDown() override {
        nextAnswersAre( {} );
        always = 0;
        sched_setaffinity( 0, sizeof processors_, &processors_ );
    }

    static std::set<std::string> threads() {
        std::set<std::string> found;
        for ( auto const& entry : std::filesystem::directory_iterator( "/proc/self/task" ) ) {
            found.insert( entry.path() );
        }
        return found;
    }
    static std::string blockedSignals( std::string const& thread ) {
        std::ifstream status( thread + "/status" );
        std::string word;
        while ( status >> word && word != "SigBlk:" ) {
        }
        status >> word;
        return word;
    }
    bool sendsBeside() const { return GetParam() != 1 && CPU_COUNT( &processors_ ) > 1; }

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

  private:
    cpu_set_t processors_{};
};

INSTANTIATE_TEST_SUITE_P( Processors, DeviceRefusalTest, ::testing::Values( 1, 2 ) );

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

TEST_P( DeviceRefusalTest, ShortReturnsKeepTheOrder ) {
    Station const host = station();
    nextAnswersAre( { 1, 5, 63, 2, 64, 7, 1 } );
    sendMarks( host, 1000 );
    EXPECT_TRUE( allHeard( 1000 ) );
    EXPECT_EQ( host.pam->txDrops() + host.pam->txErrors(), 0U );
}

TEST_P( DeviceRefusalTest, WantOfRoomMakesFramesWaitInOrder ) {
    for ( int error : { ENOBUFS, EAGAIN, EINTR, ENETDOWN } ) {
        Station const host = station();
        nextAnswersAre( { -error, -error, 3, -error, 10, -error } );
        sendMarks( host, 2000 );
        EXPECT_TRUE( allHeard( 2000 ) ) << error;
        EXPECT_EQ( host.pam->txDrops() + host.pam->txErrors(), 0U );
        farEnd().forget();
    }
}

TEST_P( DeviceRefusalTest, NothingIsTriedWhileThereIsNoRoom ) {
    Station const host = station();
    always = -ENOBUFS;
    sendMarks( host, burst );
    turn();
    unsigned const before = calls;
    EXPECT_NE( before, 0U );
    sendMarks( host, 1000 );
    EXPECT_EQ( calls, before );
}

TEST_P( DeviceRefusalTest, BeyondItsBoundTheBatchTakesNoMore ) {
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

TEST_P( DeviceRefusalTest, ClosedDeviceStaysUntilWhatWaitsHasLeft ) {
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

TEST_P( DeviceRefusalTest, ReopenedWhileFramesWaitItGoesOn ) {
    Station const host = station();
    always = -EAGAIN;
    sendMarks( host, 100 );
    host.pam->deviceOpenIs( false );
    host.pam->deviceOpenIs( true );
    host.send( igmpFrame( 100 ) );
    always = 0;
    EXPECT_TRUE( allHeard( 101 ) );
}

TEST_P( DeviceRefusalTest, ClosingSendsWhatIsUnderWay ) {
    Station const host = station();
    sendMarks( host, 6 * burst + 10 );
    host.pam->deviceOpenIs( false );
    EXPECT_EQ( farEnd().heard().size(), 6 * burst + 10 );
    EXPECT_TRUE( allHeard( 6 * burst + 10 ) );
}

/// The region for frames that wait holds fewer than 500 of these.
TEST_P( DeviceRefusalTest, LargeFramesOfOneTurnMakeRoomForEachOther ) {
    nearNs().ip( "link set near0 mtu 9000" );
    farNs().ip( "link set far0 mtu 9000" );
    Station const host = station();
    Frame large = igmpFrame( 0 );
    large.resize( 9000 );
    for ( int i = 0; i < 2000; ++i ) {
        host.send( large );
    }
    EXPECT_TRUE( eventually( [&] { return farEnd().heard().size() >= 2000; } ) );
    EXPECT_EQ( host.pam->txDrops() + host.pam->txErrors(), 0U );
}

/// No signal is ever delivered to the device's thread: they are for the embedder's.
TEST_P( DeviceRefusalTest, FullBurstsAreSentBesideTheLoopWhereThereIsAnotherProcessor ) {
    Station const host = station();
    std::set<std::string> const before = threads();
    sendMarks( host, burst - 1 );
    turn();
    EXPECT_EQ( threads(), before );
    sendMarks( host, burst );
    ASSERT_TRUE( eventually( [&] { return farEnd().heard().size() == 2 * burst - 1; } ) );
    std::set<std::string> added = threads();
    std::erase_if( added, [&]( std::string const& thread ) { return before.contains( thread ); } );
    ASSERT_EQ( added.size(), sendsBeside() ? 1U : 0U );
    for ( std::string const& thread : added ) {
        EXPECT_EQ( blockedSignals( thread ), "fffffffe7ffbfeff" ); // all that can be
    }
    host.pam->deviceOpenIs( false );
    EXPECT_EQ( threads(), before );
}

TEST_P( DeviceRefusalTest, FramesThatWaitOnALinkThatGoesAreTheirSendersDrops ) {
    Station const host = station();
    Station const idle = station();
    always = -ENOBUFS;
    sendMarks( host, 100 );
    nearNs().ip( "link set near0 down" );
    ASSERT_TRUE( eventually( [&] { return !host.pam->device()->running(); } ) );
    EXPECT_EQ( host.pam->txDrops(), 100U );
    EXPECT_EQ( idle.pam->txDrops(), 0U );
}

TEST_P( DeviceRefusalTest, ReactorOnAnErrorMayCloseTheDevice ) {
    Station const host = station();
    Kiv::Ptr<ErrorReader> const reader( new ErrorReader( host.pam, [&] { host.pam->deviceOpenIs( false ); } )
    );
    nextAnswersAre( { -EMSGSIZE } );
    sendMarks( host, burst );
    turn();
    EXPECT_FALSE( host.pam->deviceOpen() );
    EXPECT_EQ( host.pam->txErrors(), 1U );
    EXPECT_EQ( farEnd().heard().size(), burst - 1 );
}

TEST_P( DeviceRefusalTest, ReactorOnAnErrorMaySend ) {
    Station const host = station();
    Kiv::Ptr<ErrorReader> const reader( new ErrorReader( host.pam, [&] { host.send( igmpFrame( burst ) ); } )
    );
    nextAnswersAre( { -EMSGSIZE } );
    sendMarks( host, burst );
    ASSERT_TRUE( eventually( [&] { return farEnd().heard().size() == burst; } ) );
    EXPECT_EQ( markOf( farEnd().heard().front() ), 1U );
    EXPECT_EQ( markOf( farEnd().heard().back() ), burst );
}

TEST_P( DeviceRefusalTest, ReactorMayReopenAStoppedDevice ) {
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
