#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/command/ExitStatus.h"
#include "agent/output/TraceConsole.h"
#include "lab/QuerierConfig.h"
#include "platform/zornet/NamespaceName.h"

namespace Agent {

struct QueryOptions {
    std::string device;
    Zornet::NamespaceName ns;
    /// Addresses and the response time are chosen by the device and the interval where they are not set.
    Lab::QuerierConfig config;
    std::optional<Zornet::IpAddr> ipAddr;
    std::optional<Zornet::EthAddr> macAddr;
    std::optional<Kiv::Seconds> responseTime;
    std::optional<Kiv::Seconds> duration;
    bool once = false;
    bool json = false;
    std::vector<TraceRequest> traces;
};

/// `igmphost query`: the reference querier on a device. It tells what it learns when it learns it, until a
/// signal or the end of the duration; with `once` it asks one time, waits for the answers and prints the
/// membership.
ExitStatus query( QueryOptions const& options );

} // namespace Agent
