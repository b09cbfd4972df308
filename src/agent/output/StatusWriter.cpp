#include "agent/output/StatusWriter.h"

#include <cerrno>
#include <iostream>
#include <system_error>

#include "agent/output/AttributeJson.h"
#include "agent/output/FileReplacement.h"

namespace Agent {

void
writeStatus( std::ostream& out, Scenario const& scenario, Igmp::IgmpHostStatusDir const& dir ) {
    char const* before = "\n";
    out << "{\"hosts\": {";
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        std::string const name = spec.hostName( index );
        if ( Kiv::Ptr<Igmp::IgmpHostStatus> const status = dir.igmpHostStatus( name ) ) {
            out << before << textOf( name ) << ": "
                << textOf( jsonOf( Igmp::IgmpHostStatus::attributes(), *status ) );
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
