#include "agent/scenario/HostSpec.h"

namespace Agent {

using Igmp::IgmpHost;
using Zornet::EthAddr;
using Zornet::IpAddr;

U64
numberOf( EthAddr const& addr ) {
    U64 number = 0;
    for ( Kiv::U8 const byte : addr.bytes() ) {
        number = number << 8 | byte;
    }
    return number;
}

EthAddr
ethAddrOf( U64 number ) {
    std::array<Kiv::U8, 6> bytes{};
    for ( auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte ) {
        *byte = static_cast<Kiv::U8>( number );
        number >>= 8;
    }
    return EthAddr( bytes );
}

std::string
HostSpec::hostName( U32 index ) const {
    return count == 1 ? name : name + "-" + std::to_string( index + 1 );
}

IpAddr
HostSpec::ipAddr( U32 index ) const {
    IpAddr const first = settings.value<IpAddr>( IgmpHost::attrIpAddr );
    return settings.find( IgmpHost::attrIpAddr ) ? IpAddr::fromHost( first.hostOrder() + index ) : first;
}

EthAddr
HostSpec::macAddr( U32 index ) const {
    EthAddr const first = settings.value<EthAddr>( IgmpHost::attrMacAddr );
    return settings.find( IgmpHost::attrMacAddr ) ? ethAddrOf( numberOf( first ) + index ) : first;
}

U16
HostSpec::vlanId( U32 index ) const {
    return static_cast<U16>( settings.value<U16>( IgmpHost::attrVlanId ) + index * vlanStep );
}

Settings
HostSpec::settingsOf( U32 index ) const {
    Settings own( IgmpHost::attributes() );
    for ( Setting setting : settings.settings() ) {
        switch ( setting.attribute->id ) {
        case IgmpHost::attrIpAddr: setting.value = ipAddr( index ); break;
        case IgmpHost::attrMacAddr: setting.value = macAddr( index ); break;
        case IgmpHost::attrVlanId: setting.value = vlanId( index ); break;
        default: break;
        }
        own.settingIs( setting );
    }
    if ( vlanStep != 0 && !settings.find( IgmpHost::attrVlanId ) ) {
        own.settingIs( IgmpHost::attrVlanId, std::to_string( vlanId( index ) ), at );
    }
    return own;
}

U64
HostSpec::groupCount() const {
    U64 all = 0;
    for ( GroupSpec const& group : groups ) {
        all += group.groups.count();
    }
    return all;
}

} // namespace Agent
