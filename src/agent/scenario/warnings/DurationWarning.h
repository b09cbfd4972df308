#pragma once

#include "agent/scenario/Scenario.h"

namespace Agent {

/// Warns, at that place, where a time after the start lies behind the end of the run.
void
warnOfTimeBehindEnd( Scenario const& scenario, Kiv::Seconds time, Position const& at, Diagnostics& warnings );

} // namespace Agent
