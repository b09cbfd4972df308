#include "agent/run/PromptEnd.h"

#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cmath>
#include <string_view>
#include <utility>

namespace Agent {

namespace {

// What the handler knows, which runs in the midst of anything.
sigset_t endingSignals;
volatile sig_atomic_t allowedNow = 0; // a PromptEnd::Allowed
volatile sig_atomic_t seenBefore = 0;
long workedBefore = 0;
std::atomic<void ( * )()> lastAct = nullptr;
static_assert( decltype( lastAct )::is_always_lock_free );

/// One of the signals that end the process and wait; 0 for none.
int
waitingSignal() {
    sigset_t waiting;
    sigpending( &waiting );
    for ( int const signal : { SIGINT, SIGTERM, SIGHUP } ) {
        if ( sigismember( &endingSignals, signal ) == 1 && sigismember( &waiting, signal ) == 1 ) {
            return signal;
        }
    }
    return 0;
}

/// The signals have their usual effect again. Those that wait are dropped.
void
letSignalsEnd() {
    for ( int const signal : { SIGINT, SIGTERM, SIGHUP } ) {
        if ( sigismember( &endingSignals, signal ) == 1 ) {
            std::signal( signal, SIG_IGN );
            std::signal( signal, SIG_DFL );
        }
    }
    pthread_sigmask( SIG_UNBLOCK, &endingSignals, nullptr );
}

/// The standard error may be what nobody reads.
bool
canTell() {
    pollfd errors{ STDERR_FILENO, POLLOUT, 0 };
    return poll( &errors, 1, 0 ) == 1;
}

[[noreturn]] void
endBy( int signal ) {
    constexpr std::string_view told =
        "igmphost: ended at once, in the midst of work; no status, report or summary is written\n";
    letSignalsEnd();
    if ( void ( *const act )() = lastAct ) {
        act();
    }
    if ( canTell() ) {
        [[maybe_unused]] ssize_t const written = write( STDERR_FILENO, told.data(), told.size() );
    }
    std::raise( signal );
    _exit( 128 + signal );
}

/// Whether the thread has done next to nothing since this was asked last.
bool
hasWaited() {
    constexpr long leastWork = 10; // in milliseconds
    timespec time{};
    clock_gettime( CLOCK_THREAD_CPUTIME_ID, &time );
    long const worked = time.tv_sec * 1000 + time.tv_nsec / 1'000'000;
    return worked - std::exchange( workedBefore, worked ) < leastWork;
}

bool
isAllowed( PromptEnd::Allowed where ) {
    return allowedNow == static_cast<sig_atomic_t>( where );
}

void
look( int ) {
    int const errorBefore = errno;
    int const signal = isAllowed( PromptEnd::Allowed::never ) ? 0 : waitingSignal();
    bool const waited = hasWaited();
    if ( signal != 0 && seenBefore == signal && ( waited || isAllowed( PromptEnd::Allowed::always ) ) ) {
        endBy( signal );
    }
    seenBefore = signal;
    errno = errorBefore;
}

timespec
timespecOf( double seconds ) {
    constexpr double nanoseconds = 1e9;
    double const whole = std::floor( seconds );
    return { static_cast<time_t>( whole ), static_cast<long>( ( seconds - whole ) * nanoseconds ) };
}

} // namespace

PromptEnd::PromptEnd( std::vector<int> const& signals, double interval ) {
    sigemptyset( &endingSignals );
    for ( int const signal : signals ) {
        sigaddset( &endingSignals, signal );
    }
    allowedIs( Allowed::always );
    sigevent event{};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = SIGALRM;
    event._sigev_un._tid = gettid();
    timer_t timer{};
    if ( timer_create( CLOCK_MONOTONIC, &event, &timer ) != 0 ) {
        return;
    }
    timer_ = timer;
    struct sigaction action {};
    action.sa_handler = look;
    action.sa_flags = SA_RESTART;
    sigaction( SIGALRM, &action, &outer_ );
    itimerspec const often{ timespecOf( interval ), timespecOf( interval ) };
    timer_settime( timer, 0, &often, nullptr );
}

PromptEnd::~PromptEnd() {
    if ( timer_ ) {
        timer_delete( *timer_ );
        sigaction( SIGALRM, &outer_, nullptr );
    }
}

void
PromptEnd::allowedIs( Allowed allowed ) {
    allowedNow = static_cast<sig_atomic_t>( Allowed::never );
    forgetSeen();
    allowedNow = static_cast<sig_atomic_t>( allowed );
}

void
PromptEnd::forgetSeen() {
    seenBefore = 0;
}

void
PromptEnd::lastActIs( void ( *act )() ) {
    lastAct = act;
}

} // namespace Agent
