#include "platform/kiv/Activity.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/platform/lumo/Alarm.h"
#include "tests/support/SimulatedTest.h"

namespace {

using Kiv::never;
using Kiv::Ptr;
using Kiv::Seconds;
using Log = std::vector<std::string>;

class TurnEnd : public Kiv::TurnEndHandler {
  public:
    explicit TurnEnd( std::function<void()> whenCalled ) : called( std::move( whenCalled ) ) {}
    void handleTurnEnd() override { called(); }
    std::function<void()> called;
};

/// An eventfd that runs a function when it has been raised.
class Event : public Kiv::IoHandler {
  public:
    Event( Kiv::ActivitySm& activity, std::function<void()> whenRaised )
        : raised( std::move( whenRaised ) ), activity_( activity ), fd_( eventfd( 0, EFD_NONBLOCK ) ) {
        activity_.ioHandlerIs( fd_, EPOLLIN, this );
    }
    ~Event() override {
        activity_.ioHandlerDel( fd_ );
        close( fd_ );
    }
    void raise() const { EXPECT_EQ( eventfd_write( fd_, 1 ), 0 ); }
    int fd() const { return fd_; }
    void handleIo( Kiv::U32 events ) override {
        EXPECT_EQ( events, static_cast<Kiv::U32>( EPOLLIN ) );
        eventfd_t value = 0;
        EXPECT_EQ( eventfd_read( fd_, &value ), 0 );
        raised();
    }
    std::function<void()> raised;

  private:
    Kiv::ActivitySm& activity_;
    int fd_;
};

class ActivityTest : public Support::SimulatedTest {
  protected:
    Ptr<Alarm> alarm( std::string const& what, Seconds after ) {
        Ptr<Alarm> const made = Alarm::on( wheel(), [this, what] { log_.push_back( what ); } );
        made->timeMinIs( start() + after );
        return made;
    }

