#include "agent/timeline/Timeline.h"

#include <algorithm>
#include <iostream>

#include "agent/output/Grouped.h"
#include "platform/kiv/Clock.h"

namespace Agent {

namespace {

/// Times are sums of decimal fractions; the timer wheel knows microseconds.
constexpr Kiv::Seconds tolerance = Kiv::ActivitySm::tick / 2;

constexpr U64 unitsPerTurn = 1000;

/// Far from each other for events that are neighbours.
U64
seedOf( U64 seed, U64 event ) {
    constexpr U64 golden = 0x9e3779b97f4a7c15;
    return seed + ( event + 1 ) * golden;
}

} // namespace

Timeline::Timeline( RunContext const& context )
    : context_( context ),
      actions_( context.scenario, context.emulation ),
      misses_( context.scenario.events.size() ),
      timer_( new Lab::Timer( context.wheel, [this] { handleTimer(); } ) ) {
    for ( Event const& event : context.scenario.events ) {
        U64 const seed = seedOf( context.scenario.seed.value_or( 0 ), cursors_.size() );
        cursors_.emplace_back( event, context.scenario.shard, seed );
        queue( cursors_.size() - 1 );
    }
}

void
Timeline::handleStarted() {
    handleTimer();
}

std::optional<Timeline::Next>
Timeline::next() const {
    if ( queue_.empty() ) {
        return {};
    }
    return Next{ context_.started + queue_.top().time, &cursors_[queue_.top().cursor].event() };
}

std::optional<NextEvent>
Timeline::nextEvent() const {
    std::optional<Next> const due = next();
    if ( !due ) {
        return {};
    }
    return NextEvent{ due->time, std::string( actionName( due->event->action ) ) + ", line " +
                                     std::to_string( due->event->at.line ) + ", " +
                                     counted( due->event->selection.count(), "host" ) };
}

void
Timeline::handleTimeOver() {
    if ( context_.scenario.duration && !isToEnd() ) {
        auto const isDone = [this] { return !isDue( *context_.scenario.duration + tolerance ); };
        Kiv::defaultActivity()->activitySm().runUntil( isDone );
    }
    timer_->stop();
}

/// What is left over is due already, so it goes on in the next turn.
void
Timeline::handleTimer() {
    Kiv::Seconds const end = context_.scenario.duration.value_or( Kiv::never ); // nothing comes behind it
    Kiv::Seconds const now = std::min( Kiv::now() - context_.started, end ) + tolerance;
    unitsLeft_ = unitsPerTurn;
    while ( isDue( now ) && mayGoOn() ) {
        std::size_t const cursor = queue_.top().cursor;
        queue_.pop();
        play( cursor, now );
        queue( cursor );
    }
    if ( isDue( end + tolerance ) ) {
        timer_->timeMinIs( context_.started + queue_.top().time );
    }
}

bool
Timeline::mayGoOn() {
    if ( unitsLeft_ == 0 && Kiv::clock().isSimulated() && !isToEnd() ) {
        unitsLeft_ = unitsPerTurn;
    }
    return unitsLeft_ != 0;
}

/// One step at most, so that events of one time take turns, and no more than may be done in this turn.
void
Timeline::play( std::size_t cursor, Kiv::Seconds now ) {
    EventCursor& at = cursors_[cursor];
    Misses& misses = misses_[cursor];
    for ( bool ends = false; !ends && at.time() <= now && unitsLeft_ != 0; --unitsLeft_ ) {
        Kiv::Seconds const time = at.time();
        EventCursor::Unit const unit = at.take();
        ++misses.units;
        if ( !actions_.perform( at.event(), unit ) && misses.missed++ == 0 ) {
            misses.since = time;
        }
        ends = unit.endsStep;
        if ( ends ) {
            tellMisses( cursor );
        }
    }
}

void
Timeline::queue( std::size_t cursor ) {
    if ( Kiv::isFinite( cursors_[cursor].time() ) ) {
        queue_.push( { cursors_[cursor].time(), cursor } );
    }
}

/// Once for an event: what repeats itself would miss the same again and again. An event for every host means
/// those that are there.
void
Timeline::tellMisses( std::size_t cursor ) {
    Misses& misses = misses_[cursor];
    Event const& event = cursors_[cursor].event();
    if ( misses.missed != 0 && !misses.told && !event.hosts.empty() ) {
        char const* const what = event.action == EventAction::change ? " hosts or groups" : " hosts";
        std::cerr << "igmphost: warning: " << context_.scenario.files.at( event.at.file ) << ':'
                  << event.at.line << ": " << actionName( event.action ) << " at " << misses.since
                  << " s: " << misses.missed << " of " << misses.units << what << " are not there"
                  << std::endl;
        misses.told = true;
    }
    misses.units = misses.missed = 0;
}

} // namespace Agent
