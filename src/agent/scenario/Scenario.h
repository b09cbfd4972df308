#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/scenario/Settings.h"
#include "model/IgmpHost.h"

namespace Agent {

using Kiv::U16;
using Kiv::U32;
using Kiv::U64;

/// One entry of a host's groups: `count` consecutive groups that are alike.
struct GroupSpec {
    GroupSpec() : settings( Igmp::IgmpV3GroupRecord::attributes() ) {}

    /// The group of that index, which must be below `count`.
    Zornet::IpAddr group( U32 index ) const;
    Zornet::IpAddr lastGroup() const { return group( count - 1 ); }

    Zornet::IpAddr multicastAddr;
    U32 count = 1;
    std::vector<Zornet::IpAddr> sources;
    Settings settings;
    Position at;
};

/// One entry of the hosts: `count` hosts that are alike, but for what steps from one to the next.
struct HostSpec {
    HostSpec() : settings( Igmp::IgmpHost::attributes() ) {}

    /// The name itself for a single host; with the index, counted from 1, behind it for one of several.
    std::string hostName( U32 index ) const;
    // What steps with the index. A host whose address is not set keeps the default.
    Zornet::IpAddr ipAddr( U32 index ) const;
    Zornet::EthAddr macAddr( U32 index ) const;
    U16 vlanId( U32 index ) const;

    std::string name;
    U32 count = 1;
    U16 vlanStep = 0;
    Settings settings;
    std::vector<GroupSpec> groups;
    Position at;
};

/// What a user wants to exist: plain data, checked one by one against what the model can hold.
struct Scenario {
    std::vector<std::string> files;
    std::vector<HostSpec> hosts;

    U64 hostCount() const;
};

/// The address as a number, and back; the number must be below 2^48.
U64 numberOf( Zornet::EthAddr const& addr );
Zornet::EthAddr ethAddrOf( U64 number );

} // namespace Agent
