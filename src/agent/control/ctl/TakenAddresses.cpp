#include "agent/control/ctl/TakenAddresses.h"

#include <algorithm>

namespace Agent {

using Igmp::IgmpHost;

namespace {

constexpr Kiv::AttributeId placing[] = { IgmpHost::attrIpAddr,     IgmpHost::attrMacAddr,
                                         IgmpHost::attrDeviceName, IgmpHost::attrNs,
                                         IgmpHost::attrTagged,     IgmpHost::attrVlanId };

bool
isNoAddress( Setting const& setting ) {
    auto const* const ip = std::any_cast<Zornet::IpAddr>( &setting.value );
    auto const* const mac = std::any_cast<Zornet::EthAddr>( &setting.value );
    return ( ip && ip->isZero() ) || ( mac && numberOf( *mac ) == 0 );
}

Settings
placeOf( IgmpHost const& host, Settings const& changes ) {
    Settings settings( IgmpHost::attributes() );
    for ( Kiv::Attribute const& row : IgmpHost::attributes() ) {
        if ( std::find( std::begin( placing ), std::end( placing ), row.id ) == std::end( placing ) ) {
            continue;
        }
        Setting const* const change = changes.find( row.id );
        Setting const setting = change ? *change : Setting{ &row, row.read( host ), {} };
        if ( !isNoAddress( setting ) ) {
            settings.settingIs( setting );
        }
    }
    return settings;
}

} // namespace

TakenAddresses::TakenAddresses( Igmp::IgmpHostDir const& dir, std::set<IgmpHost const*> const& apart ) {
    Settings const none( IgmpHost::attributes() );
    for ( IgmpHost const& host : dir.igmpHost() ) {
        if ( !apart.contains( &host ) ) {
            HostSpec& spec = present_.hosts.emplace_back();
            spec.name = host.name().charPtr();
            spec.settings = placeOf( host, none );
        }
    }
    for ( HostSpec const& spec : present_.hosts ) { // once they stay where they are
        links_.check( spec );
    }
}

std::vector<Diagnostic>
TakenAddresses::regrets( Settings const& settings ) const {
    HostSpec spec;
    spec.settings = settings;
    std::string const link = LinkWarnings::linkOf( spec, 0 );
    std::vector<Diagnostic> regrets;
    auto const judge = [&]( Kiv::AttributeId id, U64 number ) {
        std::optional<LinkWarnings::Owner> const holder = links_.holder( id, link, number );
        if ( holder && settings.find( id ) ) {
            regrets.push_back( { {}, links_.takenText( id, number, link, *holder, {} ) } );
        }
    };
    judge( IgmpHost::attrIpAddr, spec.ipAddr( 0 ).hostOrder() );
    judge( IgmpHost::attrMacAddr, numberOf( spec.macAddr( 0 ) ) );
    return regrets;
}

std::vector<Diagnostic>
TakenAddresses::regrets( IgmpHost const& host, Settings const& changes ) const {
    bool const isAbout = std::any_of( std::begin( placing ), std::end( placing ), [&]( Kiv::AttributeId id ) {
        return changes.find( id ) != nullptr;
    } );
    return isAbout ? regrets( placeOf( host, changes ) ) : std::vector<Diagnostic>();
}

} // namespace Agent
