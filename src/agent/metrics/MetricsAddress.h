#pragma once

#include <string>
#include <string_view>

#include "platform/zornet/IpAddr.h"

namespace Agent {

/// Where metrics are served.
struct MetricsAddress {
    Zornet::IpAddr ipAddr{ "127.0.0.1" };
    Zornet::U16 port = 0; ///< 0 for any that is free

    /// As in "127.0.0.1:9464".
    std::string text() const;
};

/// From "ADDR:PORT" or ":PORT", which is on the loopback. Raises RangeException that says what was expected.
MetricsAddress metricsAddressOf( std::string_view text );

} // namespace Agent
