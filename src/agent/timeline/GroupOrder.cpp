#include "agent/timeline/GroupOrder.h"

#include <algorithm>

namespace Agent {

GroupOrder::GroupOrder( std::vector<GroupSpec> const& specs ) : specs_( specs ) {
    ends_.reserve( specs.size() );
    for ( GroupSpec const& spec : specs ) {
        ends_.push_back( count() + spec.groups.count() );
    }
}

EventGroup
GroupOrder::group( U64 index ) const {
    auto const end = std::upper_bound( ends_.begin(), ends_.end(), index );
    GroupSpec const& spec = specs_.at( static_cast<std::size_t>( end - ends_.begin() ) );
    return { &spec, spec.groups.addr( index + spec.groups.count() - *end ) };
}

} // namespace Agent
