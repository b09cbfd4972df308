#pragma once

#include "agent/scenario/Scenario.h"

namespace Agent {

/// A host and its groups as a scenario would describe them, with `changes` in place of what stands.
HostSpec
hostSpecOf( Igmp::IgmpHost const& host, Settings const& changes = Settings( Igmp::IgmpHost::attributes() ) );

/// The warnings that a host would deserve after a change and does not deserve already.
std::vector<Diagnostic> newRegrets( HostSpec const& before, HostSpec const& after );

} // namespace Agent
