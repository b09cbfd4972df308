#include <algorithm>
#include <limits>
#include <unordered_map>

#include "agent/scenario/WorkProgress.h"
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
    std::unordered_map<std::vector<HostRange> const*, Kiv::Seconds> added; // events of the same hosts as one
    for ( Event const& event : scenario.events ) {
        if ( event.action == EventAction::add ) {
            Kiv::Seconds& time = added.try_emplace( &event.selection.ranges(), Kiv::never ).first->second;
            time = std::min( time, event.time );
        }
    }
    for ( auto const& [ranges, time] : added ) {
        for ( HostRange const& range : *ranges ) {
            times[range.entry] = std::min( times[range.entry], time );
        }
    }
    return times;
}

/// Finds, of the hosts that an event is about, those that are there first. Events of the same hosts share the
/// answer.
class Soonest {
  public:
    explicit Soonest( Scenario const& scenario ) : times_( firstTimes( scenario ) ) {}

    Kiv::Seconds time( HostRange const& range ) const { return times_[range.entry]; }
    /// Null for no hosts.
    HostRange const* of( HostSelection const& selection ) {
        auto const [soonest, isNew] = known_.try_emplace( &selection.ranges(), nullptr );
        for ( std::size_t i = 0; isNew && i < selection.ranges().size(); ++i ) {
            HostRange const& range = selection.ranges()[i];
            if ( !soonest->second || time( range ) < time( *soonest->second ) ) {
                soonest->second = &range;
            }
        }
        return soonest->second;
    }

  private:
    std::vector<Kiv::Seconds> const times_;
    std::unordered_map<std::vector<HostRange> const*, HostRange const*> known_;
};

/// An event must come when some host is there that it is about.
void
checkTime( Scenario const& scenario, Event const& event, Soonest& soonest, Diagnostics& errors ) {
    HostRange const* const range = soonest.of( event.selection );
    if ( !range || event.action == EventAction::add || soonest.time( *range ) <= event.time ) {
        return;
    }
    errors.add(
        event.hosts.empty() ? event.at : event.hosts.front().at,
        "hosts: expected hosts that are there at " + Kiv::ValueTraits<double>::format( event.time ) +
            " s, found '" + scenario.hosts[range->entry].name + "', which is added at " +
            Kiv::ValueTraits<double>::format( soonest.time( *range ) ) + " s"
    );
}

void
resolve( Event& event, HostFinder& finder, Diagnostics& errors ) {
    std::size_t const errorsBefore = errors.size();
    event.selection = finder.find( event.hosts, errors );
    if ( event.selection.count() != 0 ) {
        constexpr U64 most = std::numeric_limits<U32>::max();
        event.values.count = static_cast<U32>( std::min( event.selection.count(), most ) );
        checkSteps( event.values, errors );
    }
    event.faulty = event.faulty || errors.size() != errorsBefore;
}

} // namespace

void
resolveEvents( Scenario& scenario, Diagnostics& errors ) {
    if ( scenario.events.empty() ) {
        return;
    }
    HostFinder finder( scenario );
    U64 done = 0;
    for ( Event& event : scenario.events ) {
        WorkProgress::tell( "events whose hosts are found", done++, scenario.events.size() );
        resolve( event, finder, errors );
    }
    Soonest soonest( scenario );
    for ( Event const& event : scenario.events ) {
        checkTime( scenario, event, soonest, errors );
    }
}

} // namespace Agent
