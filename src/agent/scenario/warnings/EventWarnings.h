#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "agent/hosts/HostRegrets.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

/// Warnings about the events of a scenario: what they would make of hosts and groups, and times that do not
/// come or do not do. Entries of hosts are looked at by kind, so that an event takes a step for each entry
/// that it is about, and the work of a check for each kind among them.
class EventWarnings {
  public:
    EventWarnings( Scenario const& scenario, Diagnostics& warnings )
        : scenario_( scenario ), warnings_( warnings ), kindOf_( scenario.hosts.size(), unknown ) {}

    void check();

  private:
    /// Index of what many entries of hosts have in common that warnings speak of: all but their addresses.
    using Kind = U32;
    static constexpr Kind unknown = ~U32{ 0 };

    void checkTime( Event const& event );
    void checkRate( Event const& event );
    void checkHosts( Event const& event );
    Kind kindOf( U32 entry );
    Kind kindIs( HostState const& state );

    Scenario const& scenario_;
    Diagnostics& warnings_;
    std::vector<HostState> kinds_;
    std::unordered_map<std::string, Kind> kindByText_;
    std::vector<Kind> kindOf_; ///< by entry, as the events so far have made it; unknown until it is needed
};

} // namespace Agent
