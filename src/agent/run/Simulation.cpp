#include "agent/run/Simulation.h"

#include <algorithm>

#include "agent/traffic/Traffic.h"

namespace Agent {

using Igmp::IgmpHost;

namespace {

constexpr U16 untagged = 0;

/// What tags bear for it: the engine sends a number that is no VLAN cut to the tag's twelve bits.
U16
tagOf( U16 vlanId ) {
    constexpr U16 mask = 0xfff;
    return vlanId & mask;
}

/// As the scenario wants its querier, or of the latest version that a host speaks.
Lab::QuerierConfig
configFor( Scenario const& scenario ) {
    if ( scenario.querier ) {
        return scenario.querier->config;
    }
    Lab::QuerierConfig config;
    config.version = 1;
    config.ipAddr = Zornet::IpAddr( "10.255.255.254" );
    for ( HostSpec const& spec : scenario.hosts ) {
        auto const version = spec.settings.value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion );
        config.version = std::max( config.version, static_cast<Zornet::U8>( version ) );
    }
    return config;
}

} // namespace

Simulation::Simulation( Scenario const& scenario ) : config_( configFor( scenario ) ) {
    for ( HostSpec const& spec : scenario.hosts ) {
        Link& link = linkOf( spec );
        bool const tagged = spec.settings.value<bool>( IgmpHost::attrTagged );
        for ( U32 i = 0; i < ( tagged && spec.vlanStep != 0 ? spec.count : 1 ); ++i ) {
            addQuerier( link, tagged ? tagOf( spec.vlanId( i ) ) : untagged );
        }
    }
}

std::vector<Lab::Querier const*>
Simulation::queriers() const {
    std::vector<Lab::Querier const*> all;
    for ( auto const& [name, link] : links_ ) {
        for ( auto const& [vlanId, querier] : link.queriers ) {
            if ( querier ) {
                all.push_back( querier.get() );
            }
        }
    }
    return all;
}

Simulation::Link&
Simulation::linkOf( HostSpec const& spec ) {
    auto const device = spec.settings.value<Kiv::String8>( IgmpHost::attrDeviceName );
    auto const ns = spec.settings.value<Zornet::NamespaceName>( IgmpHost::attrNs );
    std::string const name = deviceLabel( ns, device );
    auto const [at, isNew] = links_.try_emplace( name );
    if ( isNew && !device.empty() ) {
        at->second.name = name;
        wire_.attach( ns, device, name );
    }
    return at->second;
}

/// In what is no VLAN nobody asks, as on a device.
void
Simulation::addQuerier( Link& link, U16 vlanId ) {
    std::unique_ptr<Lab::Querier>& querier = link.queriers[vlanId];
    if ( querier || link.name.empty() || vlanId > Bridging::VlanId::max ) {
        return;
    }
    Lab::QuerierConfig config = config_;
    Kiv::Ptr<Zornet::Pam> pam;
    if ( vlanId == untagged ) {
        pam = farEnd( link, ", far end" );
        config.vlanId.reset();
    } else {
        if ( !link.trunk ) {
            link.trunk = std::make_unique<VlanTrunk>( farEnd( link, ", far trunk" ) );
        }
        config.vlanId = Bridging::VlanId( vlanId );
        pam = link.trunk->pam( *config.vlanId );
    }
    querier = std::make_unique<Lab::Querier>( config, pam, wheel_ );
    querier->enabledIs( true );
}

Kiv::Ptr<Zornet::EthDevPam>
Simulation::farEnd( Link const& link, char const* what ) {
    Kiv::String8 const device( link.name + what );
    wire_.attach( Zornet::NamespaceName(), device, link.name );
    farEnds_.insert( deviceLabel( Zornet::NamespaceName(), device ) );
    Kiv::Ptr<Zornet::EthDevPam> pam = Zornet::EthDevPamIs( device );
    pam->deviceOpenIs( true );
    return pam;
}

} // namespace Agent
