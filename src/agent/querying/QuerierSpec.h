#pragma once

#include "agent/scenario/Diagnostics.h"
#include "lab/QuerierConfig.h"
#include "platform/zornet/NamespaceName.h"

namespace Agent {

/// The reference querier that a scenario wants to run beside its hosts.
struct QuerierSpec {
    Kiv::String8 device;
    Zornet::NamespaceName ns;
    Lab::QuerierConfig config;
    Position at;
};

} // namespace Agent
