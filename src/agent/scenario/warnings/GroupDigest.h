#pragma once

#include "agent/scenario/HostSpec.h"

namespace Agent {

/// What warnings about a host have to know of all its groups together.
struct GroupDigest {
    GroupDigest() = default;
    explicit GroupDigest( std::vector<GroupSpec> const& groups );
    GroupDigest& operator+=( GroupDigest const& other );

    U64 count = 0;
    U64 recordBytes = 0;   ///< of a version 3 report that tells all of them
    bool excludes = false; ///< some are in EXCLUDE mode
    /// Of the entries the one with the most sources; null where there is none. It must stay where it is.
    GroupSpec const* longest = nullptr;
    Zornet::IpAddr lowest = Zornet::IpAddr::fromHost( 0xffffffff );
    Zornet::IpAddr highest;
};

} // namespace Agent
