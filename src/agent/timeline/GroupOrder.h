#pragma once

#include <vector>

#include "agent/timeline/Event.h"

namespace Agent {

/// A group of an event, with what the event says of it.
struct EventGroup {
    GroupSpec const* spec;
    Zornet::IpAddr group;
};

/// The groups of an event, counted over all that it lists; it refers to the list. A step asks for every group
/// of every host, so one is found in logarithmic time.
class GroupOrder {
  public:
    explicit GroupOrder( std::vector<GroupSpec> const& specs );

    U64 count() const { return ends_.empty() ? 0 : ends_.back(); }
    /// The group of that index, below the count.
    EventGroup group( U64 index ) const;

  private:
    std::vector<GroupSpec> const& specs_;
    std::vector<U64> ends_; ///< of each entry, the index behind its last group
};

} // namespace Agent
