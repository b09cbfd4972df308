#pragma once

#include "platform/quillog/Trace.h"

namespace Agent {

/// The handle "Control": who is refused, who comes and goes.
extern Kiv::TraceHandle controlTrace;
inline constexpr int controlTrouble = 1;
inline constexpr int controlEvent = 3;

} // namespace Agent
