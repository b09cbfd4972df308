#pragma once

#include "agent/scenario/Scenario.h"
#include "model/IgmpHostDir.h"

namespace Agent {

/// Makes the hosts of a scenario and sets all that it says of them. They are neither bound nor enabled.
void loadHosts( Scenario const& scenario, Igmp::IgmpHostDir& dir );

/// Makes it take effect: raises each host's generation counters once, enables the host and raises each
/// record's version once. A counter that the scenario sets gets that number, and a host that it disables
/// stays so.
void startHosts( Scenario const& scenario, Igmp::IgmpHostDir& dir );

} // namespace Agent
