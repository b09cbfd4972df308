#pragma once

#include <string>

#include "platform/kiv/Types.h"

namespace Agent {

/// The number with a comma before every three digits.
std::string grouped( Kiv::U64 number );

/// "1 host", "1,200 hosts"; the plural is given where it takes more than an s.
std::string counted( Kiv::U64 count, std::string const& noun, std::string const& plural = "" );

} // namespace Agent
