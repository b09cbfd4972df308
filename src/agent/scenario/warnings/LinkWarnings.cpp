#include "agent/scenario/warnings/LinkWarnings.h"

#include <algorithm>
#include <iterator>

namespace Agent {

using Igmp::IgmpHost;

namespace {

bool
isTagged( HostSpec const& spec ) {
    return spec.settings.value<bool>( IgmpHost::attrTagged );
}

bool
isShared( HostSpec const& spec ) {
    return isTagged( spec ) && spec.settings.value<bool>( IgmpHost::attrUseMux );
}

std::string
deviceOf( HostSpec const& spec ) {
    auto const ns = spec.settings.value<Zornet::NamespaceName>( IgmpHost::attrNs );
    std::string const device( spec.settings.value<Kiv::String8>( IgmpHost::attrDeviceName ).view() );
    return ns.empty() ? device : device + " in " + ns.name().charPtr();
}

std::string
interfaceOf( HostSpec const& spec ) {
    return std::string( spec.settings.value<Zornet::IntfId>( IgmpHost::attrIntfId ).name().view() );
}

} // namespace

std::string
LinkWarnings::linkOf( HostSpec const& spec, U32 index ) {
    std::string const device = deviceOf( spec );
    return isTagged( spec ) ? device + " VLAN " + std::to_string( spec.vlanId( index ) ) : device;
}

void
LinkWarnings::check( HostSpec const& spec ) {
    // Addresses that are not set have a warning of their own.
    if ( Setting const* const ip = spec.settings.find( IgmpHost::attrIpAddr ) ) {
        checkAddresses( spec, ipAddrs_, *ip, spec.ipAddr( 0 ).hostOrder() );
    }
    if ( Setting const* const mac = spec.settings.find( IgmpHost::attrMacAddr ) ) {
        checkAddresses( spec, macAddrs_, *mac, numberOf( spec.macAddr( 0 ) ) );
    }
    if ( isShared( spec ) ) {
        checkSharedDevice( spec );
        checkChannels( spec );
    }
}

/// One warning is enough for two entries that clash in many addresses.
void
LinkWarnings::checkAddresses( HostSpec const& spec, Kind& kind, Setting const& setting, U64 first ) {
    if ( !isTagged( spec ) || spec.vlanStep == 0 ) {
        claim( { &spec, 0 }, first, spec.count, kind, linkOf( spec, 0 ), setting.at );
        return;
    }
    bool free = true;
    for ( U32 i = 0; i < spec.count && free; ++i ) {
        free = claim( { &spec, i }, first + i, 1, kind, linkOf( spec, i ), setting.at );
    }
}

/// Takes the numbers for the hosts from the owner on. False, with a warning and nothing taken, where one of
/// them is taken already.
bool
LinkWarnings::claim(
    Owner const& owner, U64 first, U64 count, Kind& kind, std::string const& link, Position const& at
) {
    Claims& claims = kind.claims[link];
    auto taken = claims.upper_bound( first );
    if ( taken != claims.begin() && std::prev( taken )->second.last >= first ) {
        --taken;
    }
    if ( taken == claims.end() || taken->first > first + count - 1 ) {
        claims.emplace( first, Claim{ first + count - 1, owner } );
        return true;
    }
    U64 const number = std::max( first, taken->first );
    Owner const other{ taken->second.owner.spec,
                       static_cast<U32>( taken->second.owner.index + number - taken->first ) };
    warnings_.add( at, takenText( kind, number, link, other, at ) );
    return false;
}

std::optional<LinkWarnings::Owner>
LinkWarnings::holder( Kiv::AttributeId id, std::string const& link, U64 number ) const {
    auto const claims = kindOf( id ).claims.find( link );
    if ( claims == kindOf( id ).claims.end() ) {
        return {};
    }
    auto const behind = claims->second.upper_bound( number );
    if ( behind == claims->second.begin() || std::prev( behind )->second.last < number ) {
        return {};
    }
    auto const& [first, claim] = *std::prev( behind );
    return Owner{ claim.owner.spec, static_cast<U32>( claim.owner.index + number - first ) };
}

std::string
LinkWarnings::takenText(
    Kiv::AttributeId id, U64 number, std::string const& link, Owner const& owner, Position const& at
) const {
    return takenText( kindOf( id ), number, link, owner, at );
}

std::string
LinkWarnings::takenText(
    Kind const& kind, U64 number, std::string const& link, Owner const& owner, Position const& at
) const {
    return std::string( kind.key ) + ": " + kind.text( number ) + " on " + link + " is taken already, by " +
           told( owner, at );
}

void
LinkWarnings::checkSharedDevice( HostSpec const& spec ) {
    std::string const interface = interfaceOf( spec );
    auto const [opener, isFirst] = openers_.emplace( interface, Opener{ { &spec, 0 }, deviceOf( spec ) } );
    if ( !isFirst && opener->second.device != deviceOf( spec ) ) {
        Position const& at = spec.settings.placeOf( IgmpHost::attrDeviceName, spec.at );
        warnings_.add(
            at, "useMux: interface '" + interface + "' is on " + opener->second.device +
                    ", which its first host opens, " + told( opener->second.owner, at )
        );
    }
}

void
LinkWarnings::checkChannels( HostSpec const& spec ) {
    Position const& at = spec.settings.placeOf( IgmpHost::attrVlanId, spec.at );
    U32 const different = spec.vlanStep == 0 ? std::min( spec.count, 2U ) : spec.count;
    for ( U32 i = 0; i < different; ++i ) {
        std::string const channel =
            std::to_string( spec.vlanId( i ) ) + " on interface '" + interfaceOf( spec ) + "'";
        auto const [owner, isFirst] = channels_.emplace( channel, Owner{ &spec, i } );
        if ( !isFirst ) {
            warnings_.add(
                at, "useMux: of the hosts of one interface in one VLAN only the last hears; VLAN " + channel +
                        " is taken already, by " + told( owner->second, at )
            );
            return;
        }
    }
}

/// A host that stands in no file is known by its name alone.
std::string
LinkWarnings::told( Owner const& owner, Position const& from ) const {
    Position const& at = owner.spec->at;
    std::string const name = "host '" + owner.spec->hostName( owner.index ) + "'";
    return at.line == 0 ? name : name + " in " + placeSeenFrom( at, from, scenario_.files );
}

} // namespace Agent
