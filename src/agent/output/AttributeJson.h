#pragma once

#include <nlohmann/json.hpp>

#include "platform/kiv/Attribute.h"

namespace Agent {

/// The value of an attribute: numbers and truth values as JSON has them; all else, infinity too, as text.
nlohmann::ordered_json jsonValue( Kiv::Attribute const& row, Kiv::PtrInterface const& object );

/// One object of every attribute of a table that has a value.
nlohmann::ordered_json jsonOf( std::span<Kiv::Attribute const> table, Kiv::PtrInterface const& object );

/// On one line. Names come from outside and need not be UTF-8.
std::string textOf( nlohmann::ordered_json const& json );

} // namespace Agent
