#include "agent/output/StatusWriter.h"

#include <cerrno>
#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "agent/output/FileReplacement.h"

namespace Agent {

namespace {

/// Numbers and truth values as JSON has them; all else, infinity too, as text.
nlohmann::ordered_json
jsonValue( Kiv::Attribute const& row, Igmp::IgmpHostStatus const& status ) {
    std::string const text = Kiv::attributeText( row, status );
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
jsonOf( Igmp::IgmpHostStatus const& status ) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for ( Kiv::Attribute const& row : Igmp::IgmpHostStatus::attributes() ) {
        object[row.name] = jsonValue( row, status );
    }
    return object;
}

/// Names come from files and need not be UTF-8.
std::string
textOf( nlohmann::ordered_json const& json ) {
    return json.dump( -1, ' ', false, nlohmann::ordered_json::error_handler_t::replace );
}

} // namespace

void
writeStatus( std::ostream& out, Scenario const& scenario, Igmp::IgmpHostStatusDir const& dir ) {
    char const* before = "\n";
    out << "{\"hosts\": {";
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        std::string const name = spec.hostName( index );
        if ( Kiv::Ptr<Igmp::IgmpHostStatus> const status = dir.igmpHostStatus( name ) ) {
            out << before << textOf( name ) << ": " << textOf( jsonOf( *status ) );
            before = ",\n";
        }
    } );
    out << "\n}}\n";
}

void
writeStatusTo( std::string const& path, Scenario const& scenario, Igmp::IgmpHostStatusDir const& dir ) {
    if ( path != "-" ) {
        replaceFile( path, [&]( std::ostream& out ) { writeStatus( out, scenario, dir ); } );
        return;
    }
    writeStatus( std::cout, scenario, dir );
    if ( !std::cout.flush() ) {
        throw std::system_error( errno, std::generic_category(), "standard output" );
    }
}

} // namespace Agent
