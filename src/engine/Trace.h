#pragma once

#include "platform/quillog/Trace.h"

namespace Igmp {

/// The protocol engine's source of trace messages, "IgmpHost".
extern Kiv::TraceHandle igmpHostTrace;

/// Levels of messages that have no level of their own: what a host does, and the detail of how.
inline constexpr int traceAction = 4;
inline constexpr int traceDetail = 6;

} // namespace Igmp
