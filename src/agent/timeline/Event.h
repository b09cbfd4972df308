#pragma once

#include <optional>

#include "agent/scenario/HostSelection.h"
#include "agent/scenario/HostSpec.h"

namespace Agent {

enum class EventAction { set, join, leave, change, enable, disable, add, remove, zap, flap };

/// How an action is called in a scenario, such as "join"; "delete" for `remove`.
char const* actionName( EventAction action );

/// One entry of a scenario's events: steps in time, each of which does the action once to every host, or to
/// every host and group. Times are in seconds.
struct Event {
    /// When the step of that number, counted from 0, is to begin, after the start and without jitter.
    Kiv::Seconds stepTime( U64 step ) const;
    /// How many groups the action is done to on each host, one by one; 1 for what is done to a host as a
    /// whole.
    U64 groupsPerHost() const;
    /// What is done in a step, one by one: a host, or a host and one of its groups.
    U64 unitsPerStep() const { return selection.count() * groupsPerHost(); }
    /// When the last unit is done at the latest; infinity for what has no end.
    Kiv::Seconds endTime() const;

    Position at;
    bool faulty = false; ///< an error has been told of it
    EventAction action = EventAction::enable;
    Kiv::Seconds time = 0.0;         ///< of the first step
    std::vector<Kiv::Seconds> spans; ///< from each step to the next, over and over; empty for a single step
    std::optional<U64> steps;        ///< none: without end
    Kiv::Seconds jitter = 0.0;       ///< a step is put off by a random time below this
    std::optional<double> rate;      ///< units per second; all at once where not set

    std::vector<HostName> hosts; ///< all hosts where empty
    HostSelection selection;     ///< the hosts that they mean

    HostSpec values;               ///< what `set` sets; addresses step from host to host
    std::vector<GroupSpec> groups; ///< of join, leave, change, zap and flap
    bool spread = false;           ///< in a zap each host begins one group further than the one before it
};

} // namespace Agent
