#pragma once

#include <array>
#include <map>
#include <vector>

#include "agent/scenario/Scenario.h"

namespace Agent {

/// The hosts of one device.
struct DeviceSummary {
    U64 hosts = 0;
    U64 untagged = 0;
    std::vector<bool> vlans; ///< by number; empty where no host is tagged

    /// "101-300, 400": every VLAN that a host is in.
    std::string vlanRanges() const;
};

/// What would exist if a scenario were run, of this process's share. Takes time in proportion to the entries
/// of the scenario and the VLANs that an entry steps through, not to its hosts and groups.
struct ScenarioSummary {
    struct Device {
        std::string name;
        std::string ns; ///< empty for the process's own

        friend auto operator<=>( Device const&, Device const& ) = default; // NOLINT(modernize-use-nullptr)
    };

    U64 hosts = 0;
    U64 allHosts = 0;                        ///< of all shares
    std::array<U64, 4> hostsOfVersion{};     ///< by configured version
    U64 memberships = 0;                     ///< groups of each host, summed up
    U64 groups = 0;                          ///< different ones
    std::map<Device, DeviceSummary> devices; ///< hosts without a device are in none
    U64 firstReports = 0;                    ///< sent when the hosts start, before any repeat or answer
};

ScenarioSummary summaryOf( Scenario const& scenario );

/// How many different addresses the blocks have. Takes time in proportion to the blocks, and to the addresses
/// of those that overlap with a step above 1.
U64 differentAddresses( std::vector<AddressBlock> blocks );

} // namespace Agent
