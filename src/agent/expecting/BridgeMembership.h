#pragma once

#include "agent/expecting/Expectation.h"
#include "agent/querying/Membership.h"

namespace Agent {

/// What a Linux bridge that snoops knows, as iproute2 tells. Raises std::runtime_error where the bridge or
/// the command does not answer.
Membership bridgeMembership( MembershipCondition::Bridge const& bridge );

/// The same from what `bridge -d -s -j mdb show` prints, of one port or, with an empty name, of all. Raises
/// std::runtime_error for a text of another form.
Membership bridgeMembershipOf( std::string const& json, std::string const& port );

} // namespace Agent
