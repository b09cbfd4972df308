#pragma once

#include <nlohmann/json.hpp>
#include <span>

#include "agent/scenario/KeyRow.h"
#include "platform/kiv/Attribute.h"

namespace Agent {

using Json = nlohmann::ordered_json;

/// What a value of that type may be.
Json typeSchema( Kiv::ValueType const& type );

/// What a value of the attribute looks like in a scenario, with its help and default.
Json valueSchema( Kiv::Attribute const& attribute );

/// A map with those keys and attributes, and no others.
Json mapSchema( std::span<KeyRow const> keys, std::span<Kiv::Attribute const* const> attributes = {} );

/// A scenario file whole: JSON Schema, draft 7, which editors take. Every attribute of the model that may be
/// set is in it, with its description.
Json scenarioSchema();

} // namespace Agent
