#include "agent/output/AttributeJson.h"

#include <cmath>

namespace Agent {

nlohmann::ordered_json
jsonValue( Kiv::Attribute const& row, Kiv::PtrInterface const& object ) {
    std::string const text = Kiv::attributeText( row, object );
    switch ( row.type->form ) {
    case Kiv::ValueForm::boolean: return text == "true";
    case Kiv::ValueForm::unsignedInteger: return std::stoull( text );
    case Kiv::ValueForm::real:
        if ( double const number = std::stod( text ); std::isfinite( number ) ) {
            return number;
        }
        return text;
    default: return text;
    }
}

nlohmann::ordered_json
jsonOf( std::span<Kiv::Attribute const> table, Kiv::PtrInterface const& object ) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for ( Kiv::Attribute const& row : table ) {
        if ( row.type && row.read ) {
            json[row.name] = jsonValue( row, object );
        }
    }
    return json;
}

std::string
textOf( nlohmann::ordered_json const& json ) {
    return json.dump( -1, ' ', false, nlohmann::ordered_json::error_handler_t::replace );
}

} // namespace Agent
