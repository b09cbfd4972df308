#pragma once

#include "platform/kiv/Value.h"

namespace Agent {

/// A time after the start in a text: seconds, 0 or above. Raises RangeException that says what was expected
/// and found.
Kiv::Seconds notNegativeSeconds( std::string_view text );

} // namespace Agent
