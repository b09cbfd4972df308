#pragma once

#include <string>

#include "agent/scenario/Scenario.h"

namespace Agent {

/// What this process may not do although the scenario needs it, with the capability that is missing and how
/// to come by it; empty where nothing is missing.
std::string missingPrivilege( Scenario const& scenario );
/// The same for work on one device, which is in another network namespace or is not.
std::string missingPrivilege( bool entersNamespace );

} // namespace Agent
