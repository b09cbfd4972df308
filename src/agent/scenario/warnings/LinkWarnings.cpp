#include "agent/scenario/warnings/LinkWarnings.h"

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

/// Names the broadcast domain that a host is in, as far as the scenario tells.
std::string
linkOf( HostSpec const& spec, U32 index ) {
    std::string const device = deviceOf( spec );
    return isTagged( spec ) ? device + " VLAN " + std::to_string( spec.vlanId( index ) ) : device;
}

template <class T>
std::string
textOf( T const& value ) {
    return Kiv::ValueTraits<T>::format( value );
}

} // namespace

void
LinkWarnings::check( HostSpec const& spec ) {
    checkAddresses( spec );
    if ( isShared( spec ) ) {
        checkSharedDevice( spec );
    }
}

/// Addresses that are not set have a warning of their own.
void
LinkWarnings::checkAddresses( HostSpec const& spec ) {
    if ( Setting const* const ip = spec.settings.find( IgmpHost::attrIpAddr ) ) {
        claim( spec, ipAddrs_, ip->at, "ipAddr: ", [&]( U32 i ) {
            return textOf( spec.ipAddr( i ) ) + " on " + linkOf( spec, i );
        } );
    }
    if ( Setting const* const mac = spec.settings.find( IgmpHost::attrMacAddr ) ) {
        claim( spec, macAddrs_, mac->at, "macAddr: ", [&]( U32 i ) {
            return textOf( spec.macAddr( i ) ) + " on " + linkOf( spec, i );
        } );
    }
}

void
LinkWarnings::checkSharedDevice( HostSpec const& spec ) {
    Position const& vlanAt = spec.settings.placeOf( IgmpHost::attrVlanId, spec.at );
    claim(
        spec, channels_, vlanAt,
        "useMux: of the hosts of one interface in one VLAN only the last hears; VLAN ",
        [&]( U32 i ) {
            return std::to_string( spec.vlanId( i ) ) + " on interface '" + interfaceOf( spec ) + "'";
        }
    );
    Owner const self{ spec.hostName( 0 ), spec.at };
    std::string const interface = interfaceOf( spec );
    auto const [opener, isFirst] = openers_.emplace( interface, Opener{ self, deviceOf( spec ) } );
    if ( !isFirst && opener->second.device != deviceOf( spec ) ) {
        Position const& at = spec.settings.placeOf( IgmpHost::attrDeviceName, spec.at );
        warnings_.add(
            at, "useMux: interface '" + interface + "' is on " + opener->second.device +
                    ", which its first host opens, " + told( opener->second.owner, at )
        );
    }
}

template <class KeyOf>
void
LinkWarnings::claim(
    HostSpec const& spec, Owners& owners, Position const& at, char const* what, KeyOf keyOf
) {
    bool warned = false;
    for ( U32 i = 0; i < spec.count; ++i ) {
        std::string const key = keyOf( i );
        auto const [owner, isFirst] = owners.emplace( key, Owner{ spec.hostName( i ), spec.at } );
        if ( !isFirst && !warned ) {
            warnings_.add( at, what + key + " is taken already, by " + told( owner->second, at ) );
            warned = true;
        }
    }
}

std::string
LinkWarnings::told( Owner const& owner, Position const& from ) const {
    return "host '" + owner.host + "' in " + placeSeenFrom( owner.at, from, scenario_.files );
}

} // namespace Agent
