#pragma once

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// The keys of a group beside its attributes and its addresses.
std::span<KeyRow const> groupKeys();

/// Reads groups as a host has them: a text that names one group or a range, a map, or a list of such. A group
/// without a filter mode is joined: for its sources, or for every source where it names none. Groups that
/// have an error are left out; no group is there twice.
void readGroups( ScenarioFile& file, YamlField const& field, std::vector<GroupSpec>& groups );

} // namespace Agent
