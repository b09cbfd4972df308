#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/metrics/MetricsAddress.h"
#include "agent/output/Messages.h"
#include "agent/output/TraceConsole.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

/// What every capture file begins with, before its first frame.
inline constexpr U64 captureHeaderBytes = 24;

struct RunOptions {
    std::vector<std::string> scenarioFiles;
    // Where these are set, they go before what the scenario says.
    std::optional<Kiv::Seconds> duration;
    std::optional<Shard> shard;
    std::optional<Kiv::U64> seed;

    std::optional<std::string> statusFile;      ///< "-" for the standard output
    std::optional<Kiv::Seconds> statusInterval; ///< of JSON lines on the standard output; none for no lines
    LogFormat logFormat = LogFormat::text;
    bool quiet = false;                     ///< tells only of errors and warnings
    std::optional<std::string> captureFile; ///< "-" for the standard output
    std::optional<Kiv::U64> captureLimit;   ///< in bytes
    std::optional<MetricsAddress> metrics;  ///< where they are served; none for nowhere
    bool metricsPerHost = false;
    std::optional<std::string> junitFile;   ///< for what the scenario expects; "-" for the standard output
    bool simulate = false;                  ///< on a wire in memory, in time that jumps
    bool waitForDevice = false;             ///< a device that is missing at the start is no error
    bool leaveOnExit = false;               ///< the hosts leave their groups before they go
    std::optional<std::string> controlPath; ///< where the hosts can be reached while they run
    std::vector<TraceRequest> traces;
};

} // namespace Agent
