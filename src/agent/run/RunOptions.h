#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/output/TraceConsole.h"
#include "platform/kiv/Types.h"

namespace Agent {

struct RunOptions {
    std::vector<std::string> scenarioFiles;
    std::optional<Kiv::Seconds> duration;  ///< none: until a signal
    std::optional<std::string> statusFile; ///< "-" for the standard output
    std::vector<TraceRequest> traces;
};

} // namespace Agent
