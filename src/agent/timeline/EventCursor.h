#pragma once

#include <random>

#include "agent/scenario/Scenario.h"
#include "agent/timeline/Event.h"

namespace Agent {

/// A place in the course of one event: which unit of which step comes next, and when. It knows nothing of
/// hosts, only of their numbers, so that the shares of a scenario keep time together: each walks over all
/// units and stops at its own.
class EventCursor {
  public:
    struct Unit {
        U64 step;
        HostSelection::Host host;
        U64 hostIndex; ///< within the selection
        U64 group;     ///< within the groups of the event
        bool endsStep; ///< the last one of this share in its step
    };

    /// `seed` gives the jitter; the event outlives the cursor.
    EventCursor( Event const& event, Shard const& shard, U64 seed );

    Event const& event() const { return event_; }
    /// When the next unit is due, in seconds after the start; infinity where nothing is left to do.
    Kiv::Seconds time() const { return time_; }
    /// That unit, and on to the one behind it. There must be one.
    Unit take();

  private:
    void findUnit();
    U64 nextMine( U64 unit ) const;
    void nextStep();
    Kiv::Seconds unitTime( U64 unit ) const;
    Kiv::Seconds drawnJitter();

    Event const& event_;
    Shard const shard_;
    U64 const groupsPerHost_;
    U64 const units_;
    std::mt19937_64 random_;
    U64 step_ = 0;
    Kiv::Seconds stepBegin_;
    U64 unit_ = 0;
    Kiv::Seconds time_ = Kiv::never;
};

} // namespace Agent
