#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "lab/Querier.h"
#include "model/IgmpHost.h"

namespace Agent {

/// Which sources of a group are wanted: those of the set, or all but those.
struct Want {
    Lab::FilterMode mode;
    Lab::SourceSet sources;

    /// What is wanted where both are, which is what a router forwards for two hosts.
    friend Want operator+( Want const& a, Want const& b );
    friend bool operator==( Want const& a, Want const& b ) = default;
};

/// Such as "EXCLUDE {10.0.0.1}".
std::ostream& operator<<( std::ostream& out, Want const& want );

/// What is wanted of which groups; nothing is wanted of a group that is absent.
using Membership = std::map<Zornet::IpAddr, Want>;

/// Adds what a host is configured to want. Before version 3 a host that joins a group wants every source.
void addWanted( Igmp::IgmpHost const& host, Membership& membership );

/// What a querier would forward.
Membership learnedMembership( Lab::Querier const& querier );

/// Where the two differ, a text for each group; empty where they agree.
std::vector<std::string> differences( Membership const& configured, Membership const& learned );

} // namespace Agent
