#pragma once

#include "agent/run/Emulation.h"
#include "agent/timeline/EventCursor.h"

namespace Agent {

/// Does to hosts what events say. Every generation counter that a step concerns is raised once, behind all
/// that the step sets.
class HostActions {
  public:
    HostActions( Scenario const& scenario, Emulation& emulation )
        : scenario_( scenario ), hostDir_( emulation.hostDir() ) {}

    /// Returns false, with nothing done, where the host is not there, or the group that is to be changed.
    bool perform( Event const& event, EventCursor::Unit const& unit );

  private:
    bool act( Event const& event, EventCursor::Unit const& unit, Igmp::IgmpHost& host );
    void add( EventCursor::Unit const& unit, Kiv::Name const& name );
    static bool change( EventGroup const& group, Igmp::IgmpHost& host );
    static void zap( Event const& event, EventCursor::Unit const& unit, Igmp::IgmpHost& host );
    static void flap( Event const& event, EventCursor::Unit const& unit, Igmp::IgmpHost& host );

    Scenario const& scenario_;
    Igmp::IgmpHostDir& hostDir_;
};

} // namespace Agent
