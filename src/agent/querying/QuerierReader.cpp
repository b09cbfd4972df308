#include "agent/querying/QuerierReader.h"

#include <algorithm>
#include <map>

#include "agent/scenario/reading/SettingReader.h"

namespace Agent {

namespace {

constexpr char positive[] = R"({"type":"number","exclusiveMinimum":0})";

struct Reading {
    ScenarioFile& file;
    QuerierSpec spec{};
    bool hasResponseTime = false;
    std::map<std::string, Position> places{}; ///< of the values, by key

    void readKey( YamlField const& field );
    bool readTime( YamlField const& field );
};

void
Reading::readKey( YamlField const& field ) {
    YamlReader& yaml = file.yaml;
    Lab::QuerierConfig& config = spec.config;
    places[field.key] = field.at;
    if ( field.key == "device" ) {
        spec.device = Kiv::String8( yaml.readText( field ).value_or( "" ) );
    } else if ( field.key == "ns" ) {
        if ( auto const ns = yaml.readValue( field, Kiv::valueType<Zornet::NamespaceName> ) ) {
            spec.ns = std::any_cast<Zornet::NamespaceName>( *ns );
        }
    } else if ( field.key == "igmpVersion" ) {
        auto const version = yaml.readParsed( field, protocolOf );
        config.version = version ? static_cast<Zornet::U8>( *version ) : config.version;
    } else if ( field.key == "ipAddr" ) {
        if ( auto const addr = yaml.readValue( field, Kiv::valueType<Zornet::IpAddr> ) ) {
            config.ipAddr = std::any_cast<Zornet::IpAddr>( *addr );
        }
    } else if ( field.key == "vlanId" ) {
        if ( auto const vlan = yaml.readWhole( field, 1, 4094 ) ) {
            config.vlanId = Bridging::VlanId( static_cast<U16>( *vlan ) );
        }
    } else if ( field.key == "robustness" ) {
        config.robustness = static_cast<U32>( yaml.readWhole( field, 1, 255 ).value_or( 2 ) );
    } else {
        readTime( field );
    }
}

bool
Reading::readTime( YamlField const& field ) {
    std::optional<Kiv::Seconds> const time = file.yaml.readUnquoted( field, durationOf );
    if ( !time ) {
        return false;
    }
    Lab::QuerierConfig& config = spec.config;
    if ( field.key == "responseTime" ) {
        hasResponseTime = true;
        config.queryResponseInterval = *time;
    } else {
        ( field.key == "interval" ? config.queryInterval : config.lastMemberQueryInterval ) = *time;
    }
    return true;
}

/// What the attribute is called here.
std::string
keyOf( Lab::QuerierConfig::Fault const& fault ) {
    static std::map<std::string_view, std::string> const keys{
        { "queryInterval", "interval" },
        { "queryResponseInterval", "responseTime" },
        { "lastMemberQueryInterval", "lastMember" },
    };
    auto const key = keys.find( fault.variable );
    return key == keys.end() ? fault.variable : key->second;
}

} // namespace

std::span<KeyRow const>
querierKeys() {
    static constexpr KeyRow rows[] = {
        { "device", "The device that it asks on, at the other end of a cable from the hosts",
          R"({"type":["string","integer"],"minLength":1})", true },
        { "ns", "Network namespace of the device; that of the command where not set",
          R"({"type":["string","integer"]})" },
        { "igmpVersion", "Protocol to ask by, 1 to 3 [3]",
          R"({"enum":[1,2,3,"1","2","3","igmpVersion1","igmpVersion2","igmpVersion3"]})" },
        { "interval", "Seconds from general query to query [125]", positive },
        { "responseTime",
          "Seconds within which hosts are to answer [10, or half of the interval where that is less]",
          positive },
        { "lastMember", "Seconds within which hosts are to answer after a leave [1]", positive },
        { "robustness", "How often queries are repeated [2]",
          R"({"type":"integer","minimum":1,"maximum":255})" },
        { "ipAddr", "Address to ask from [10.0.0.254]", R"({"type":"string","format":"ipv4"})" },
        { "vlanId", "Ask and listen in this VLAN, tagged",
          R"({"type":"integer","minimum":1,"maximum":4094})" },
    };
    return rows;
}

std::optional<QuerierSpec>
readQuerier( ScenarioFile& file, YamlField const& field ) {
    static KeySet const keys = keySet( "a querier", querierKeys() );
    std::size_t const errorsBefore = file.yaml.errors().size();
    Reading reading{ file };
    reading.spec.at = field.at;
    file.yaml.readMap( field, keys, [&]( YamlField const& key ) { reading.readKey( key ); } );
    Lab::QuerierConfig& config = reading.spec.config;
    if ( !reading.hasResponseTime ) {
        config.queryResponseInterval = std::min( config.queryResponseInterval, config.queryInterval / 2 );
    }
    if ( file.yaml.errors().size() == errorsBefore ) {
        for ( Lab::QuerierConfig::Fault const& fault : config.faults() ) {
            std::string const key = keyOf( fault );
            auto const place = reading.places.find( key );
            file.yaml.error(
                place == reading.places.end() ? field.at : place->second, key + ": " + fault.text
            );
        }
    }
    return file.yaml.errors().size() == errorsBefore ? std::optional( reading.spec ) : std::nullopt;
}

} // namespace Agent
