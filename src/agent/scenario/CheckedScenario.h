#pragma once

#include <span>
#include <string>

#include "agent/scenario/Scenario.h"
#include "platform/kiv/FunctionRef.h"

namespace Agent {

/// A scenario with all that there is to say of it. One with errors is of no use but to be told of.
struct CheckedScenario {
    /// Errors first, then warnings.
    void print( std::ostream& out ) const;

    Scenario scenario;
    Diagnostics errors;
    Diagnostics warnings;
};

/// Reads files and looks at what they come to together. `adjust` makes of it what the command line says,
/// before there are warnings.
CheckedScenario
checkedScenario( std::span<std::string const> paths, Kiv::FunctionRef<void( Scenario& )> adjust );

} // namespace Agent
