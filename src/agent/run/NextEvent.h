#pragma once

#include <string>

#include "platform/kiv/Types.h"

namespace Agent {

/// What is planned to happen next in a run.
struct NextEvent {
    Kiv::Seconds time; ///< on the clock of Kiv::now()
    std::string what;  ///< in a few words
};

} // namespace Agent
