#pragma once

#include <span>

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

/// The keys of a file at its top.
std::span<KeyRow const> scenarioKeys();

/// Reads scenario files, YAML and so JSON too, into one scenario. Every error is told, none ends the reading;
/// with any error the scenario is not to be used.
Scenario readScenario( std::span<std::string const> paths, Diagnostics& errors );

/// The same for one file whose text is at hand.
Scenario readScenarioText( std::string const& name, std::string const& text, Diagnostics& errors );

} // namespace Agent
