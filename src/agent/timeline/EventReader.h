#pragma once

#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// Reads the list below `events` of one file into the scenario. Every error is told.
void readEvents( ScenarioFile& file, YamlField const& events );

/// Tells what the events of all files name that does not exist. Called once, when every file has been read.
void checkEvents( Scenario const& scenario, Diagnostics& errors );

} // namespace Agent
