#include "agent/scenario/NameOrder.h"

#include <algorithm>
#include <utility>

namespace Agent {

namespace {

std::vector<NameOrder::Named>
sorted( std::vector<NameOrder::Named> names ) {
    std::stable_sort( names.begin(), names.end(), []( NameOrder::Named const& a, NameOrder::Named const& b ) {
        return a.name < b.name;
    } );
    return names;
}

} // namespace

NameOrder::NameOrder( std::vector<Named> names ) : names_( sorted( std::move( names ) ) ) {}

std::span<NameOrder::Named const>
NameOrder::startingWith( std::string_view begin ) const {
    auto const first = std::lower_bound(
        names_.begin(), names_.end(), begin,
        []( Named const& named, std::string_view text ) { return named.name < text; }
    );
    auto const last = std::partition_point( first, names_.end(), [begin]( Named const& named ) {
        return named.name.starts_with( begin );
    } );
    return { first, last };
}

} // namespace Agent
