#pragma once

#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// Reads the list below `expect` of one file into the scenario. Every error is told.
void readExpectations( ScenarioFile& file, YamlField const& expect );

/// Tells what the expectations of all files name that does not exist. Called once, when every file has been
/// read.
void checkExpectations( Scenario const& scenario, Diagnostics& errors );

} // namespace Agent
