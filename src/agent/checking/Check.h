#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/command/ExitStatus.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

struct CheckOptions {
    std::vector<std::string> scenarioFiles;
    std::optional<Shard> shard; ///< goes before what the scenario says
    bool json = false;
    bool strict = false; ///< warnings are errors
};

/// `igmphost check`: tells every error and warning of a scenario and what would exist, and touches no device.
ExitStatus check( CheckOptions const& options );

} // namespace Agent
