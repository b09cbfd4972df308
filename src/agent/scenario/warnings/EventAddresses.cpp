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
    bool const isStill = !movesHosts();
    for ( std::size_t i = 0; isStill && i < events.size() && hostsLeft_ != 0; ++i ) {
        handle( *events[i] );
        if ( hostsLeft_ == 0 ) {
            warnings_.add(
                events[i]->at,
                "addresses that events set from here on are not held against each other; they are too many"
            );
        }
    }
}

bool
EventAddresses::movesHosts() const {
    return std::any_of( scenario_.events.begin(), scenario_.events.end(), []( Event const& event ) {
        Settings const& set = event.values.settings;
        return set.find( IgmpHost::attrDeviceName ) || set.find( IgmpHost::attrNs ) ||
               set.find( IgmpHost::attrVlanId ) || set.find( IgmpHost::attrTagged );
    } );
}

void
EventAddresses::handle( Event const& event ) {
    if ( event.action == EventAction::set ) {
        handleSet( event, ipAddrs_ );
        handleSet( event, macAddrs_ );
    } else if ( event.action == EventAction::remove || event.action == EventAction::disable ) {
        forEachHost( event, [this]( HostKey host, U64 ) { silent_.insert( host ); } );
    } else if ( event.action == EventAction::add || event.action == EventAction::enable ) {
        forEachHost( event, [this]( HostKey host, U64 ) { silent_.erase( host ); } );
    }
}

/// The hosts of an event may take over each other's addresses, so all give theirs up first.
void
EventAddresses::handleSet( Event const& event, Kind& kind ) {
    Setting const* const setting = event.values.settings.find( kind.id );
    if ( !setting ) {
        return;
    }
    U64 const first = firstNumber( *setting );
    forEachHost( event, [&]( HostKey host, U64 index ) {
        release( host, kind );
        kind.numbers[host] = first + index;
    } );
    bool told = false;
    forEachHost( event, [&]( HostKey host, U64 index ) {
        LinkWarnings::Owner const one = owner( host );
        std::string const link = LinkWarnings::linkOf( *one.spec, one.index );
        std::optional<HostKey> const other = holder( kind, link, first + index );
        if ( other && !told ) {
            told = true;
            warnings_.add(
                setting->at,
                described_.takenText( kind.id, first + index, link, owner( *other ), setting->at )
            );
        }
        kind.hosts[link][first + index] = host;
    } );
}

void
EventAddresses::release( HostKey host, Kind& kind ) {
    auto const number = kind.numbers.find( host );
    if ( number == kind.numbers.end() ) {
        return;
    }
    LinkWarnings::Owner const one = owner( host );
    auto& hosts = kind.hosts[LinkWarnings::linkOf( *one.spec, one.index )];
    if ( auto const held = hosts.find( number->second ); held != hosts.end() && held->second == host ) {
        hosts.erase( held );
    }
}

/// Who has the number on the link, if any.
std::optional<EventAddresses::HostKey>
EventAddresses::holder( Kind const& kind, std::string const& link, U64 number ) const {
    if ( auto const hosts = kind.hosts.find( link ); hosts != kind.hosts.end() ) {
        if ( auto const host = hosts->second.find( number ); host != hosts->second.end() ) {
            return silent_.contains( host->second ) ? std::nullopt : std::optional( host->second );
        }
    }
    std::optional<LinkWarnings::Owner> const described = described_.holder( kind.id, link, number );
    bool const isHeld = described && !described->spec->later && !silent_.contains( keyOf( *described ) ) &&
                        !kind.numbers.contains( keyOf( *described ) );
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
