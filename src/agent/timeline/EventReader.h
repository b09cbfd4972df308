#pragma once

#include <span>
#include <string>
#include <vector>

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// The keys of an event, of which one names its action; of a zap; of a flap.
std::span<KeyRow const> eventKeys();
std::span<KeyRow const> zapKeys();
std::span<KeyRow const> flapKeys();
/// Those of an event that name an action.
std::vector<std::string> eventActionKeys();

/// Reads the list below `events` of one file into the scenario. Hosts that an event adds join the scenario's.
/// Every error is told.
void readEvents( ScenarioFile& file, YamlField const& events );

/// Finds the hosts that the events name, and tells what does not exist. Called once, when every file has been
/// read.
void resolveEvents( Scenario& scenario, Diagnostics& errors );

} // namespace Agent
