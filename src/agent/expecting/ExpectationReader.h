#pragma once

#include <span>

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// The keys of an expectation beside the attributes of a host's status; of its `querier`; of its `bridge`.
std::span<KeyRow const> expectationKeys();
std::span<KeyRow const> querierConditionKeys();
std::span<KeyRow const> bridgeConditionKeys();
/// The attributes of a host's status that a condition may name.
std::span<Kiv::Attribute const* const> statusAttributes();

/// Reads the list below `expect` of one file into the scenario. Every error is told.
void readExpectations( ScenarioFile& file, YamlField const& expect );

/// Finds the hosts that the expectations name, and tells what does not exist. Called once, when every file
/// has been read.
void resolveExpectations( Scenario& scenario, Diagnostics& errors );

} // namespace Agent
