#pragma once

#include "platform/kiv/Value.h"

namespace Agent {

/// The value that a text of a user stands for. Raises RangeException that says what was expected and found,
/// without the names of types.
std::any valueOf( Kiv::ValueType const& type, std::string_view text );

/// What such a text is expected to be, where `fault` was raised for one.
std::string expectationOf( Kiv::ValueType const& type, Kiv::RangeException const& fault );

} // namespace Agent
