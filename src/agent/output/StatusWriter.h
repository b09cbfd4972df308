#pragma once

#include <iosfwd>

#include "agent/scenario/Scenario.h"
#include "model/IgmpHostStatusDir.h"

namespace Agent {

/// Writes one JSON object, {"hosts": {NAME: {ATTRIBUTE: VALUE, ...}, ...}}, with every attribute of the
/// status of every host, a line for each: those of the scenario in its order, then those that came through
/// the control socket. A host that is disabled has no status and is left out.
void writeStatus( std::ostream& out, Scenario const& scenario, Igmp::IgmpHostStatusDir const& dir );

} // namespace Agent
