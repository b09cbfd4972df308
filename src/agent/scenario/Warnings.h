#pragma once

#include "agent/scenario/Scenario.h"

namespace Agent {

/// What the engine accepts and a user would regret: settings that have no effect, that the wire does not
/// bear, or with which a packet or a change ends the process. Entries with errors are left out. Takes time in
/// proportion to the scenario.
Diagnostics scenarioWarnings( Scenario const& scenario );

} // namespace Agent
