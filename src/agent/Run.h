#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/ExitStatus.h"
#include "agent/TraceConsole.h"
#include "platform/kiv/Types.h"

namespace Agent {

struct RunOptions {
    std::vector<std::string> scenarioFiles;
    std::optional<Kiv::Seconds> duration;  ///< none: until a signal
    std::optional<std::string> statusFile; ///< "-" for the standard output
    std::vector<TraceRequest> traces;
};

/// `igmphost run`: the hosts of a scenario on the machine's devices, until the time is over or SIGINT or
/// SIGTERM ends it. The status is written then, before the hosts are taken down, and on SIGUSR1.
ExitStatus run( RunOptions const& options );

} // namespace Agent
