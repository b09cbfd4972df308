#include "agent/expecting/ExpectationReader.h"
#include "agent/querying/QuerierReader.h"
#include "agent/scenario/ScenarioReader.h"
#include "agent/scenario/reading/AddressReader.h"
#include "agent/scenario/reading/GroupReader.h"
#include "agent/scenario/reading/HostReader.h"
#include "agent/scenario/reading/SettingReader.h"
#include "agent/scenario/schema/Schema.h"
#include "agent/timeline/EventReader.h"

namespace Agent {

namespace {

Json
reference( std::string const& name ) {
    return { { "$ref", "#/definitions/" + name } };
}

/// An address, or a range of them.
Json
rangeSchema() {
    constexpr char octet[] = "(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])";
    std::string const addr = std::string( "(" ) + octet + "\\." + octet + "\\." + octet + "\\." + octet + ")";
    return { { "type", "string" },
             { "pattern", "^" + addr + "(/(3[0-2]|[12]?[0-9])|-" + addr + ")?$" },
             { "description", "An address 239.1.1.1, or a range 239.1.0.0/24 or 239.1.1.1-239.1.1.50" } };
}

/// What has either an address key or a file.
Json
addressedSchema(
    AddressWords const& words, std::span<KeyRow const> more, std::span<Kiv::Attribute const* const> attributes
) {
    std::vector<KeyRow> keys = AddressKeys::rows( words );
    keys.insert( keys.end(), more.begin(), more.end() );
    Json schema = mapSchema( keys, attributes );
    schema["oneOf"] = { { { "required", { words.key } } }, { { "required", { "file" } } } };
    return schema;
}

/// One of a kind as a text or a map, or a list of such.
Json
oneOrMany( std::string const& map ) {
    Json const one = Json::array( { reference( "range" ), reference( map ) } );
    return { { "anyOf", Json::array( { reference( "range" ),
                                       reference( map ),
                                       { { "type", "array" }, { "items", { { "anyOf", one } } } } } ) } };
}

/// That a map has one of the keys; whether it may have more of them is for `word`, anyOf or oneOf, to say.
void
needOneOf( Json& schema, char const* word, std::vector<std::string> const& keys ) {
    for ( std::string const& key : keys ) {
        schema[word].push_back( { { "required", { key } } } );
    }
}

/// A value, or one behind a sign of comparison.
Json
comparisonSchema( Kiv::Attribute const& attribute ) {
    Json value = valueSchema( attribute );
    std::string sign = "([=!]= *)?";
    std::string form = ".*";
    switch ( attribute.type->form ) {
    case Kiv::ValueForm::unsignedInteger:
        sign = "([=!<>]=|[<>])? *";
        form = "[0-9]+";
        break;
    case Kiv::ValueForm::real:
        sign = "([=!<>]=|[<>])? *";
        form = "(-?[0-9.]+([eE][-+]?[0-9]+)?|-?inf)";
        break;
    case Kiv::ValueForm::boolean: form = "(true|false)"; break;
    case Kiv::ValueForm::enumeration:
        form.clear();
        for ( std::string const& text : attribute.type->texts() ) {
            form += ( form.empty() ? "(" : "|" ) + text;
        }
        form += ")";
        break;
    default: break;
    }
    value.erase( "default" );
    value.erase( "description" );
    Json const behindSign{ { "type", "string" }, { "pattern", "^" + sign + form + "$" } };
    return { { "anyOf", Json::array( { value, behindSign } ) }, { "description", attribute.help } };
}

/// The attributes of a status are compared, so that more than a value may stand there.
Json
expectationSchema() {
    Json schema = mapSchema( expectationKeys() );
    std::vector<std::string> conditions{ "querier", "bridge" };
    for ( Kiv::Attribute const* const attribute : statusAttributes() ) {
        schema["properties"][attribute->name] = comparisonSchema( *attribute );
        conditions.emplace_back( attribute->name );
    }
    needOneOf( schema, "anyOf", conditions );
    schema["dependencies"] = { { "within", { "at" } } };
    return schema;
}

Json
membershipSchema( std::span<KeyRow const> keys ) {
    Json schema = mapSchema( keys );
    needOneOf( schema, "anyOf", { "joined", "notJoined", "groupCount" } );
    return schema;
}

Json
eventSchema() {
    Json schema = mapSchema( eventKeys() );
    needOneOf( schema, "oneOf", eventActionKeys() );
    return schema;
}

} // namespace

Json
scenarioSchema() {
    Json schema{ { "$schema", "http://json-schema.org/draft-07/schema#" },
                 { "title", "Scenario of igmphost" },
                 { "description", "What hosts are emulated, and what happens to them" } };
    schema.update( mapSchema( scenarioKeys() ) );
    schema["definitions"] = { { "range", rangeSchema() },
                              { "source", addressedSchema( sourceWords, {}, {} ) },
                              { "sources", oneOrMany( "source" ) },
                              { "group",
                                addressedSchema( groupWords, groupKeys(), settableGroupAttributes() ) },
                              { "groups", oneOrMany( "group" ) },
                              { "host", mapSchema( hostKeys(), settableHostAttributes() ) },
                              { "settings", mapSchema( {}, settableHostAttributes() ) },
                              { "event", eventSchema() },
                              { "zap", mapSchema( zapKeys() ) },
                              { "flap", mapSchema( flapKeys() ) },
                              { "expectation", expectationSchema() },
                              { "querierCondition", membershipSchema( querierConditionKeys() ) },
                              { "bridgeCondition", membershipSchema( bridgeConditionKeys() ) },
                              { "querier", mapSchema( querierKeys() ) } };
    return schema;
}

} // namespace Agent
