#pragma once

#include <optional>

#include "agent/expecting/Comparison.h"
#include "agent/scenario/HostSelection.h"
#include "agent/scenario/HostSpec.h"
#include "platform/kiv/Attribute.h"

namespace Agent {

/// What an attribute of a host's status is to be.
struct StatusCondition {
    Kiv::Attribute const* attribute;
    Comparison comparison;
};

/// What the other side of a link is to know of memberships: the querier of the scenario, or a Linux bridge
/// that snoops.
struct MembershipCondition {
    struct Bridge {
        std::string device;
        std::string ns;   ///< empty for the namespace of this process
        std::string port; ///< empty for all ports
    };

    std::optional<Bridge> bridge;  ///< none for the querier
    std::vector<GroupSpec> joined; ///< with these sources, where it names any
    std::vector<GroupSpec> notJoined;
    std::optional<Comparison> groupCount;
    Position at;
};

/// One entry of what a scenario expects. It is met where all its conditions are.
struct Expectation {
    std::string name;                 ///< for reports; empty where not given
    std::optional<Kiv::Seconds> time; ///< in seconds after the start; none for the end
    Kiv::Seconds within = 0.0;        ///< how many seconds it may take from then on
    std::vector<HostName> hosts;      ///< whose status is looked at; all hosts where empty
    HostSelection selection;          ///< the hosts that they mean
    bool total = false;               ///< the sum over the hosts is compared, not each host
    std::vector<StatusCondition> status;
    std::vector<MembershipCondition> memberships;
    Position at;
};

} // namespace Agent
