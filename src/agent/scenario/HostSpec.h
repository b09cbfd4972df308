#pragma once

#include <string>
#include <vector>

#include "agent/scenario/AddressList.h"
#include "agent/scenario/Settings.h"
#include "model/IgmpHost.h"

namespace Agent {

/// One entry of a host's groups: groups that are alike.
struct GroupSpec {
    GroupSpec() : settings( Igmp::IgmpV3GroupRecord::attributes() ) {}

    AddressList groups;
    AddressList sources;
    Settings settings;
    Position at;
};

/// One entry of the hosts: `count` hosts that are alike, but for what steps from one to the next.
struct HostSpec {
    HostSpec() : settings( Igmp::IgmpHost::attributes() ) {}

    /// The name itself for a single host; with the index, counted from 1, behind it for one of several.
    std::string hostName( U32 index ) const;
    /// How many groups each of the hosts has.
    U64 groupCount() const;
    // What steps with the index. A host whose address is not set keeps the default.
    Zornet::IpAddr ipAddr( U32 index ) const;
    Zornet::EthAddr macAddr( U32 index ) const;
    U16 vlanId( U32 index ) const;
    /// What is set of one of the hosts, with what steps at its place.
    Settings settingsOf( U32 index ) const;

    std::string name;
    U32 count = 1;
    U16 vlanStep = 0;
    Settings settings;
    std::vector<GroupSpec> groups;
    bool later = false;  ///< not there at the start: an event adds them
    bool faulty = false; ///< an error has been told of it, or of the defaults that it takes
    Position at;
};

/// The address as a number, and back; the number must be below 2^48.
U64 numberOf( Zornet::EthAddr const& addr );
Zornet::EthAddr ethAddrOf( U64 number );

} // namespace Agent
