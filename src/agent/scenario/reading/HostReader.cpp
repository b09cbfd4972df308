#include "agent/scenario/reading/HostReader.h"

#include "agent/scenario/reading/GroupReader.h"
#include "agent/scenario/reading/SettingReader.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Zornet::IpAddr;

constexpr IpAddr lastIpAddr = IpAddr::fromHost( 0xffffffff );
constexpr U64 lastEthAddr = ( U64{ 1 } << 48 ) - 1;
constexpr U64 lastVlanId = 0xffff;

template <class T>
std::string
textOf( T const& value ) {
    return Kiv::ValueTraits<T>::format( value );
}

void
readName( ScenarioFile& file, YamlField const& field, HostSpec& spec ) {
    spec.at = field.at;
    spec.name = file.yaml.readText( field ).value_or( "" );
    if ( spec.name.empty() && field.value.IsScalar() ) {
        file.yaml.error( field.at, "name: expected a name, found ''" );
    }
}

void
readHostKey( ScenarioFile& file, YamlField const& field, HostSpec& spec ) {
    if ( field.key == "name" ) {
        readName( file, field, spec );
    } else if ( field.key == "count" ) {
        spec.count = static_cast<U32>( file.yaml.readWhole( field, 1, mostHosts ).value_or( 1 ) );
    } else if ( field.key == "vlanStep" ) {
        spec.vlanStep = static_cast<U16>( file.yaml.readWhole( field, 0, 0xffff ).value_or( 0 ) );
    } else if ( field.key == "groups" ) {
        readGroups( file, field, spec.groups );
    } else {
        readSetting( file.yaml, field, settableHostAttributes(), spec.settings );
    }
}

void
checkRange(
    Diagnostics& errors, Position const& at, std::string const& block, U64 last, U64 greatest,
    std::string const& end
) {
    if ( last > greatest ) {
        errors.add( at, block + " on run past " + end );
    }
}

} // namespace

std::span<KeyRow const>
hostKeys() {
    static constexpr KeyRow rows[] = {
        { "name", "Name of the host; with count above 1 the hosts are called NAME-1, NAME-2, ...",
          R"({"type":["string","integer"],"minLength":1})", true },
        { "count", "Number of hosts like this; ipAddr and macAddr step by one from host to host [1]",
          R"({"type":"integer","minimum":1,"maximum":1000000})" },
        { "groups", "Groups that the host joins: an address, a range, a map or a list of such",
          R"({"$ref":"#/definitions/groups"})" },
        { "vlanStep", "By how much vlanId steps from host to host [0]",
          R"({"type":"integer","minimum":0,"maximum":65535})" },
    };
    return rows;
}

HostSpec
readHost( ScenarioFile& file, YamlField const& host ) {
    HostSpec spec;
    spec.at = host.at;
    static KeySet const keys = keySet( "a host", hostKeys(), settableHostAttributes() );
    std::size_t const errorsBefore = file.yaml.errors().size();
    file.yaml.readMap( host, keys, [&]( YamlField const& field ) { readHostKey( file, field, spec ); } );
    spec.faulty = file.yaml.errors().size() != errorsBefore;
    return spec;
}

void
applyDefaults( Settings const& defaults, HostSpec& host ) {
    for ( Setting const& setting : defaults.settings() ) {
        if ( !host.settings.find( setting.attribute->id ) ) {
            host.settings.settingIs( setting );
        }
    }
}

void
checkSteps( HostSpec const& spec, Diagnostics& errors ) {
    U64 const steps = spec.count - 1;
    std::string const hosts = std::to_string( spec.count ) + " hosts from ";
    if ( Setting const* const ip = spec.settings.find( IgmpHost::attrIpAddr ) ) {
        auto const first = std::any_cast<IpAddr>( ip->value );
        checkRange(
            errors, ip->at, "ipAddr: " + hosts + textOf( first ), first.hostOrder() + steps,
            lastIpAddr.hostOrder(), textOf( lastIpAddr )
        );
    }
    if ( Setting const* const mac = spec.settings.find( IgmpHost::attrMacAddr ) ) {
        auto const first = std::any_cast<Zornet::EthAddr>( mac->value );
        checkRange(
            errors, mac->at, "macAddr: " + hosts + textOf( first ), numberOf( first ) + steps, lastEthAddr,
            textOf( ethAddrOf( lastEthAddr ) )
        );
    }
    U64 const firstVlan = spec.vlanId( 0 );
    checkRange(
        errors, spec.settings.placeOf( IgmpHost::attrVlanId, spec.at ),
        "vlanId: " + hosts + std::to_string( firstVlan ), firstVlan + steps * spec.vlanStep, lastVlanId,
        std::to_string( lastVlanId )
    );
}

} // namespace Agent
