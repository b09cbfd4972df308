#pragma once

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/reading/ScenarioFile.h"

namespace Agent {

/// The keys of a host beside its attributes.
std::span<KeyRow const> hostKeys();

/// Reads one entry of hosts. Every error is told, but for what depends on other entries.
HostSpec readHost( ScenarioFile& file, YamlField const& host );

/// Gives the host the settings that it does not have itself.
void applyDefaults( Settings const& defaults, HostSpec& host );

/// Tells what steps from host to host and steps out of its type.
void checkSteps( HostSpec const& host, Diagnostics& errors );

} // namespace Agent
