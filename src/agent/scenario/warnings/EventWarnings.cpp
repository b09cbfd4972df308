#include "agent/scenario/warnings/EventWarnings.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "agent/scenario/WorkProgress.h"
#include "agent/scenario/warnings/DurationWarning.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;

constexpr U64 stepsOfCheck = 1000;

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
        if ( !event.faulty ) {
            warnOfTimeBehindEnd( scenario_, event.time, event.at, warnings_ );
            checkRate( event );
            events.push_back( &event );
        }
    }
    std::stable_sort( events.begin(), events.end(), []( Event const* a, Event const* b ) {
        return a->time < b->time;
    } );
    noteJoins( events );
    U64 done = 0;
    for ( Event const* const event : events ) {
        WorkProgress::tell( "events looked at", done++, events.size() );
        checkHosts( *event );
        checkLeave( *event );
        if ( stepsLeft_ == 0 ) {
            warnings_.add(
                event->at, "events from " + textOf( event->time ) +
                               " s on are not held against all hosts; they are too many together"
            );
            return;
        }
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

/// What an event makes of hosts stands for the events that come later.
void
EventWarnings::checkHosts( Event const& event ) {
    if ( event.values.settings.settings().empty() && !addsGroups( event ) ) {
        return;
    }
    if ( !selected_ || &selected_->ranges() != &event.selection.ranges() ) {
        settle();
        select( event.selection );
    }
    Changes made;
    for ( auto& [original, present] : changes_ ) {
        auto const [change, isNew] = made.try_emplace( present, present );
        if ( isNew && spend( stepsOfCheck ) ) {
            change->second = afterwards( present, event );
        }
        present = change->second;
    }
}

/// Finds the kinds among the hosts.
void
EventWarnings::select( HostSelection const& selection ) {
    selected_ = &selection;
    changes_.clear();
    forEachRun( [this]( HostRange const& range, Kind kind ) {
        Kind const known = kind == unknown ? kindOfEntry( range.entry ) : kind;
        changes_.try_emplace( known, known );
        return known;
    } );
}

/// Makes the hosts what has become of their kinds.
void
EventWarnings::settle() {
    forEachRun( [this]( HostRange const&, Kind kind ) { return changes_.at( kind ); } );
}

/// Calls `f` with each run of selected hosts that are of one kind, and puts the kind that it returns in its
/// place.
void
EventWarnings::forEachRun( Kiv::FunctionRef<Kind( HostRange const&, Kind )> f ) {
    for ( std::size_t i = 0; selected_ && i < selected_->ranges().size(); ++i ) {
        HostRange const& range = selected_->ranges()[i];
        HostSpec const& host = scenario_.hosts[range.entry];
        if ( !host.faulty && spend( 1 ) ) {
            kindOf_.change( range, host.count, [&]( Kind kind ) {
                spend( 1 );
                return f( range, kind );
            } );
        }
    }
}

/// What comes about at a setting of the host is told at the event.
EventWarnings::Kind
EventWarnings::afterwards( Kind before, Event const& event ) {
    Places const places = placesOf( event );
    HostState const after = changed( kinds_[before], event );
    for ( Diagnostic const& regret : newRegrets( kinds_[before], after ) ) {
        Position const& at = places.contains( placeOf( regret.at ) ) ? regret.at : event.at;
        warnings_.add( at, regret.text, regret.endsProcess );
    }
    return kindIs( after );
}

/// False, with nothing left, where the steps do not suffice.
bool
EventWarnings::spend( U64 steps ) {
    bool const suffices = stepsLeft_ >= steps;
    stepsLeft_ = suffices ? stepsLeft_ - steps : 0;
    return suffices;
}

/// What has an error may be what would join.
void
EventWarnings::noteJoins( std::vector<Event const*> const& events ) {
    auto const isFaulty = []( auto const& entry ) { return entry.faulty; };
    knowsJoins_ = std::none_of( scenario_.hosts.begin(), scenario_.hosts.end(), isFaulty ) &&
                  std::none_of( scenario_.events.begin(), scenario_.events.end(), isFaulty );
    for ( Event const* const event : events ) {
        if ( event->action == EventAction::join || event->action == EventAction::zap ||
             event->action == EventAction::flap ) {
            joins_.push_back( event );
            for ( GroupSpec const& groups : event->groups ) {
                joinsFrom_.emplace( groups.groups.lowest().hostOrder(), event );
            }
        }
    }
}

void
EventWarnings::checkLeave( Event const& event ) {
    bool const needsGroups = event.action == EventAction::leave || event.action == EventAction::change;
    if ( !needsGroups || !knowsJoins_ ) {
        return;
    }
    for ( GroupSpec const& groups : event.groups ) {
        if ( !isJoinedAtStart( event, groups ) && !isJoinedByEvent( event, groups ) && stepsLeft_ != 0 ) {
            warnings_.add(
                groups.at, std::string( actionName( event.action ) ) +
                               ": none of the hosts is ever in group " +
                               Kiv::ValueTraits<Zornet::IpAddr>::format( groups.groups.first() ) + " before"
            );
        }
    }
}

bool
EventWarnings::isJoinedAtStart( Event const& leave, GroupSpec const& groups ) {
    for ( HostRange const& range : leave.selection.ranges() ) {
        for ( GroupSpec const& joined : scenario_.hosts[range.entry].groups ) {
            if ( !spend( 1 ) || overlaps( joined, groups ) ) {
                return true;
            }
        }
    }
    return false;
}

/// Most are left as they are joined.
bool
EventWarnings::isJoinedByEvent( Event const& leave, GroupSpec const& groups ) {
    auto const [first, last] = joinsFrom_.equal_range( groups.groups.lowest().hostOrder() );
    for ( auto join = first; join != last; ++join ) {
        if ( joins( *join->second, leave, groups ) ) {
            return true;
        }
    }
    return std::any_of( joins_.begin(), joins_.end(), [&]( Event const* join ) {
        return joins( *join, leave, groups );
    } );
}

bool
EventWarnings::joins( Event const& join, Event const& leave, GroupSpec const& groups ) {
    if ( !spend( 1 ) ) {
        return true;
    }
    bool const isAbout = std::any_of( join.groups.begin(), join.groups.end(), [&]( GroupSpec const& joined ) {
        return overlaps( joined, groups );
    } );
    return isAbout && join.time <= leave.endTime() && haveCommon( join.selection, leave.selection );
}

bool
EventWarnings::haveCommon( HostSelection const& a, HostSelection const& b ) {
    auto ofA = a.ranges().begin();
    auto ofB = b.ranges().begin();
    while ( ofA != a.ranges().end() && ofB != b.ranges().end() ) {
        bool const isBefore = ofA->number + ofA->count <= ofB->number;
        if ( !spend( 1 ) || ( !isBefore && ofB->number + ofB->count > ofA->number ) ) {
            return true;
        }
        ++( isBefore ? ofA : ofB );
    }
    return false;
}

bool
EventWarnings::overlaps( GroupSpec const& joined, GroupSpec const& other ) {
    return overlap_.overlaps( joined, other, [this]( U64 steps ) { return spend( steps ); } );
}

EventWarnings::Kind
EventWarnings::kindOfEntry( U32 entry ) {
    HostSpec const& host = scenario_.hosts[entry];
    HostState state;
    state.host.settings = host.settings;
    state.host.vlanStep = host.vlanStep;
    state.groups = GroupDigest( host.groups );
    return kindIs( state );
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
