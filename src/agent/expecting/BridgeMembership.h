#pragma once

#include "agent/expecting/Expectation.h"
#include "agent/querying/Membership.h"

namespace Agent {

/// Why a device cannot know of any group, read from what `ip -d -j link show dev DEVICE` prints; empty where
/// it can.
std::string reasonToKnowNothing( std::string const& json );

/// What a Linux bridge that snoops knows, as iproute2 tells. Raises std::runtime_error where the bridge or
/// the command does not answer, and where nothing is known and the device is no bridge that snoops.
Membership bridgeMembership( MembershipCondition::Bridge const& bridge );

/// The same from what `bridge -d -s -j mdb show` prints, of one port or, with an empty name, of all. Raises
/// std::runtime_error for a text of another form.
Membership bridgeMembershipOf( std::string const& json, std::string const& port );

} // namespace Agent
