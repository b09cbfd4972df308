#include "agent/scenario/warnings/EventWarnings.h"

#include <algorithm>

#include "agent/hosts/HostRegrets.h"

namespace Agent {

namespace {

/// Of the entries that an event is about, so many are looked at: events and entries may both be a great many.
constexpr std::size_t mostEntries = 100;

std::string
textOf( Kiv::Seconds seconds ) {
    return Kiv::ValueTraits<double>::format( seconds );
}

/// The host as it is once the event has set what it sets.
HostSpec
changed( HostSpec const& host, Event const& event ) {
    HostSpec after = host;
    if ( event.action == EventAction::set ) {
        after.settings = event.values.settings;
        for ( Setting const& setting : host.settings.settings() ) {
            if ( !after.settings.find( setting.attribute->id ) ) {
                after.settings.settingIs( setting );
            }
        }
    } else if ( event.action != EventAction::leave ) {
        after.groups = event.groups;
    }
    return after;
}

} // namespace

void
EventWarnings::check() {
    for ( Event const& event : scenario_.events ) {
        checkTime( event );
        checkRate( event );
        checkHosts( event );
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

/// One host is enough: the others would bring the same about.
void
EventWarnings::checkHosts( Event const& event ) {
    if ( event.values.settings.settings().empty() && event.groups.empty() ) {
        return;
    }
    std::vector<HostRange> const& ranges = event.selection.ranges();
    for ( std::size_t i = 0; i < std::min( ranges.size(), mostEntries ); ++i ) {
        if ( checkHost( event, scenario_.hosts[ranges[i].entry] ) ) {
            return;
        }
    }
}

/// What comes about at a setting of the host is told at the event.
bool
EventWarnings::checkHost( Event const& event, HostSpec const& host ) {
    HostSpec before = host;
    if ( event.action != EventAction::set ) {
        before.groups.clear();
    }
    std::vector<Diagnostic> const regrets = newRegrets( before, changed( before, event ) );
    for ( Diagnostic const& regret : regrets ) {
        warnings_.add( isOf( event, regret.at ) ? regret.at : event.at, regret.text, regret.endsProcess );
    }
    return !regrets.empty();
}

bool
EventWarnings::isOf( Event const& event, Position const& at ) const {
    auto const isThere = [&]( auto const& item ) {
        return item.at.file == at.file && item.at.line == at.line && item.at.column == at.column;
    };
    auto const& settings = event.values.settings.settings();
    return std::any_of( settings.begin(), settings.end(), isThere ) ||
           std::any_of( event.groups.begin(), event.groups.end(), isThere );
}

} // namespace Agent
