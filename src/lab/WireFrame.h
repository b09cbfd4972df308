#pragma once

#include <span>
#include <string_view>

#include "platform/zornet/Types.h"

namespace Lab {

/// A frame as a device put it onto a wire: borrowed, for the length of a call.
struct WireFrame {
    Kiv::Seconds time;       ///< of sending
    std::string_view device; ///< the sender: "name", or "namespace/name" outside the default namespace
    std::span<Zornet::U8 const> bytes;
    bool lost = false; ///< nobody hears it
};

} // namespace Lab
