#pragma once

#include "agent/scenario/KeyRow.h"
#include "agent/scenario/Settings.h"
#include "agent/scenario/reading/YamlReader.h"

namespace Agent {

/// The scalars of a class that a scenario may set.
std::span<Kiv::Attribute const* const> settableHostAttributes();
std::span<Kiv::Attribute const* const> settableGroupAttributes();

/// The keys of a map that has those rows and attributes.
KeySet keySet(
    char const* what, std::span<KeyRow const> rows, std::span<Kiv::Attribute const* const> attributes = {}
);

/// Reads the value of the attribute that the key names, if `attributes` has it; the error is told where it is
/// no such value. Returns false, with nothing done, for any other key.
bool readSetting(
    YamlReader& yaml, YamlField const& field, std::span<Kiv::Attribute const* const> attributes,
    Settings& settings
);

} // namespace Agent
