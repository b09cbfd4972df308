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

/// That a map has one of the keys; whether it may have more of them is for `word`, anyOf or oneOf, to say.
Json
oneOf( std::vector<std::string> const& keys, char const* word = "anyOf" ) {
    Json schema;
    for ( std::string const& key : keys ) {
        schema[word].push_back( { { "required", { key } } } );
    }
    return schema;
}

/// What has either an address key or a file.
Json
addressedSchema(
    AddressWords const& words, std::span<KeyRow const> more, std::span<Kiv::Attribute const* const> attributes
) {
    std::vector<KeyRow> keys = AddressKeys::rows( words );
    keys.insert( keys.end(), more.begin(), more.end() );
    Json schema = mapSchema( keys, attributes );
    schema.update( oneOf( { words.key, "file" }, "oneOf" ) );
    schema["dependencies"] = { { "count", { words.key } }, { "step", { words.key } } };
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

/// A value, or one behind a sign of comparison.
Json
comparisonSchema( Kiv::ValueType const& type ) {
    bool const isWhole = type.form == Kiv::ValueForm::unsignedInteger;
    bool const isNumber = isWhole || type.form == Kiv::ValueForm::real;
    std::string form = isWhole ? "[0-9]+" : isNumber ? "(-?[0-9.]+([eE][-+]?[0-9]+)?|-?inf)" : ".*";
    if ( type.form == Kiv::ValueForm::boolean ) {
        form = "(true|false)";
    } else if ( type.form == Kiv::ValueForm::enumeration ) {
        form.clear();
        for ( std::string const& text : type.texts() ) {
            form += ( form.empty() ? "(" : "|" ) + text;
        }
        form += ")";
    }
    std::string const sign = isNumber ? "([=!<>]=|[<>])? *" : "([=!]= *)?";
    Json const behindSign{ { "type", "string" }, { "pattern", "^" + sign + form + "$" } };
    return { { "anyOf", Json::array( { typeSchema( type ), behindSign } ) } };
}

/// The attributes of a status are compared, so that more than a value may stand there.
Json
expectationSchema() {
    Json schema = mapSchema( expectationKeys() );
    std::vector<std::string> status;
    std::vector<std::string> noCounters;
    for ( Kiv::Attribute const* const attribute : statusAttributes() ) {
        Json& property = schema["properties"][attribute->name] = comparisonSchema( *attribute->type );
        property["description"] = attribute->help;
        status.emplace_back( attribute->name );
        if ( attribute->type->form != Kiv::ValueForm::unsignedInteger ) {
            noCounters.emplace_back( attribute->name );
        }
    }
    Json const hasStatus = oneOf( status );
    schema["anyOf"] = Json::array( { oneOf( { "querier", "bridge" } ), hasStatus } );
    schema["dependencies"] = { { "within", { "at" } }, { "hosts", hasStatus }, { "total", hasStatus } };
    schema["if"] = { { "required", { "total" } }, { "properties", { { "total", { { "const", true } } } } } };
    schema["then"] = { { "not", oneOf( noCounters ) } };
    return schema;
}

Json
membershipSchema( std::span<KeyRow const> keys ) {
    Json schema = mapSchema( keys );
    schema.update( oneOf( { "joined", "notJoined", "groupCount" } ) );
    return schema;
}

/// What repeats itself has a rhythm, either its own or that of `every`. Hosts that an event adds and
/// describes are the ones that it is about.
Json
eventSchema() {
    Json schema = mapSchema( eventKeys() );
    schema.update( oneOf( eventActionKeys(), "oneOf" ) );
    Json const describesNone{ { "properties", { { "add", { { "enum", { true, nullptr } } } } } } };
    schema["dependencies"] = { { "times", oneOf( { "every", "zap", "flap" } ) },
                               { "every", { { "not", oneOf( { "zap", "flap" } ) } } },
                               { "hosts", describesNone } };
    return schema;
}

/// What is set, of which there must be something.
Json
changesSchema() {
    Json schema = mapSchema( {}, settableHostAttributes() );
    schema["minProperties"] = 1;
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
                              { "changes", changesSchema() },
                              { "comparison", comparisonSchema( Kiv::valueType<U32> ) },
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
