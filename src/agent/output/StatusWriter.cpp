#include "agent/output/StatusWriter.h"

#include <map>
#include <ostream>
#include <utility>

#include "agent/hosts/HostPattern.h"
#include "agent/output/AttributeJson.h"

namespace Agent {

void
writeStatus( std::ostream& out, Scenario const& scenario, Igmp::IgmpHostStatusDir const& dir ) {
    char const* before = "\n";
    auto const write = [&]( Igmp::IgmpHostStatus const& status ) {
        out << std::exchange( before, ",\n" ) << textOf( std::string( status.name().view() ) ) << ": "
            << textOf( jsonOf( Igmp::IgmpHostStatus::attributes(), status ) );
    };
    std::map<std::string, Kiv::Ptr<Igmp::IgmpHostStatus>, decltype( &comesBefore )> others( &comesBefore );
    for ( Igmp::IgmpHostStatus& status : dir.igmpHostStatus() ) {
        others.emplace( status.name().view(), &status );
    }
    out << "{\"hosts\": {";
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        if ( auto const status = others.extract( spec.hostName( index ) ) ) {
            write( *status.mapped() );
        }
    } );
    for ( auto const& [name, status] : others ) { // hosts that came through the control socket
        write( *status );
    }
    out << "\n}}\n";
}

} // namespace Agent
