#include "agent/timeline/EventCursor.h"

#include <algorithm>

namespace Agent {

EventCursor::EventCursor( Event const& event, Shard const& shard, U64 seed )
    : event_( event ),
      shard_( shard ),
      groupsPerHost_( event.groupsPerHost() ),
      units_( event.unitsPerStep() ),
      random_( seed ),
      stepBegin_( event.time + drawnJitter() ),
      unit_( nextMine( 0 ) ) {
    findUnit();
}

EventCursor::Unit
EventCursor::take() {
    U64 const hostIndex = unit_ / groupsPerHost_;
    Unit unit{ step_, event_.selection.host( hostIndex ), hostIndex, unit_ % groupsPerHost_, false };
    unit_ = nextMine( unit_ + 1 );
    unit.endsStep = unit_ >= units_;
    if ( unit.endsStep ) {
        nextStep();
    }
    findUnit();
    return unit;
}

/// Where the share has no part in the event, there is nothing to find.
void
EventCursor::findUnit() {
    bool const isOver = unit_ >= units_ || ( event_.steps && step_ >= *event_.steps );
    time_ = isOver ? Kiv::never : unitTime( unit_ );
}

/// From that unit on; takes no longer for more hosts of a range.
U64
EventCursor::nextMine( U64 unit ) const {
    while ( unit < units_ ) {
        HostSelection::Host const host = event_.selection.host( unit / groupsPerHost_ );
        U64 const others = shard_.hostsBefore( host.number );
        if ( others == 0 ) {
            break;
        }
        unit += std::min( others, U64{ host.behind } + 1 ) * groupsPerHost_ - unit % groupsPerHost_;
    }
    return unit;
}

/// A step that is due while the one before it is still being paced begins behind it.
void
EventCursor::nextStep() {
    Kiv::Seconds const paced = unitTime( units_ );
    ++step_;
    stepBegin_ = std::max( event_.stepTime( step_ ) + drawnJitter(), paced );
    unit_ = nextMine( 0 );
}

Kiv::Seconds
EventCursor::unitTime( U64 unit ) const {
    return event_.rate ? stepBegin_ + static_cast<double>( unit ) / *event_.rate : stepBegin_;
}

/// Of the standard's distributions none is the same everywhere.
Kiv::Seconds
EventCursor::drawnJitter() {
    constexpr double unit = 0x1p-53;
    return event_.jitter == 0.0 ? 0.0 : event_.jitter * static_cast<double>( random_() >> 11 ) * unit;
}

} // namespace Agent
