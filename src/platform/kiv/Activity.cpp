#include "platform/kiv/Activity.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <ctime>

#include "platform/kiv/Clock.h"
#include "platform/kiv/NotifieeConst.h"

namespace Kiv {

ActivityConfig::ActivityConfig() : activitySm_( new ActivitySm ) {}

ActivitySm*
kivActivitySmFor( ActivityConfig const* activity ) {
    return &( activity ? activity : defaultActivity().get() )->activitySm();
}

Ptr<ActivityConfig> const&
defaultActivity() {
    // Never destroyed: what is torn down at the end of the process may still ask for it.
    static auto const& activity = *new Ptr<ActivityConfig>( new ActivityConfig );
    return activity;
}

ActivitySm::ActivitySm() : epoll_( epoll_create1( EPOLL_CLOEXEC ) ) {
    invariant( epoll_ >= 0, "epoll_create1" );
}

ActivitySm::~ActivitySm() {
    close( epoll_ );
}

void
ActivitySm::defer( PtrInterface::NotifieeConst* reactor ) {
    deferred_.emplace_back( reactor );
}

void
ActivitySm::runFor( Seconds span ) {
    runUntilTime( now() + span );
}

void
ActivitySm::runUntilTime( Seconds end ) {
    for ( begin(); !stopped_; ) {
        turn( end );
        if ( now() >= end || nothingCanCome( end ) ) {
            deliverDeferred();
            serveTurnEnd();
            return;
        }
    }
}

bool
ActivitySm::runUntil( std::function<bool()> const& condition, Seconds span ) {
    Seconds const end = now() + span;
    for ( begin(); !stopped_ && !condition(); ) {
        if ( now() >= end || nothingCanCome( end ) ) {
            return false;
        }
        turn( end );
    }
    return condition();
}

/// Opens a run. The caller has had the floor, so this instant counts as not yet served.
void
ActivitySm::begin() {
    stopped_ = false;
    clock().instantServedIs( false );
}

/// True where a simulation without end has run out of events.
bool
ActivitySm::nothingCanCome( Seconds end ) const {
    return clock().isSimulated() && ioHandlers_.empty() && !isFinite( end ) && !isFinite( nextDeadline() );
}

void
ActivitySm::runOnce() {
    turn( clock().isSimulated() ? never : now() );
}

Seconds
ActivitySm::nextDeadline() const {
    if ( hasWorkAtOnce() ) {
        return now();
    }
    Seconds earliest = never;
    for ( DeadlineSource* source : deadlineSources_ ) {
        earliest = std::min( earliest, source->nextDeadline() );
    }
    return earliest;
}

void
ActivitySm::deadlineSourceDel( DeadlineSource* source ) {
    std::erase( deadlineSources_, source );
}

bool
ActivitySm::ioHandlerIs( int descriptor, U32 events, IoHandler* handler ) {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor;
    bool const isNew = ioHandlers_.insert_or_assign( descriptor, handler ).second;
    bool const taken = epoll_ctl( epoll_, isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, descriptor, &event ) == 0;
    if ( !taken ) {
        ioHandlers_.erase( descriptor );
    }
    return taken;
}

void
ActivitySm::ioHandlerDel( int descriptor ) {
    if ( ioHandlers_.erase( descriptor ) != 0 ) {
        epoll_ctl( epoll_, EPOLL_CTL_DEL, descriptor, nullptr );
    }
}

void
ActivitySm::turnEndIs( TurnEndHandler* handler ) {
    turnEnd_.push_back( handler );
}

void
ActivitySm::turnEndDel( TurnEndHandler* handler ) {
    std::erase( turnEnd_, handler );
    std::replace(
        servingTurnEnd_.begin(), servingTurnEnd_.end(), handler, static_cast<TurnEndHandler*>( nullptr )
    );
}

void
ActivitySm::turn( Seconds limit ) {
    bool busy = deliverDeferred();
    if ( clock().isSimulated() ) {
        jumpClock( limit );
    }
    std::array<epoll_event, 64> events;
    int const ready = wait( events, limit );
    busy |= serveTimers();
    serveIo( { events.data(), static_cast<std::size_t>( ready ) } );
    busy |= serveTurnEnd();
    if ( busy ) {
        clock().instantServedIs( true );
    }
}

bool
ActivitySm::deliverDeferred() {
    bool any = false;
    while ( !deferred_.empty() ) {
        any = true;
        std::vector<Ptr<PtrInterface::NotifieeConst>> batch;
        batch.swap( deferred_ );
        for ( auto const& reactor : batch ) {
            if ( reactor->references() > 1 ) { // otherwise its owner has dropped it
                reactor->deliverPending();
            }
        }
    }
    return any;
}

/// A turn that served something leaves the clock a tick later, so that a machine which rearms itself for now
/// cannot hold a simulation at one instant.
void
ActivitySm::jumpClock( Seconds limit ) {
    Seconds target = nextDeadline();
    if ( clock().instantServed() ) {
        target = std::max( target, now() + tick );
    }
    target = std::min( target, limit );
    if ( isFinite( target ) ) {
        clock().advanceTo( target );
    }
}

namespace {

/// Kernels before Linux 5.11, and some of what can stand before a kernel, know no wait by the nanosecond;
/// there one by the millisecond serves, which may be late and is never early.
int
waitForEvents( int epoll, std::span<epoll_event> events, Seconds span ) {
    int const room = static_cast<int>( events.size() );
    timespec timeout{};
    timeout.tv_sec = static_cast<time_t>( span );
    timeout.tv_nsec =
        std::min( 999'999'999L, static_cast<long>( std::ceil( ( span - std::floor( span ) ) * 1e9 ) ) );
    int const ready = epoll_pwait2( epoll, events.data(), room, &timeout, nullptr );
    if ( ready < 0 && errno == ENOSYS ) {
        return epoll_wait( epoll, events.data(), room, static_cast<int>( std::ceil( span * 1e3 ) ) );
    }
    return ready;
}

} // namespace

int
ActivitySm::wait( std::span<epoll_event> events, Seconds limit ) {
    Seconds span = 0.0;
    if ( !clock().isSimulated() ) {
        span = std::max( 0.0, std::min( nextDeadline(), limit ) - now() );
    } else if ( ioHandlers_.empty() ) {
        return 0;
    }
    constexpr Seconds aDay = 86400.0;
    int const ready = waitForEvents( epoll_, events, std::min( span, aDay ) );
    return std::max( ready, 0 ); // a signal ends the wait early, which does no harm
}

bool
ActivitySm::serveTimers() {
    std::size_t served = 0;
    for ( std::size_t i = 0; i < deadlineSources_.size(); ++i ) {
        served += deadlineSources_[i]->expire( now() );
    }
    return served != 0;
}

void
ActivitySm::serveIo( std::span<epoll_event const> events ) {
    for ( epoll_event const& event : events ) {
        auto const handler = ioHandlers_.find( event.data.fd );
        if ( handler != ioHandlers_.end() ) {
            handler->second->handleIo( event.events );
        }
    }
}

bool
ActivitySm::serveTurnEnd() {
    servingTurnEnd_.swap( turnEnd_ );
    bool const any = !servingTurnEnd_.empty();
    for ( std::size_t i = 0; i < servingTurnEnd_.size(); ++i ) {
        if ( servingTurnEnd_[i] ) {
            servingTurnEnd_[i]->handleTurnEnd();
        }
    }
    servingTurnEnd_.clear();
    return any;
}

} // namespace Kiv
