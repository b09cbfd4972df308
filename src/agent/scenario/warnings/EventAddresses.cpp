#include "agent/scenario/warnings/EventAddresses.h"

#include <algorithm>

namespace Agent {

using Igmp::IgmpHost;

namespace {

U64
firstNumber( Setting const& setting ) {
    return setting.attribute->id == IgmpHost::attrIpAddr
               ? std::any_cast<Zornet::IpAddr>( setting.value ).hostOrder()
               : numberOf( std::any_cast<Zornet::EthAddr>( setting.value ) );
}

/// A setting that takes hosts to another link, if there is one.
Setting const*
settingThatMoves( Settings const& set ) {
    for ( Kiv::AttributeId const id :
          { IgmpHost::attrDeviceName, IgmpHost::attrNs, IgmpHost::attrVlanId, IgmpHost::attrTagged } ) {
        if ( Setting const* const setting = set.find( id ) ) {
            return setting;
        }
    }
    return nullptr;
}

/// Whether the event lets its hosts fall silent, or be heard again; none for neither.
std::optional<bool>
silences( Event const& event ) {
    switch ( event.action ) {
    case EventAction::remove:
    case EventAction::disable: return true;
    case EventAction::add:
    case EventAction::enable: return false;
    default: break;
    }
    Setting const* const enabled = event.values.settings.find( IgmpHost::attrEnabled );
    return enabled ? std::optional( !std::any_cast<bool>( enabled->value ) ) : std::nullopt;
}

/// Where a host is, once it has been set to that; nothing else of it.
HostSpec
movedBy( Settings const& set, HostSpec const& before ) {
    HostSpec after;
    after.vlanStep = set.find( IgmpHost::attrVlanId ) ? U16{ 0 } : before.vlanStep;
    for ( Kiv::AttributeId const id :
          { IgmpHost::attrDeviceName, IgmpHost::attrNs, IgmpHost::attrVlanId, IgmpHost::attrTagged } ) {
        Setting const* const changed = set.find( id );
        if ( Setting const* const setting = changed ? changed : before.settings.find( id ) ) {
            after.settings.settingIs( *setting );
        }
    }
    return after;
}

} // namespace

void
EventAddresses::check() {
    std::vector<Event const*> events;
    for ( Event const& event : scenario_.events ) {
        if ( !event.faulty ) {
            events.push_back( &event );
        }
    }
    std::stable_sort( events.begin(), events.end(), []( Event const* a, Event const* b ) {
        return a->time < b->time;
    } );
    for ( std::size_t i = 0; i < events.size() && hostsLeft_ != 0; ++i ) {
        handle( *events[i] );
        if ( hostsLeft_ == 0 ) {
            warnings_.add(
                events[i]->at,
                "addresses that events set from here on are not held against each other; they are too many"
            );
        }
    }
}

/// A host that comes back is as it was described.
void
EventAddresses::handle( Event const& event ) {
    if ( event.action == EventAction::set ) {
        handleSet( event );
    } else if ( event.action == EventAction::remove ) {
        forEachHost( event, [this]( HostKey host, U64 ) { forget( host ); } );
    }
    std::optional<bool> const silent = silences( event );
    if ( silent == true ) {
        forEachHost( event, [this]( HostKey host, U64 ) { silentIs( host, true ); } );
    } else if ( silent == false ) {
        comeBack( event );
    }
}

/// The hosts of an event may take over each other's addresses, so all give theirs up first.
void
EventAddresses::handleSet( Event const& event ) {
    Settings const& set = event.values.settings;
    Setting const* const move = settingThatMoves( set );
    for ( Kind* const kind : { &ipAddrs_, &macAddrs_ } ) {
        if ( move || set.find( kind->id ) ) {
            giveUp( event, *kind );
        }
    }
    if ( move ) {
        moveHosts( event );
    }
    for ( Kind* const kind : { &ipAddrs_, &macAddrs_ } ) {
        Setting const* const own = set.find( kind->id );
        if ( Setting const* const cause = own ? own : move ) {
            take( event, *kind, *cause );
        }
    }
}

/// The hosts' addresses are those that they will take; a host that has not been set to any keeps its own.
void
EventAddresses::giveUp( Event const& event, Kind& kind ) {
    Setting const* const own = event.values.settings.find( kind.id );
    forEachHost( event, [&]( HostKey host, U64 index ) {
        release( host, kind );
        if ( std::optional<U64> const next = own ? firstNumber( *own ) + index : number( host, kind ) ) {
            kind.numbers[host] = *next;
        }
    } );
}

void
EventAddresses::moveHosts( Event const& event ) {
    constexpr U64 hostsForAPlace = 100;
    std::unordered_map<HostSpec const*, HostSpec const*> moved;
    forEachHost( event, [&]( HostKey host, U64 ) {
        HostSpec const*& place = places_.try_emplace( host, owner( host ).spec ).first->second;
        auto const [after, isNew] = moved.try_emplace( place, nullptr );
        if ( isNew ) {
            after->second = &newPlaces_.emplace_back( movedBy( event.values.settings, *place ) );
            hostsLeft_ -= std::min( hostsLeft_ - 1, hostsForAPlace );
        }
        place = after->second;
    } );
}

/// What a silent host takes is looked at when it comes back.
void
EventAddresses::take( Event const& event, Kind& kind, Setting const& cause ) {
    bool told = false;
    forEachHost( event, [&]( HostKey host, U64 ) {
        auto const number = kind.numbers.find( host );
        if ( number == kind.numbers.end() ) {
            return;
        }
        if ( !isSilent( host ) ) {
            tell( host, kind, cause.at, told );
        }
        kind.hosts[linkOf( host )].emplace( number->second, host );
    } );
}

/// Of two hosts that both have what they are described with it has been told already.
void
EventAddresses::comeBack( Event const& event ) {
    bool told[] = { false, false };
    forEachHost( event, [&]( HostKey host, U64 ) {
        if ( isSilent( host ) ) {
            tell( host, ipAddrs_, event.at, told[0] );
            tell( host, macAddrs_, event.at, told[1] );
            silentIs( host, false );
        }
    } );
}

void
EventAddresses::tell( HostKey host, Kind const& kind, Position const& at, bool& told ) {
    bool const isOfUse = !told && !kind.numbers.empty();
    std::optional<U64> const wanted = isOfUse ? number( host, kind ) : std::nullopt;
    if ( !wanted ) {
        return;
    }
    std::string const link = linkOf( host );
    std::optional<HostKey> const other = holder( kind, link, *wanted, host );
    if ( other && ( kind.numbers.contains( host ) || kind.numbers.contains( *other ) ) ) {
        told = true;
        warnings_.add( at, described_.takenText( kind.id, *wanted, link, owner( *other ), at ) );
    }
}

void
EventAddresses::release( HostKey host, Kind& kind ) {
    auto const number = kind.numbers.find( host );
    if ( number == kind.numbers.end() ) {
        return;
    }
    kind.hosts[linkOf( host )].erase( { number->second, host } );
}

void
EventAddresses::forget( HostKey host ) {
    for ( Kind* const kind : { &ipAddrs_, &macAddrs_ } ) {
        release( host, *kind );
        kind->numbers.erase( host );
    }
    places_.erase( host );
}

std::string
EventAddresses::linkOf( HostKey host ) const {
    auto const place = places_.find( host );
    LinkWarnings::Owner const one = owner( host );
    return LinkWarnings::linkOf( place == places_.end() ? *one.spec : *place->second, one.index );
}

void
EventAddresses::silentIs( HostKey host, bool silent ) {
    if ( silent == owner( host ).spec->later ) {
        unlikeAtStart_.erase( host );
    } else {
        unlikeAtStart_.insert( host );
    }
}

/// What the host has, or would have if it were there.
std::optional<U64>
EventAddresses::number( HostKey host, Kind const& kind ) const {
    if ( auto const set = kind.numbers.find( host ); set != kind.numbers.end() ) {
        return set->second;
    }
    Setting const* const described = owner( host ).spec->settings.find( kind.id );
    return described ? std::optional( firstNumber( *described ) + owner( host ).index ) : std::nullopt;
}

/// Who else has the number on the link, if any.
std::optional<EventAddresses::HostKey>
EventAddresses::holder( Kind const& kind, std::string const& link, U64 number, HostKey apart ) const {
    auto const isHolder = [&]( HostKey host ) { return host != apart && !isSilent( host ); };
    if ( auto const hosts = kind.hosts.find( link ); hosts != kind.hosts.end() ) {
        auto at = hosts->second.lower_bound( { number, 0 } );
        for ( ; at != hosts->second.end() && at->first == number; ++at ) {
            if ( isHolder( at->second ) ) {
                return at->second;
            }
        }
    }
    std::optional<LinkWarnings::Owner> const described = described_.holder( kind.id, link, number );
    bool const isHeld =
        described && isHolder( keyOf( *described ) ) && !kind.numbers.contains( keyOf( *described ) );
    return isHeld ? std::optional( keyOf( *described ) ) : std::nullopt;
}

/// Calls `f` with each host of the event and its index among them.
template <class F>
void
EventAddresses::forEachHost( Event const& event, F f ) {
    U64 number = 0;
    for ( HostRange const& range : event.selection.ranges() ) {
        for ( U32 i = 0; i < range.count && hostsLeft_ != 0; ++i, --hostsLeft_ ) {
            f( HostKey{ range.entry } << 32 | ( range.first + i ), number++ );
        }
    }
}

LinkWarnings::Owner
EventAddresses::owner( HostKey host ) const {
    return { &scenario_.hosts[host >> 32], static_cast<U32>( host ) };
}

EventAddresses::HostKey
EventAddresses::keyOf( LinkWarnings::Owner const& owner ) const {
    return static_cast<HostKey>( owner.spec - scenario_.hosts.data() ) << 32 | owner.index;
}

} // namespace Agent
