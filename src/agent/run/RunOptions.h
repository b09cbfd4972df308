#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/output/TraceConsole.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

struct RunOptions {
    std::vector<std::string> scenarioFiles;
    // Where these are set, they go before what the scenario says.
    std::optional<Kiv::Seconds> duration;
    std::optional<Shard> shard;
    std::optional<Kiv::U64> seed;

    std::optional<std::string> statusFile;  ///< "-" for the standard output
    bool leaveOnExit = false;               ///< the hosts leave their groups before they go
    std::optional<std::string> controlPath; ///< where the hosts can be reached while they run
    std::vector<TraceRequest> traces;
};

} // namespace Agent
