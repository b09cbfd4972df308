#include "agent/scenario/warnings/EventWarnings.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace Agent {

namespace {

using Igmp::IgmpHost;

/// Of the kinds of hosts that an event is about, so many are looked at: events and kinds may both be a great
/// many, while what a person writes, or has written by a script, knows a few.
constexpr std::size_t mostKinds = 100;

std::string
textOf( Kiv::Seconds seconds ) {
    return Kiv::ValueTraits<double>::format( seconds );
}

using Places = std::set<std::tuple<std::size_t, int, int>>;

Places::value_type
placeOf( Position const& at ) {
    return { at.file, at.line, at.column };
}

/// Whether two hosts that differ in the attribute's value may be of one kind: warnings only ask whether it is
/// set.
bool
isOwn( Kiv::AttributeId id ) {
    return id == IgmpHost::attrIpAddr || id == IgmpHost::attrMacAddr || id == IgmpHost::attrDeviceName ||
           id == IgmpHost::attrNs || id == IgmpHost::attrIntfId;
}

/// The same for all hosts of one kind, and for no others.
std::string
kindText( HostState const& state ) {
    std::vector<std::string> values;
    for ( Setting const& setting : state.host.settings.settings() ) {
        std::string const value =
            isOwn( setting.attribute->id ) ? "" : setting.attribute->type->format( setting.value );
        values.push_back( std::to_string( setting.attribute->id ) + "=" + value + "\n" );
    }
    std::sort( values.begin(), values.end() );
    U64 const sources = state.groups.longest ? state.groups.longest->sources.count() : 0;
    std::string text = std::to_string( state.host.vlanStep ) + " " + std::to_string( state.groups.count ) +
                       " " + std::to_string( state.groups.recordBytes ) + " " + std::to_string( sources ) +
                       " " + ( state.groups.excludes ? "e " : "i " );
    for ( std::string const& value : values ) {
        text += value;
    }
    return text;
}

HostSpec
withSettings( HostSpec const& host, Settings const& changes ) {
    HostSpec after = host;
    after.settings = changes;
    for ( Setting const& setting : host.settings.settings() ) {
        if ( !after.settings.find( setting.attribute->id ) ) {
            after.settings.settingIs( setting );
        }
    }
    return after;
}

/// Where the event says what hosts are set to, or which groups it is about.
Places
placesOf( Event const& event ) {
    Places places;
    for ( Setting const& setting : event.values.settings.settings() ) {
        places.insert( placeOf( setting.at ) );
    }
    for ( GroupSpec const& group : event.groups ) {
        places.insert( placeOf( group.at ) );
    }
    return places;
}

bool
addsGroups( Event const& event ) {
    return event.action != EventAction::set && event.action != EventAction::leave && !event.groups.empty();
}

/// The host as it is once the event has set what it sets, or has been joined to what it joins.
HostState
changed( HostState const& before, Event const& event ) {
    if ( event.action == EventAction::set ) {
        return { withSettings( before.host, event.values.settings ), before.groups };
    }
    GroupDigest const joined( event.groups );
    HostState after = before;
    after.host.groups = event.groups;
    after.groups += joined;
    // Some may be there already, or have been left: no more are sure to be there at one time.
    after.groups.count = std::max( before.groups.count, joined.count );
    after.groups.recordBytes = std::max( before.groups.recordBytes, joined.recordBytes );
    return after;
}

} // namespace

void
EventWarnings::check() {
    std::vector<Event const*> events;
    for ( Event const& event : scenario_.events ) {
        checkTime( event );
        checkRate( event );
        events.push_back( &event );
    }
    std::stable_sort( events.begin(), events.end(), []( Event const* a, Event const* b ) {
        return a->time < b->time;
    } );
    for ( Event const* const event : events ) {
        checkHosts( *event );
    }
}

void
EventWarnings::checkTime( Event const& event ) {
    if ( scenario_.duration && event.time > *scenario_.duration ) {
        warnings_.add(
            event.at, "at: " + textOf( event.time ) + " s does not come; the duration is " +
                          textOf( *scenario_.duration ) + " s"
        );
    }
}

void
EventWarnings::checkRate( Event const& event ) {
    if ( !event.rate || event.spans.empty() ) {
        return;
    }
    Kiv::Seconds const paced = static_cast<double>( event.unitsPerStep() ) / *event.rate;
    Kiv::Seconds const shortest = *std::min_element( event.spans.begin(), event.spans.end() );
    if ( paced > shortest ) {
        warnings_.add(
            event.at, "rate: one time takes " + textOf( paced ) + " s, and the next is due after " +
                          textOf( shortest ) + " s; it will be late"
        );
    }
}

/// What an event makes of all hosts of an entry stands for the events that come later. What comes about at a
/// setting of the host is told at the event.
void
EventWarnings::checkHosts( Event const& event ) {
    if ( event.values.settings.settings().empty() && !addsGroups( event ) ) {
        return;
    }
    Places const places = placesOf( event );
    std::unordered_map<Kind, Kind> changes;
    for ( HostRange const& range : event.selection.ranges() ) {
        Kind const before = kindOf( range.entry );
        auto const [change, isNew] = changes.try_emplace( before, before );
        if ( isNew && changes.size() <= mostKinds ) {
            HostState const after = changed( kinds_[before], event );
            for ( Diagnostic const& regret : newRegrets( kinds_[before], after ) ) {
                Position const& at = places.contains( placeOf( regret.at ) ) ? regret.at : event.at;
                warnings_.add( at, regret.text, regret.endsProcess );
            }
            change->second = kindIs( after );
        }
        if ( range.count == scenario_.hosts[range.entry].count ) {
            kindOf_[range.entry] = change->second;
        }
    }
}

EventWarnings::Kind
EventWarnings::kindOf( U32 entry ) {
    if ( kindOf_[entry] == unknown ) {
        HostSpec const& host = scenario_.hosts[entry];
        HostState state;
        state.host.settings = host.settings;
        state.host.vlanStep = host.vlanStep;
        state.groups = GroupDigest( host.groups );
        kindOf_[entry] = kindIs( state );
    }
    return kindOf_[entry];
}

/// Of the groups the one with the most sources is kept: what a setting does to any it does to this one.
EventWarnings::Kind
EventWarnings::kindIs( HostState const& state ) {
    auto const [kind, isNew] =
        kindByText_.try_emplace( kindText( state ), static_cast<Kind>( kinds_.size() ) );
    if ( isNew ) {
        kinds_.push_back( state );
        HostState& kept = kinds_.back();
        kept.host.groups.clear();
        if ( kept.groups.longest ) {
            kept.host.groups.push_back( *kept.groups.longest );
        }
    }
    return kind->second;
}

} // namespace Agent
