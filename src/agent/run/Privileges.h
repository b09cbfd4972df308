#pragma once

#include <string>

#include "agent/scenario/Scenario.h"

namespace Agent {

/// What this process may not do although the scenario needs it, with the capability that is missing and how
/// to come by it; empty where nothing is missing.
std::string missingPrivilege( Scenario const& scenario );

} // namespace Agent
