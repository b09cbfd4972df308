#pragma once

#include "agent/scenario/Scenario.h"

namespace Agent {

/// How many reports each host of an entry sends when it starts: one for each group in versions 1 and 2, as
/// few as hold the records in version 3. Exact where all records have one size; otherwise it depends on the
/// order in which the host keeps its groups.
U64 firstReports( HostSpec const& spec );

} // namespace Agent
