#pragma once

#include <unordered_map>
#include <vector>

#include "agent/scenario/HostSpec.h"
#include "platform/kiv/FunctionRef.h"

namespace Agent {

/// Tells whether entries of groups have a group in common. What it has found out about an entry it keeps, so
/// the entries must stay where they are.
class GroupOverlap {
  public:
    /// Asked before so many steps are taken; false ends the work.
    using Spend = Kiv::FunctionRef<bool( U64 )>;

    /// Whether a group that `joined` makes a host join is one of the other's. Replication makes further
    /// groups of a template. Where the work is to end, it may be.
    bool overlaps( GroupSpec const& joined, GroupSpec const& other, Spend spend );

  private:
    /// Blocks by their first addresses.
    struct Ordered {
        std::vector<AddressBlock> blocks;
        std::vector<U64> farthest; ///< the last address of a block and of those before it
    };

    Ordered const& ordered( AddressList const& list );

    std::unordered_map<AddressBlock const*, Ordered> ordered_; ///< by where a list's blocks are
};

} // namespace Agent
