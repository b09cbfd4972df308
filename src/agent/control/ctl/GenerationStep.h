#pragma once

#include "platform/kiv/Types.h"

namespace Agent {

/// How far this process moves generation counters: a number of its own, so that two controllers, or one and
/// the agent, that raise the same counter at the same time do not arrive at the same number.
Kiv::U32 generationStep();

} // namespace Agent
