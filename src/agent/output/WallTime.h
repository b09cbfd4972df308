#pragma once

#include <string>

#include "platform/kiv/Types.h"

namespace Agent {

/// The time of day at that moment, in seconds since 1970, as "HH:MM:SS.mmm" in the local zone.
std::string wallTime( Kiv::Seconds time );

} // namespace Agent
