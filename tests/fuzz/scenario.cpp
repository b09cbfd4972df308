/// Scenario files: whatever is in one, it is read or refused with a place for each complaint, and what was
/// read can be summed up; either way it can be looked through for warnings.

#include <sstream>

#include "agent/checking/ScenarioSummary.h"
#include "agent/scenario/ScenarioReader.h"
#include "agent/scenario/Warnings.h"
#include "tests/fuzz/FuzzInput.h"

namespace {

/// Prints, as the command does, which finds a complaint about a file that is none of the scenario's.
void
print( Agent::Diagnostics const& diagnostics, Agent::Scenario const& scenario ) {
    std::ostringstream out;
    diagnostics.print( out, scenario.files, "error" );
    Fuzz::require( out.str().empty() == diagnostics.empty(), "every complaint is told" );
}

void
readAndLookThrough( std::string const& text ) {
    Agent::Diagnostics errors;
    Agent::Scenario const scenario = Agent::readScenarioText( "s.yaml", text, errors );
    print( errors, scenario );
    if ( errors.empty() ) {
        Agent::ScenarioSummary const summary = Agent::summaryOf( scenario );
        Fuzz::require( summary.hosts == scenario.hostCount(), "each host is summed up" );
        Fuzz::require( summary.allHosts <= Agent::mostHosts, "the number of hosts is bounded" );
    }
    print( Agent::scenarioWarnings( scenario ), scenario );
}

} // namespace

extern "C" int
LLVMFuzzerTestOneInput( Kiv::U8 const* data, std::size_t size ) {
    readAndLookThrough( std::string( reinterpret_cast<char const*>( data ), size ) );
    return 0;
}
