#pragma once

#include <optional>
#include <string>

#include "agent/command/ExitStatus.h"
#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/Types.h"

namespace Agent {

struct WatchOptions {
    std::string device;
    Zornet::NamespaceName ns;
    std::optional<Zornet::U64> count;     ///< of messages; none for all
    std::optional<Kiv::Seconds> duration; ///< none: until a signal
    bool json = false;
};

/// `igmphost watch`: prints every IGMP message that passes a device, in either direction, a line each.
ExitStatus watch( WatchOptions const& options );

} // namespace Agent
