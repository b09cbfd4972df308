#pragma once

#include <string>

#include "agent/run/RunOptions.h"

namespace Agent {

/// Which two outputs of a run would go to one place, where each would spoil the other, or which would replace
/// a file of the scenario; empty where there are none.
std::string outputClash( RunOptions const& options );

/// Whether the status, the capture or the outcome goes to the standard output, by whichever name.
bool takesStandardOutput( RunOptions const& options );

} // namespace Agent
