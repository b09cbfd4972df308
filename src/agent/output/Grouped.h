#pragma once

#include <string>

#include "platform/kiv/Types.h"

namespace Agent {

/// The number with a comma before every three digits.
std::string grouped( Kiv::U64 number );

} // namespace Agent
