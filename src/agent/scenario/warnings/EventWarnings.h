#pragma once

#include "agent/scenario/Scenario.h"

namespace Agent {

/// Warnings about the events of a scenario: what they would make of hosts and groups, and times that do not
/// come or do not do.
class EventWarnings {
  public:
    EventWarnings( Scenario const& scenario, Diagnostics& warnings )
        : scenario_( scenario ), warnings_( warnings ) {}

    void check();

  private:
    void checkTime( Event const& event );
    void checkRate( Event const& event );
    void checkHosts( Event const& event );
    bool checkHost( Event const& event, HostSpec const& host );
    bool isOf( Event const& event, Position const& at ) const;

    Scenario const& scenario_;
    Diagnostics& warnings_;
};

} // namespace Agent
