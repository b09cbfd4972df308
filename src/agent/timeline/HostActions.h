#pragma once

#include <unordered_map>

#include "agent/run/Emulation.h"
#include "agent/timeline/EventCursor.h"
#include "agent/timeline/GroupOrder.h"

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
    void zap( Event const& event, EventCursor::Unit const& unit, Igmp::IgmpHost& host );
    void flap( Event const& event, EventCursor::Unit const& unit, Igmp::IgmpHost& host );
    GroupOrder const& groupsOf( Event const& event );

    Scenario const& scenario_;
    Igmp::IgmpHostDir& hostDir_;
    std::unordered_map<Event const*, GroupOrder> groups_; ///< of the events that have done anything with any
};

} // namespace Agent
