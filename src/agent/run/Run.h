#pragma once

#include "agent/command/ExitStatus.h"
#include "agent/run/RunOptions.h"

namespace Agent {

/// `igmphost run`: the hosts of a scenario on the machine's devices, until the time is over or SIGINT or
/// SIGTERM ends it. The status is written then, before the hosts are taken down, and on SIGUSR1.
ExitStatus run( RunOptions const& options );

} // namespace Agent
