#pragma once

#include "agent/scenario/Scenario.h"
#include "agent/scenario/warnings/GroupDigest.h"

namespace Agent {

/// A host and its groups as a scenario would describe them, with `changes` in place of what stands.
HostSpec
hostSpecOf( Igmp::IgmpHost const& host, Settings const& changes = Settings( Igmp::IgmpHost::attributes() ) );

/// What is looked at of a host: its settings, those of its groups that are to be looked at one by one, and
/// what all its groups come to.
struct HostState {
    HostSpec host;
    GroupDigest groups;
};

/// The warnings that a host would deserve after a change and does not deserve already.
std::vector<Diagnostic> newRegrets( HostState const& before, HostState const& after );
std::vector<Diagnostic> newRegrets( HostSpec const& before, HostSpec const& after );

} // namespace Agent
