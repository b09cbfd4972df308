#pragma once

#include <string>

#include "platform/kiv/Types.h"

namespace Agent {

/// How far the hosts of a scenario have been brought up: hosts, and groups of them, of how many.
struct StartUpProgress {
    /// From 0 to 1.
    double share() const;
    /// "1,200 of 100,000 hosts made, 12,000 of 1,000,000 groups".
    std::string text() const;

    char const* done = "made"; ///< what is done to them at present
    Kiv::U64 hosts = 0;
    Kiv::U64 allHosts = 0;
    Kiv::U64 groups = 0;
    Kiv::U64 allGroups = 0;
};

} // namespace Agent
