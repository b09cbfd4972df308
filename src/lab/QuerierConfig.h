#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/bridging/VlanId.h"
#include "platform/zornet/EthAddr.h"
#include "platform/zornet/IpAddr.h"

namespace Lab {

using Kiv::Seconds;
using Zornet::EthAddr;
using Zornet::IpAddr;
using Zornet::U16;
using Zornet::U32;
using Zornet::U64;
using Zornet::U8;

/// How a reference querier is to behave: the variables of RFC 3376 section 8 under their names and with their
/// defaults, and who it is on the wire. What a section derives from other variables is a function here.
struct QuerierConfig {
    /// The protocol that it speaks, 1 to 3. A querier does not understand the messages of a later version.
    U8 version = 3;
    IpAddr ipAddr = IpAddr::fromHost( 0x0a0000fe );
    EthAddr macAddr{ { 0x02, 0x00, 0x00, 0x00, 0x00, 0xfe } };
    /// Tags what it sends and hears only what is tagged so; without it, only untagged and priority-tagged
    /// frames.
    std::optional<Bridging::VlanId> vlanId{};
    /// Greatest length of an IP packet that it sends, in bytes.
    U32 mtu = 1500;
    /// Puts the Router Alert option (RFC 2113) into what it sends.
    bool routerAlert = true;
    /// Yields to a querier with a lower address; version 2 and later.
    bool electionEnabled = false;

    /// Robustness Variable: that many transmissions in a row may not all be lost. At least 1.
    U32 robustness = 2;
    /// Query Interval, in seconds.
    Seconds queryInterval = 125.0;
    /// Query Response Interval, in seconds: the Max Resp Time of a general query. A version 1 querier does
    /// not tell it, and its hosts take 10.
    Seconds queryResponseInterval = 10.0;
    /// Last Member Query Interval, in seconds: the Max Resp Time of the queries that follow a leave, and
    /// their distance.
    Seconds lastMemberQueryInterval = 1.0;
    /// Seconds between the general queries after the start; a quarter of the Query Interval where not set.
    std::optional<Seconds> startupQueryIntervalSet{};
    /// How many general queries go out at that distance; the Robustness Variable where not set. At least 1.
    std::optional<U32> startupQueryCountSet{};
    /// How many queries follow a leave; the Robustness Variable where not set. At least 1.
    std::optional<U32> lastMemberQueryCountSet{};

    Seconds startupQueryInterval() const { return startupQueryIntervalSet.value_or( queryInterval / 4 ); }
    U32 startupQueryCount() const { return startupQueryCountSet.value_or( robustness ); }
    U32 lastMemberQueryCount() const { return lastMemberQueryCountSet.value_or( robustness ); }
    /// How long a membership lasts that is not reported again.
    Seconds groupMembershipInterval() const { return robustness * queryInterval + queryResponseInterval; }
    /// How long a group stays in an older version's mode after a report of that version.
    Seconds olderHostPresentInterval() const { return groupMembershipInterval(); }
    /// How long another querier's silence is borne.
    Seconds otherQuerierPresentInterval() const {
        return robustness * queryInterval + queryResponseInterval / 2;
    }
    /// How long a membership lasts after a leave that nobody contradicts.
    Seconds lastMemberQueryTime() const { return lastMemberQueryCount() * lastMemberQueryInterval; }

    /// A value with which no querier can work: the variable, and what was expected and found.
    struct Fault {
        std::string variable;
        std::string text;
    };
    std::vector<Fault> faults() const;
    /// Raises RangeException with the first of them.
    void check() const;
};

} // namespace Lab
