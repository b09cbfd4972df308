#pragma once

#include "agent/control/ControlClient.h"
#include "agent/hosts/HostPattern.h"

namespace Agent {

using Hosts = std::vector<Kiv::Ptr<Igmp::IgmpHost>>;

/// The hosts that a name or a pattern stands for; all where it is empty. Raises std::runtime_error where
/// there is none, with the nearest name.
Hosts selectedHosts( ControlClient const& client, std::string const& pattern );

/// "rx-1", "rx-1 and rx-2", or "1000 hosts, rx-1 to rx-1000".
std::string told( Hosts const& hosts );
std::vector<std::string> namesOf( Hosts const& hosts );

} // namespace Agent
