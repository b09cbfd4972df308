#include "agent/scenario/schema/Schema.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Agent {

namespace {

/// A schema that refers to another one bears nothing else in draft 7.
Json
described( Json schema, char const* help ) {
    if ( schema.contains( "$ref" ) ) {
        schema = Json{ { "allOf", Json::array( { std::move( schema ) } ) } };
    }
    schema["description"] = help ? help : "";
    return schema;
}

/// The number in the text, or the text.
Json
numberOrText( std::string const& text ) {
    Kiv::U64 number = 0;
    auto const [end, error] = std::from_chars( text.data(), text.data() + text.size(), number );
    return error == std::errc() && end == text.data() + text.size() ? Json( number ) : Json( text );
}

/// A whole number from 0 to the greatest that the type takes.
Json
wholeSchema( Kiv::ValueType const& type ) {
    Kiv::U64 greatest = 0xffffffff;
    for ( Kiv::U64 const narrower : { Kiv::U64{ 0xffff }, Kiv::U64{ 0xff } } ) {
        try {
            type.parse( std::to_string( narrower + 1 ) );
        } catch ( Kiv::RangeException const& ) {
            greatest = narrower;
        }
    }
    return { { "type", "integer" }, { "minimum", 0 }, { "maximum", greatest } };
}

Json
enumerationSchema( Kiv::ValueType const& type ) {
    Json texts = Json::array();
    for ( std::string const& text : type.texts() ) {
        texts.push_back( numberOrText( text ) );
        if ( texts.back().is_number() ) { // in quotes it is the same
            texts.push_back( text );
        }
    }
    return { { "enum", texts } };
}

Json
textSchema( Kiv::ValueType const& type ) {
    std::string_view const name = type.name;
    if ( name == "Zornet::IpAddr" ) {
        return { { "type", "string" }, { "format", "ipv4" } };
    }
    if ( name == "Zornet::EthAddr" ) {
        return { { "type", "string" }, { "pattern", "^([0-9A-Fa-f]{2}:){5}[0-9A-Fa-f]{2}$" } };
    }
    return { { "type", { "string", "integer" } } }; // YAML takes digits for a number
}

Json
defaultValue( Kiv::Attribute const& attribute ) {
    std::string const text = attribute.defaultText;
    return attribute.type->form == Kiv::ValueForm::boolean ? Json( text == "true" ) : numberOrText( text );
}

} // namespace

Json
typeSchema( Kiv::ValueType const& type ) {
    switch ( type.form ) {
    case Kiv::ValueForm::boolean: return { { "type", "boolean" } };
    case Kiv::ValueForm::unsignedInteger: return wholeSchema( type );
    case Kiv::ValueForm::real: return { { "anyOf", { { { "type", "number" } }, { { "const", "inf" } } } } };
    case Kiv::ValueForm::enumeration: return enumerationSchema( type );
    default: return textSchema( type );
    }
}

Json
valueSchema( Kiv::Attribute const& attribute ) {
    Json schema = described( typeSchema( *attribute.type ), attribute.help );
    if ( attribute.defaultText && *attribute.defaultText ) {
        schema["default"] = defaultValue( attribute );
    }
    return schema;
}

Json
mapSchema( std::span<KeyRow const> keys, std::span<Kiv::Attribute const* const> attributes ) {
    Json properties = Json::object();
    Json required = Json::array();
    for ( KeyRow const& key : keys ) {
        properties[std::string( key.name )] = described( Json::parse( key.schema ), key.help );
        if ( key.isRequired ) {
            required.push_back( key.name );
        }
    }
    for ( Kiv::Attribute const* const attribute : attributes ) {
        properties[attribute->name] = valueSchema( *attribute );
    }
    Json schema{ { "type", "object" }, { "properties", properties }, { "additionalProperties", false } };
    if ( !required.empty() ) {
        schema["required"] = required;
    }
    return schema;
}

} // namespace Agent
