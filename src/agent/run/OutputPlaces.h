#pragma once

#include <string>

#include "agent/run/RunOptions.h"

namespace Agent {

/// Which two outputs of a run would go to one place, where each would spoil the other; empty where there are
/// none.
std::string outputClash( RunOptions const& options );

} // namespace Agent
