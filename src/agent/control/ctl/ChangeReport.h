#pragma once

#include "agent/control/ctl/Ctl.h"
#include "agent/control/ctl/Selection.h"

namespace Agent {

/// What a verb has changed: of which hosts, what, and the counters that it raised for it.
struct ChangeReport {
    char const* verb; ///< in the past tense, such as "set"
    std::vector<std::string> objects;
    Hosts hosts;
    std::vector<std::string> raised;
};

/// On the standard output, as a sentence or as one JSON object.
void print( ChangeReport const& report, CtlOptions const& options );

} // namespace Agent
