#pragma once

#include "agent/scenario/Diagnostics.h"

namespace Agent {

/// One entry of what a scenario expects.
struct Expectation {
    Position at;
};

} // namespace Agent