    Log log_;
};

TEST_F( ActivityTest, RunForLeavesTheClockAtTheEnd ) {
    runFor( 2.5 );
    EXPECT_EQ( elapsed(), 2.5 );
    runFor( 0.0 );
    EXPECT_EQ( elapsed(), 2.5 );
}

TEST_F( ActivityTest, RunForServesWhatIsDueOnTheWayAndAtTheEnd ) {
    auto const first = alarm( "first", 1.0 );
    auto const last = alarm( "last", 2.0 );
    auto const after = alarm( "after", 2.000001 );
    runFor( 2.0 );
    EXPECT_EQ( log_, ( Log{ "first", "last" } ) );
}

TEST_F( ActivityTest, RunUntilATimeThatHasPassedServesWhatIsDue ) {
    auto const timer = alarm( "due", 0.0 );
    activity().runUntilTime( start() - 5.0 );
    EXPECT_EQ( log_, Log{ "due" } );
    EXPECT_EQ( elapsed(), 0.0 );
}

TEST_F( ActivityTest, RunUntilEndsWhenTheConditionHolds ) {
    auto const first = alarm( "first", 1.0 );
    auto const second = alarm( "second", 2.0 );
    EXPECT_TRUE( activity().runUntil( [&] { return !log_.empty(); } ) );
    EXPECT_EQ( elapsed(), 1.0 );
    EXPECT_EQ( log_, Log{ "first" } );
}

TEST_F( ActivityTest, RunUntilDoesNothingWhereTheConditionHoldsAlready ) {
    auto const timer = alarm( "timer", 0.0 );
    EXPECT_TRUE( activity().runUntil( [] { return true; } ) );
    EXPECT_TRUE( log_.empty() );
}

TEST_F( ActivityTest, RunUntilGivesUpAfterItsSpan ) {
    EXPECT_FALSE( activity().runUntil( [] { return false; }, 3.0 ) );
    EXPECT_EQ( elapsed(), 3.0 );
}

TEST_F( ActivityTest, RunWithoutAnEndEndsWithTheLastEvent ) {
    auto const timer = alarm( "timer", 7.0 );
    EXPECT_FALSE( activity().runUntil( [] { return false; } ) );
    EXPECT_EQ( log_, Log{ "timer" } );
    EXPECT_EQ( elapsed(), 7.0 );
    activity().runFor( never );
    EXPECT_EQ( elapsed(), 7.0 );
}

TEST_F( ActivityTest, RunOnceJumpsToTheNextDeadlineOnly ) {
    auto const first = alarm( "first", 1.0 );
    auto const second = alarm( "second", 2.0 );
    activity().runOnce();
    EXPECT_EQ( log_, Log{ "first" } );
    EXPECT_EQ( elapsed(), 1.0 );
    activity().runOnce();
    EXPECT_EQ( elapsed(), 2.0 );
    activity().runOnce();
    EXPECT_EQ( elapsed(), 2.0 );
}

TEST_F( ActivityTest, TimersOfOneTimeAreServedInOneTurn ) {
    auto const first = alarm( "first", 1.0 );
    auto const second = alarm( "second", 1.0 );
    activity().runOnce();
    EXPECT_EQ( log_.size(), 2U );
}

TEST_F( ActivityTest, TurnThatServedSomethingIsFollowedByALaterOne ) {
    Seconds at = 0.0;
    auto const second = Alarm::on( wheel(), [&] { at = elapsed(); } );
    auto const first = alarm( "first", 1.0 );
    first->rings = [&] { second->timeMinIs( Kiv::now() ); };
    runFor( 2.0 );
    EXPECT_NEAR( at, 1.0 + Kiv::ActivitySm::tick, 1e-9 );
}

TEST_F( ActivityTest, RunBeginsAtItsOwnInstantWhateverWasServedThere ) {
    Seconds at = 0.0;
    auto const first = alarm( "first", 1.0 );
    runFor( 1.0 );
    auto const second = Alarm::on( wheel(), [&] { at = elapsed(); } );
    second->timeMinIs( Kiv::now() );
    runFor( 1.0 );
    EXPECT_EQ( at, 1.0 );
}

TEST_F( ActivityTest, NextDeadlineIsThatOfTheTimers ) {
    EXPECT_EQ( activity().nextDeadline(), never );
    auto const timer = alarm( "timer", 3.0 );
    EXPECT_EQ( activity().nextDeadline(), start() + 3.0 );
}

TEST_F( ActivityTest, NextDeadlineIsTheFirstOfAllWheels ) {
    Ptr<Lumo::TimerWheel> const other( new Lumo::TimerWheel );
    auto const late = alarm( "late", 3.0 );
    auto const soon = Alarm::on( other );
    soon->timeMinIs( start() + 2.0 );
    EXPECT_EQ( activity().nextDeadline(), start() + 2.0 );
}

TEST_F( ActivityTest, NextDeadlineIsNowWhereWorkWaits ) {
    TurnEnd handler( [] {} );
    activity().turnEndIs( &handler );
    EXPECT_EQ( activity().nextDeadline(), Kiv::now() );
    settle();
    EXPECT_EQ( activity().nextDeadline(), never );
}

TEST_F( ActivityTest, StopEndsTheRunAfterThePresentTurn ) {
    auto const first = alarm( "first", 1.0 );
    auto const second = alarm( "second", 1.0 );
    auto const third = alarm( "third", 2.0 );
    first->rings = [] { activity().stop(); };
    runFor( 10.0 );
    EXPECT_EQ( elapsed(), 1.0 );
    EXPECT_EQ( log_, Log{ "second" } );
    runFor( 1.0 );
    EXPECT_EQ( log_, ( Log{ "second", "third" } ) );
}

TEST_F( ActivityTest, StopEndsARunUntilACondition ) {
    auto const timer = alarm( "timer", 1.0 );
    timer->rings = [] { activity().stop(); };
    EXPECT_FALSE( activity().runUntil( [] { return false; } ) );
    EXPECT_EQ( elapsed(), 1.0 );
}

TEST_F( ActivityTest, TurnEndComesAfterTimersOfTheTurnAndOnce ) {
    TurnEnd handler( [&] { log_.emplace_back( "end" ); } );
    auto const first = alarm( "first", 1.0 );
    first->rings = [&] { activity().turnEndIs( &handler ); };
    auto const second = alarm( "second", 1.0 );
    runFor( 2.0 );
    EXPECT_EQ( log_, ( Log{ "second", "end" } ) );
}

TEST_F( ActivityTest, TurnEndAskedForOutsideATurnComesWithTheNext ) {
    TurnEnd handler( [&] { log_.emplace_back( "end" ); } );
    activity().turnEndIs( &handler );
    EXPECT_TRUE( log_.empty() );
    activity().runOnce();
    EXPECT_EQ( log_, Log{ "end" } );
    EXPECT_EQ( elapsed(), 0.0 );
}

TEST_F( ActivityTest, TurnEndAddedWhileServingComesWithTheNextTurn ) {
    TurnEnd second( [&] { log_.emplace_back( "second" ); } );
    TurnEnd first( [&] { activity().turnEndIs( &second ); } );
    activity().turnEndIs( &first );
    activity().runOnce();
    EXPECT_TRUE( log_.empty() );
    activity().runOnce();
    EXPECT_EQ( log_, Log{ "second" } );
}

TEST_F( ActivityTest, TurnEndRemovedWhileServingDoesNotCome ) {
    TurnEnd second( [&] { log_.emplace_back( "second" ); } );
    TurnEnd third( [&] { log_.emplace_back( "third" ); } );
    TurnEnd first( [&] { activity().turnEndDel( &second ); } );
    for ( TurnEnd* handler : { &first, &second, &third } ) {
        activity().turnEndIs( handler );
    }
    settle();
    EXPECT_EQ( log_, Log{ "third" } );
}

TEST_F( ActivityTest, TurnEndRemovedBeforehandDoesNotCome ) {
    TurnEnd handler( [&] { log_.emplace_back( "end" ); } );
    activity().turnEndIs( &handler );
    activity().turnEndDel( &handler );
    settle();
    EXPECT_TRUE( log_.empty() );
}

TEST_F( ActivityTest, TurnEndThatAsksAgainForEverCannotHoldASimulation ) {
    int calls = 0;
    TurnEnd handler( [&] {
        ++calls;
        activity().turnEndIs( &handler );
    } );
    activity().turnEndIs( &handler );
    runFor( 50 * Kiv::ActivitySm::tick );
    activity().turnEndDel( &handler );
    EXPECT_GT( calls, 40 );
    EXPECT_LT( calls, 60 );
}

TEST_F( ActivityTest, ReadableDescriptorReachesItsHandler ) {
    Event event( activity(), [&] { log_.emplace_back( "event" ); } );
    activity().runOnce();
    EXPECT_TRUE( log_.empty() );
    event.raise();
    activity().runOnce();
    activity().runOnce();
    EXPECT_EQ( log_, Log{ "event" } );
}

TEST_F( ActivityTest, TimersComeBeforeDescriptorsAndTurnEndsAfter ) {
    TurnEnd handler( [&] { log_.emplace_back( "end" ); } );
    Event event( activity(), [&] {
        log_.emplace_back( "event" );
        activity().turnEndIs( &handler );
    } );
    auto const timer = alarm( "timer", 0.0 );
    event.raise();
    activity().runOnce();
    EXPECT_EQ( log_, ( Log{ "timer", "event", "end" } ) );
}

TEST_F( ActivityTest, HandlerMayRemoveAnotherOfTheSameTurn ) {
    std::unique_ptr<Event> first;
    std::unique_ptr<Event> second;
    int served = 0;
    first = std::make_unique<Event>( activity(), [&] {
        ++served;
        second = nullptr;
    } );
    second = std::make_unique<Event>( activity(), [&] {
        ++served;
        first = nullptr;
    } );
    first->raise();
    second->raise();
    activity().runOnce();
    EXPECT_EQ( served, 1 );
}

TEST_F( ActivityTest, HandlerMayRemoveItself ) {
    std::unique_ptr<Event> event;
    event = std::make_unique<Event>( activity(), [&] { log_.emplace_back( "event" ); } );
    event->raise();
    Event* const raw = event.get();
    raw->raised = [this, raw] {
        log_.emplace_back( "event" );
        activity().ioHandlerDel( raw->fd() );
    };
    activity().runOnce();
    raw->raise();
    activity().runOnce();
    EXPECT_EQ( log_, Log{ "event" } );
}

TEST_F( ActivityTest, HandlerOfADescriptorMayBeReplaced ) {
    struct Other : Kiv::IoHandler {
        int calls = 0;
        void handleIo( Kiv::U32 ) override { ++calls; }
    } other;
    Event event( activity(), [&] { log_.emplace_back( "event" ); } );
    EXPECT_TRUE( activity().ioHandlerIs( event.fd(), EPOLLIN, &other ) );
    event.raise();
    activity().runOnce();
    EXPECT_EQ( other.calls, 1 );
    EXPECT_TRUE( log_.empty() );
}

TEST_F( ActivityTest, EventsMayBeChanged ) {
    int ends[2];
    ASSERT_EQ( pipe( ends ), 0 );
    struct Writer : Kiv::IoHandler {
        Kiv::U32 seen = 0;
        void handleIo( Kiv::U32 events ) override { seen = events; }
    } writer;
    EXPECT_TRUE( activity().ioHandlerIs( ends[1], 0, &writer ) );
    activity().runOnce();
    EXPECT_EQ( writer.seen, 0U );
    EXPECT_TRUE( activity().ioHandlerIs( ends[1], EPOLLOUT, &writer ) );
    activity().runOnce();
    EXPECT_EQ( writer.seen, static_cast<Kiv::U32>( EPOLLOUT ) );
    activity().ioHandlerDel( ends[1] );
    close( ends[0] );
    close( ends[1] );
}

TEST_F( ActivityTest, DescriptorThatCannotBeWaitedForIsRefused ) {
    struct Nobody : Kiv::IoHandler {
        void handleIo( Kiv::U32 ) override { FAIL(); }
    } nobody;
    int const file = open( "/proc/self/exe", O_RDONLY | O_CLOEXEC );
    ASSERT_GE( file, 0 );
    EXPECT_FALSE( activity().ioHandlerIs( file, EPOLLIN, &nobody ) );
    EXPECT_FALSE( activity().ioHandlerIs( -1, EPOLLIN, &nobody ) );
    close( file );
}

TEST_F( ActivityTest, DescriptorIsReadableWhereInputWaits ) {
    Event event( activity(), [&] { log_.emplace_back( "event" ); } );
    epoll_event ready{};
    int const outer = epoll_create1( EPOLL_CLOEXEC );
    epoll_event wanted{ EPOLLIN, {} };
    ASSERT_EQ( epoll_ctl( outer, EPOLL_CTL_ADD, activity().descriptor(), &wanted ), 0 );
    EXPECT_EQ( epoll_wait( outer, &ready, 1, 0 ), 0 );
    event.raise();
    EXPECT_EQ( epoll_wait( outer, &ready, 1, 0 ), 1 );
    activity().runOnce();
    EXPECT_EQ( epoll_wait( outer, &ready, 1, 0 ), 0 );
    close( outer );
}

TEST_F( ActivityTest, WheelThatHasGoneIsNotServed ) {
    { Ptr<Lumo::TimerWheel> const other( new Lumo::TimerWheel ); }
    runFor( 1.0 );
    EXPECT_EQ( activity().nextDeadline(), never );
}

TEST_F( ActivityTest, ActivitiesDoNotServeEachOthersTimers ) {
    Ptr<Kiv::ActivityConfig> const other( new Kiv::ActivityConfig );
    Ptr<Lumo::TimerWheel> const otherWheel( new Lumo::TimerWheel( other ) );
    auto const timer = Alarm::on( otherWheel, [&] { log_.emplace_back( "timer" ); } );
    timer->timeMinIs( start() + 1.0 );
    runFor( 5.0 );
    EXPECT_TRUE( log_.empty() );
    other->activitySm().runOnce();
    EXPECT_EQ( log_, Log{ "timer" } );
}

/// The loop on the system's clock. Nothing here waits: what is asked for lies in the present or has happened.
class RealTimeActivityTest : public ::testing::Test {
  protected:
    Ptr<Kiv::ActivityConfig> config_{ new Kiv::ActivityConfig };
    Kiv::ActivitySm& activity_ = config_->activitySm();
    Ptr<Lumo::TimerWheel> wheel_{ new Lumo::TimerWheel( config_ ) };
};

TEST_F( RealTimeActivityTest, DueTimerIsServed ) {
    bool fired = false;
    auto const timer = Alarm::on( wheel_, [&] { fired = true; } );
    timer->timeMinIs( Kiv::now() );
    EXPECT_TRUE( activity_.runUntil( [&] { return fired; } ) );
}

TEST_F( RealTimeActivityTest, TimerIsNeverEarly ) {
    /// A clock that nobody can advance and that moves a little with every reading.
    struct Ticking : Kiv::Clock {
        mutable Seconds time = 1000.0;
        Seconds now() const override { return time += 1e-6; }
    } ticking;
    Kiv::ClockScope const scope( ticking );
    wheel_ = new Lumo::TimerWheel( config_ );
    Seconds at = 0.0;
    auto const timer = Alarm::on( wheel_, [&] { at = Kiv::now(); } );
    Seconds const wanted = Kiv::now() + 1e-4;
    timer->timeMinIs( wanted );
    EXPECT_TRUE( activity_.runUntil( [&] { return at != 0.0; } ) );
    EXPECT_GE( at, wanted );
}

TEST_F( RealTimeActivityTest, InputEndsTheWait ) {
    bool raised = false;
    Event event( activity_, [&] { raised = true; } );
    event.raise();
    EXPECT_TRUE( activity_.runUntil( [&] { return raised; } ) );
}

TEST_F( RealTimeActivityTest, TurnByHandWaitsForNothing ) {
    auto const timer = Alarm::on( wheel_, [] { FAIL(); } );
    timer->timeMinIs( Kiv::now() + 86400.0 );
    activity_.runOnce();
    EXPECT_GT( activity_.nextDeadline(), Kiv::now() );
}

TEST_F( RealTimeActivityTest, MachineThatRearmsForNowLeavesRoomForDescriptors ) {
    bool raised = false;
    auto const timer = Alarm::on( wheel_ );
    timer->rings = [&] { timer->timeMinIs( Kiv::now() ); };
    timer->timeMinIs( Kiv::now() );
    Event event( activity_, [&] { raised = true; } );
    event.raise();
    EXPECT_TRUE( activity_.runUntil( [&] { return raised; } ) );
}

/// From here on the kernel tells this process that it does not know the wait by the nanosecond.
bool
forgetTheFineWait() {
    sock_filter steps[] = {
        BPF_STMT( BPF_LD | BPF_W | BPF_ABS, offsetof( seccomp_data, nr ) ),
        BPF_JUMP( BPF_JMP | BPF_JEQ | BPF_K, SYS_epoll_pwait2, 0, 1 ),
        BPF_STMT( BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS ),
        BPF_STMT( BPF_RET | BPF_K, SECCOMP_RET_ALLOW ),
    };
    sock_fprog const filter{ std::size( steps ), steps };
    return prctl( PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0 ) == 0 &&
           prctl( PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter ) == 0;
}

TEST_F( RealTimeActivityTest, InputEndsTheWaitOfAKernelThatWaitsByTheMillisecond ) {
    auto const inputIsHeard = [this] {
        bool raised = false;
        Event event( activity_, [&] { raised = true; } );
        event.raise();
        return forgetTheFineWait() && activity_.runUntil( [&] { return raised; }, 5.0 );
    };
    EXPECT_EXIT( std::exit( inputIsHeard() ? 0 : 1 ), ::testing::ExitedWithCode( 0 ), "" );
}

} // namespace
