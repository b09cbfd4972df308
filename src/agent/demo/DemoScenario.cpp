#include "agent/demo/Demo.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Zornet::IpAddr;

constexpr U32 firstGroup = 0xef010000;  // 239.1.0.0
constexpr U32 firstSource = 0x0a090001; // 10.9.0.1
constexpr U32 firstHost = 0x0a000001;   // 10.0.0.1
constexpr U64 firstMac = 0x02'00'00'00'00'01;

std::string
textOf( IpAddr const& addr ) {
    return Zornet::valueToStrep( addr ).charPtr();
}

AddressBlock
sources( U32 number, U32 count ) {
    return { IpAddr::fromHost( firstSource + number ), count, 1, {} };
}

void
exclude( GroupSpec& spec ) {
    spec.settings.settingIs( IgmpV3GroupRecord::attrFilterMode, "exclude" );
}

GroupSpec
groupBlock( U32 number, U32 count ) {
    GroupSpec spec;
    spec.groups = AddressList( { { IpAddr::fromHost( firstGroup + number ), count, 1, {} } } );
    return spec;
}

/// Every third group is wanted from all sources, the next from a few, the one after from all but a few. The
/// few differ between the hosts of a group, so that the querier has to find what they want together.
GroupSpec
version3Group( U32 number, U32 host ) {
    constexpr U32 kinds = 3;
    constexpr U32 variants = 4;
    constexpr U32 shared = 100;
    GroupSpec spec = groupBlock( number, 1 );
    if ( number % kinds != 0 ) {
        spec.sources = AddressList( { sources( host % variants, 2 ), sources( shared, 1 ) } );
    }
    if ( number % kinds != 1 ) {
        exclude( spec );
    }
    return spec;
}

void
addGroups( HostSpec& spec, U32 host, DemoOptions const& options ) {
    if ( options.igmpVersion == Igmp::igmpVersion3 ) {
        for ( U32 i = 0; i < options.groups; ++i ) {
            spec.groups.push_back( version3Group( host + i, host ) );
        }
    } else {
        spec.groups.push_back( groupBlock( host, options.groups ) );
        exclude( spec.groups.back() );
    }
}

/// Of the hosts that share an interface each needs a VLAN of its own, so every round begins another.
void
addTag( HostSpec& spec, U32 host, U32 vlans ) {
    spec.settings.settingIs( IgmpHost::attrTagged, "true" );
    spec.settings.settingIs( IgmpHost::attrUseMux, "true" );
    spec.settings.settingIs( IgmpHost::attrVlanId, std::to_string( 1 + host % vlans ) );
    spec.settings.settingIs( IgmpHost::attrIntfId, "round-" + std::to_string( 1 + host / vlans ) );
}

HostSpec
demoHost( U32 host, DemoOptions const& options ) {
    HostSpec spec;
    spec.name = "host-" + std::to_string( host + 1 );
    spec.settings.settingIs( IgmpHost::attrDeviceName, "eth0" );
    spec.settings.settingIs( IgmpHost::attrIpAddr, textOf( IpAddr::fromHost( firstHost + host ) ) );
    spec.settings.settingIs(
        IgmpHost::attrMacAddr, Zornet::valueToStrep( ethAddrOf( firstMac + host ) ).view()
    );
    spec.settings.settingIs( IgmpHost::attrIgmpVersion, std::to_string( options.igmpVersion ) );
    if ( options.vlans != 0 ) {
        addTag( spec, host, options.vlans );
    }
    addGroups( spec, host, options );
    return spec;
}

} // namespace

Scenario
demoScenario( DemoOptions const& options ) {
    Scenario scenario;
    scenario.files.emplace_back( "demo" );
    for ( U32 host = 0; host < options.hosts; ++host ) {
        scenario.hosts.push_back( demoHost( host, options ) );
    }
    return scenario;
}

} // namespace Agent
