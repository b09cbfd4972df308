#pragma once

#include "platform/quillog/Trace.h"

namespace Zornet {

/// The VLAN classes' source of trace messages, "Igmp".
extern Kiv::TraceHandle igmpTrace;
/// The source of the messages around a frame that a multiplexer sends, "LinkLocalTrace".
extern Kiv::TraceHandle linkLocalTrace;

/// Levels: a frame that is nobody's, the entry of an operation, and the fate of a single frame.
inline constexpr int traceSkip = 3;
inline constexpr int traceCall = 8;
inline constexpr int traceFrame = 9;

} // namespace Zornet
