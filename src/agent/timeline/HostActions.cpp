#include "agent/timeline/HostActions.h"

#include "agent/hosts/Generations.h"
#include "agent/scenario/ScenarioLoader.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;

void
join( EventGroup const& group, IgmpHost& host ) {
    Kiv::Ptr<IgmpV3GroupRecord> const record = groupRecordIs( *group.spec, group.group, host );
    record->versionIs( nextGeneration( record->version() ) );
}

} // namespace

bool
HostActions::perform( Event const& event, EventCursor::Unit const& unit ) {
    Kiv::Name const name( scenario_.hosts[unit.host.entry].hostName( unit.host.index ) );
    Kiv::Ptr<IgmpHost> const host = hostDir_.igmpHost( name );
    if ( event.action == EventAction::add ) {
        if ( !host ) {
            add( unit, name );
        }
        return true;
    }
    return host && act( event, unit, *host );
}

bool
HostActions::act( Event const& event, EventCursor::Unit const& unit, IgmpHost& host ) {
    switch ( event.action ) {
    case EventAction::set:
        setHost( host, event.values.settingsOf( static_cast<U32>( unit.hostIndex ) ) );
        break;
    case EventAction::join: join( groupsOf( event ).group( unit.group ), host ); break;
    case EventAction::leave:
        if ( event.groups.empty() ) {
            host.v3groupDelAll();
        } else {
            host.v3groupDel( groupsOf( event ).group( unit.group ).group );
        }
        break;
    case EventAction::change: return change( groupsOf( event ).group( unit.group ), host );
    case EventAction::enable: host.enabledIs( true ); break;
    case EventAction::disable: host.enabledIs( false ); break;
    case EventAction::add: break;
    case EventAction::remove: hostDir_.igmpHostDel( host.name() ); break;
    case EventAction::zap: zap( event, unit, host ); break;
    case EventAction::flap: flap( event, unit, host ); break;
    }
    return true;
}

GroupOrder const&
HostActions::groupsOf( Event const& event ) {
    return groups_.try_emplace( &event, event.groups ).first->second;
}

void
HostActions::add( EventCursor::Unit const& unit, Kiv::Name const& name ) {
    HostSpec const& spec = scenario_.hosts[unit.host.entry];
    Kiv::Ptr<IgmpHost> const host = hostDir_.igmpHostIs( name );
    loadHost( spec, unit.host.index, *host );
    startHost( spec, *host );
}

bool
HostActions::change( EventGroup const& group, IgmpHost& host ) {
    bool const isThere = static_cast<bool>( host.v3group( group.group ) );
    if ( isThere ) {
        join( group, host );
    }
    return isThere;
}

/// Nothing is kept of what a host watches: the number of the step tells.
void
HostActions::zap( Event const& event, EventCursor::Unit const& unit, IgmpHost& host ) {
    GroupOrder const& groups = groupsOf( event );
    U64 const place = unit.step + ( event.spread ? unit.hostIndex : 0 );
    EventGroup const next = groups.group( place % groups.count() );
    if ( unit.step != 0 ) {
        Zornet::IpAddr const last = groups.group( ( place - 1 ) % groups.count() ).group;
        if ( last != next.group ) {
            host.v3groupDel( last );
        }
    }
    join( next, host );
}

void
HostActions::flap( Event const& event, EventCursor::Unit const& unit, IgmpHost& host ) {
    bool const goesDown = unit.step % 2 == 0;
    if ( event.groups.empty() ) {
        host.enabledIs( !goesDown );
        return;
    }
    EventGroup const group = groupsOf( event ).group( unit.group );
    if ( goesDown ) {
        host.v3groupDel( group.group );
    } else {
        join( group, host );
    }
}

} // namespace Agent
