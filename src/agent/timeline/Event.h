#pragma once

#include "agent/scenario/Diagnostics.h"

namespace Agent {

/// One entry of a scenario's events.
struct Event {
    Position at;
};

} // namespace Agent
