#pragma once

#include <optional>

#include "platform/zornet/EthAddr.h"
#include "platform/zornet/IpAddr.h"
#include "platform/zornet/NamespaceName.h"

namespace Agent {

/// What the machine knows of one of its network devices.
struct DeviceFacts {
    Zornet::EthAddr macAddr;
    std::optional<Zornet::IpAddr> ipAddr{}; ///< the first of its addresses
};

/// The facts of the device of that name in the namespace. Raises std::runtime_error, in words for the user,
/// where there is no such namespace or device.
DeviceFacts deviceFacts( Zornet::NamespaceName const& ns, std::string const& device );

} // namespace Agent
