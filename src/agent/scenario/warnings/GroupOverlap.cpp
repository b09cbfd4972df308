#include "agent/scenario/warnings/GroupOverlap.h"

#include <algorithm>
#include <numeric>

namespace Agent {

using Igmp::IgmpV3GroupRecord;

namespace {

/// How many groups follow each group that is written, as its copies.
U64
copiesOf( GroupSpec const& groups ) {
    bool const isTemplate = groups.settings.value<bool>( IgmpV3GroupRecord::attrReplicate );
    U64 const block = groups.settings.value<U32>( IgmpV3GroupRecord::attrReplicateNumber );
    return isTemplate ? std::max<U64>( block, 1 ) - 1 : 0;
}

/// Numbers `step` apart, each of which stands for itself and the `more` that follow it.
struct Runs {
    U64 first;
    U64 count;
    U64 step;
    U64 more;

    U64 at( U64 index ) const { return first + index * step; }
    U64 end() const { return at( count - 1 ) + more; }
    bool isSolid() const { return count == 1 || step <= more + 1; }
    /// Whether one of the numbers from `least` to `most` is among them.
    bool has( U64 least, U64 most ) const {
        U64 const begin = least > more ? least - more : 0;
        U64 const index = begin > first ? ( begin - first + step - 1 ) / step : 0;
        return index < count && at( index ) <= most;
    }
};

Runs
runsOf( AddressBlock const& block, U64 copies ) {
    return { block.first.hostOrder(), block.count, block.step, copies };
}

/// Whether both have a number in common. Where the work is to end, they may.
bool
meet( Runs const& a, Runs const& b, GroupOverlap::Spend spend ) {
    if ( a.isSolid() || b.isSolid() ) {
        return a.isSolid() ? b.has( a.first, a.end() ) : a.has( b.first, b.end() );
    }
    U64 const apart = std::max( a.first, b.first ) - std::min( a.first, b.first );
    if ( a.more + b.more == 0 && apart % std::gcd( a.step, b.step ) != 0 ) {
        return false;
    }
    Runs const& fewer = a.count < b.count ? a : b;
    Runs const& others = a.count < b.count ? b : a;
    for ( U64 i = 0; i < fewer.count && fewer.at( i ) <= others.end(); ++i ) {
        if ( !spend( 1 ) || others.has( fewer.at( i ), fewer.at( i ) + fewer.more ) ) {
            return true;
        }
    }
    return false;
}

} // namespace

bool
GroupOverlap::overlaps( GroupSpec const& joined, GroupSpec const& other, Spend spend ) {
    U64 const copies = copiesOf( joined );
    if ( joined.groups.highest().hostOrder() + copies < other.groups.lowest().hostOrder() ||
         other.groups.highest() < joined.groups.lowest() ) {
        return false;
    }
    bool const isJoinedShorter = joined.groups.blocks().size() < other.groups.blocks().size();
    AddressList const& shorter = isJoinedShorter ? joined.groups : other.groups;
    auto const& [blocks, farthest] = ordered( isJoinedShorter ? other.groups : joined.groups );
    U64 const copiesOfShorter = isJoinedShorter ? copies : 0;
    for ( AddressBlock const& block : shorter.blocks() ) {
        Runs const one = runsOf( block, copiesOfShorter );
        auto const behind = std::upper_bound(
            blocks.begin(), blocks.end(), one.end(),
            []( U64 end, AddressBlock const& entry ) { return end < entry.first.hostOrder(); }
        );
        for ( auto i = static_cast<std::size_t>( behind - blocks.begin() );
              i != 0 && farthest[i - 1] + copies >= one.first; --i ) {
            if ( !spend( 1 ) || meet( one, runsOf( blocks[i - 1], copies - copiesOfShorter ), spend ) ) {
                return true;
            }
        }
    }
    return false;
}

GroupOverlap::Ordered const&
GroupOverlap::ordered( AddressList const& list ) {
    auto const [known, isNew] = ordered_.try_emplace( list.blocks().data() );
    Ordered& order = known->second;
    if ( isNew ) {
        order.blocks.assign( list.blocks().begin(), list.blocks().end() );
        std::stable_sort( order.blocks.begin(), order.blocks.end(), []( auto const& a, auto const& b ) {
            return a.first < b.first;
        } );
        U64 farthest = 0;
        for ( AddressBlock const& block : order.blocks ) {
            farthest = std::max<U64>( farthest, block.last().hostOrder() );
            order.farthest.push_back( farthest );
        }
    }
    return order;
}

} // namespace Agent
