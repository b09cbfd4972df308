#include "agent/scenario/CheckedScenario.h"

#include <ostream>

#include "agent/scenario/ScenarioReader.h"
#include "agent/scenario/Warnings.h"

namespace Agent {

void
CheckedScenario::print( std::ostream& out ) const {
    errors.print( out, scenario.files, "error" );
    warnings.print( out, scenario.files, "warning" );
}

CheckedScenario
checkedScenario( std::span<std::string const> paths, Kiv::FunctionRef<void( Scenario& )> adjust ) {
    CheckedScenario checked;
    checked.scenario = readScenario( paths, checked.errors );
    adjust( checked.scenario );
    checked.warnings = scenarioWarnings( checked.scenario );
    return checked;
}

} // namespace Agent
