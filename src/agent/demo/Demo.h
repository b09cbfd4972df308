#pragma once

#include <vector>

#include "agent/command/ExitStatus.h"
#include "agent/output/TraceConsole.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

struct DemoOptions {
    U32 hosts = 1000;
    U32 groups = 10; ///< of each host
    Igmp::IgmpVersion igmpVersion = Igmp::igmpVersion2;
    U32 vlans = 0; ///< 0 for untagged hosts
    Kiv::Seconds duration = 600.0;
    bool realtime = false;
    std::vector<TraceRequest> traces{};
};

/// The hosts of the demonstration, all on the device "eth0". Host number n is in the groups of number n to
/// n + `groups` - 1, so that neighbours share groups; in version 3 filter mode and sources vary from group to
/// group and from host to host. With VLANs the hosts are dealt out to them, and as many as there are VLANs
/// share an interface.
Scenario demoScenario( DemoOptions const& options );

/// `igmphost demo`: hosts on a wire in memory against the reference querier, one in each VLAN, and a table of
/// what both sides have counted. Fails where a querier has not learned exactly what is configured.
ExitStatus demo( DemoOptions const& options );

} // namespace Agent
