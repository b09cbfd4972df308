#include <algorithm>
#include <limits>

#include "agent/scenario/reading/HostReader.h"
#include "agent/timeline/EventReader.h"

namespace Agent {

namespace {

/// When each entry of hosts is there for the first time; 0 for those that are there from the start.
std::vector<Kiv::Seconds>
firstTimes( Scenario const& scenario ) {
    std::vector<Kiv::Seconds> times;
    for ( HostSpec const& spec : scenario.hosts ) {
        times.push_back( spec.later ? Kiv::never : 0.0 );
    }
    for ( Event const& event : scenario.events ) {
        if ( event.action == EventAction::add ) {
            for ( HostRange const& range : event.selection.ranges() ) {
                times[range.entry] = std::min( times[range.entry], event.time );
            }
        }
    }
    return times;
}

/// An event must come when some host is there that it is about.
void
checkTime(
    Scenario const& scenario, Event const& event, std::vector<Kiv::Seconds> const& firstTimes,
    Diagnostics& errors
) {
    HostRange const* soonest = nullptr;
    for ( HostRange const& range : event.selection.ranges() ) {
        if ( !soonest || firstTimes[range.entry] < firstTimes[soonest->entry] ) {
            soonest = &range;
        }
    }
    if ( !soonest || event.action == EventAction::add || firstTimes[soonest->entry] <= event.time ) {
        return;
    }
    errors.add(
        event.hosts.empty() ? event.at : event.hosts.front().at,
        "hosts: expected hosts that are there at " + Kiv::ValueTraits<double>::format( event.time ) +
            " s, found '" + scenario.hosts[soonest->entry].name + "', which is added at " +
            Kiv::ValueTraits<double>::format( firstTimes[soonest->entry] ) + " s"
    );
}

void
resolve( Event& event, HostFinder& finder, Diagnostics& errors ) {
    event.selection = finder.find( event.hosts, errors );
    if ( event.selection.count() != 0 ) {
        constexpr U64 most = std::numeric_limits<U32>::max();
        event.values.count = static_cast<U32>( std::min( event.selection.count(), most ) );
        checkSteps( event.values, errors );
    }
}

} // namespace

void
resolveEvents( Scenario& scenario, Diagnostics& errors ) {
    if ( scenario.events.empty() ) {
        return;
    }
    HostFinder finder( scenario );
    for ( Event& event : scenario.events ) {
        resolve( event, finder, errors );
    }
    std::vector<Kiv::Seconds> const times = firstTimes( scenario );
    for ( Event const& event : scenario.events ) {
        checkTime( scenario, event, times, errors );
    }
}

} // namespace Agent
