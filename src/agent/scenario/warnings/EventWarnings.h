#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "agent/hosts/HostRegrets.h"
#include "agent/scenario/Scenario.h"
#include "agent/scenario/warnings/GroupOverlap.h"
#include "agent/scenario/warnings/HostKinds.h"

namespace Agent {

/// Warnings about the events of a scenario: what they would make of hosts and groups, leaves of what nobody
/// joins, and times that do not come or do not do. Hosts are looked at by kind: an event takes the work of a
/// check for each kind among its hosts, and where it is about other hosts than the one before it a step for
/// each of their entries. The work is bounded over all events, and it is told where that does not suffice.
class EventWarnings {
  public:
    /// What may be spent on all events in steps, of which the check of a kind takes a thousand.
    static constexpr U64 mostSteps = 100'000'000;

    EventWarnings( Scenario const& scenario, Diagnostics& warnings, U64 steps = mostSteps )
        : scenario_( scenario ),
          warnings_( warnings ),
          kindOf_( scenario.hosts.size(), unknown ),
          stepsLeft_( steps ) {}

    void check();
    U64 stepsLeft() const { return stepsLeft_; }

  private:
    /// Index of what many hosts have in common that warnings speak of: all but their addresses.
    using Kind = HostKinds::Kind;
    using Changes = std::map<Kind, Kind>;
    static constexpr Kind unknown = ~U32{ 0 };

    void checkRate( Event const& event );
    void checkHosts( Event const& event );
    void select( HostSelection const& selection );
    void settle();
    void forEachRun( Kiv::FunctionRef<Kind( HostRange const&, Kind )> f );
    void checkLeave( Event const& event );
    void noteJoins( std::vector<Event const*> const& events );
    bool isJoinedAtStart( Event const& leave, GroupSpec const& groups );
    bool isJoinedByEvent( Event const& leave, GroupSpec const& groups );
    bool joins( Event const& join, Event const& leave, GroupSpec const& groups );
    bool overlaps( GroupSpec const& joined, GroupSpec const& other );
    bool haveCommon( HostSelection const& a, HostSelection const& b );
    Kind afterwards( Kind before, Event const& event );
    bool spend( U64 steps );
    Kind kindOfEntry( U32 entry );
    Kind kindIs( HostState const& state );

    Scenario const& scenario_;
    Diagnostics& warnings_;
    std::vector<HostState> kinds_;
    std::unordered_map<std::string, Kind> kindByText_;
    HostKinds kindOf_; ///< as the events so far have made them; unknown until it is needed
    /// What the events last looked at were about, and what they have made of the kinds among it, which
    /// `kindOf_` does not know yet: events of the same hosts take a step for each kind.
    HostSelection const* selected_ = nullptr;
    Changes changes_;
    bool knowsJoins_ = true;
    GroupOverlap overlap_;
    std::vector<Event const*> joins_;
    std::unordered_multimap<U32, Event const*> joinsFrom_; ///< by the lowest group of an entry
    U64 stepsLeft_;
};

} // namespace Agent
