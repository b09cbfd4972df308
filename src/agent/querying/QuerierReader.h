#pragma once

#include <span>

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// The keys of a scenario's querier.
std::span<KeyRow const> querierKeys();

/// Reads the querier of a scenario. None, told, where it has an error.
std::optional<QuerierSpec> readQuerier( ScenarioFile& file, YamlField const& field );

} // namespace Agent
