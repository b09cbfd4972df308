#pragma once

#include <string>
#include <vector>

#include "agent/scenario/Scenario.h"

namespace Agent {

/// What the hosts of this process and the scenario's querier are to be on, and bridges of which something is
/// expected, that are not there, such as "device veth1 in blue" or "namespace blue"; each once, with who
/// needs it where no host does from the start. What cannot be looked at is left for the device to tell.
std::vector<std::string> missingDevices( Scenario const& scenario );

} // namespace Agent
