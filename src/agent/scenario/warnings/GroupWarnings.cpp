#include "agent/scenario/warnings/GroupWarnings.h"

#include <algorithm>

#include "agent/scenario/warnings/FrameSizes.h"

namespace Agent {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Zornet::IpAddr;

namespace {

std::string
textOf( IpAddr const& addr ) {
    return Zornet::valueToStrep( addr ).charPtr();
}

IgmpV3GroupRecord::FilterMode
filterMode( GroupSpec const& group ) {
    return group.settings.value<IgmpV3GroupRecord::FilterMode>( IgmpV3GroupRecord::attrFilterMode );
}

/// How many groups a template makes of itself.
U32
blockSize( GroupSpec const& group ) {
    return std::max( 1U, group.settings.value<U32>( IgmpV3GroupRecord::attrReplicateNumber ) );
}

/// The first address that is no multicast address. Those of a block ascend.
std::optional<IpAddr>
firstOutside( AddressList const& groups ) {
    constexpr U32 lastMulticast = 0xefffffff;
    for ( AddressBlock const& block : groups.blocks() ) {
        if ( !block.first.isMulticast() ) {
            return block.first;
        }
        if ( !block.last().isMulticast() ) {
            return block.addr( ( lastMulticast - block.first.hostOrder() ) / block.step + 1 );
        }
    }
    return {};
}

} // namespace

void
GroupWarnings::check() {
    for ( GroupSpec const& group : host_.groups ) {
        checkAddress( group );
        checkFilterMode( group );
        checkSources( group );
        if ( group.settings.value<bool>( IgmpV3GroupRecord::attrReplicate ) ) {
            checkReplication( group );
        }
    }
}

void
GroupWarnings::warn( GroupSpec const& group, std::string const& text, bool endsProcess ) {
    warnings_.add( group.at, "group " + textOf( group.groups.first() ) + text, endsProcess );
}

void
GroupWarnings::checkAddress( GroupSpec const& group ) {
    constexpr U32 linkLocal = 0xe0000000; // 224.0.0.0/24
    constexpr U32 networkOf24 = 0xffffff00;
    constexpr U32 sourceSpecific = 0xe8000000; // 232.0.0.0/8
    constexpr U32 networkOf8 = 0xff000000;
    IpAddr const lowest = group.groups.lowest();
    if ( auto const outside = firstOutside( group.groups ) ) {
        warnings_.add(
            group.at, "group " + textOf( *outside ) + ": outside 224.0.0.0/4 there are no multicast groups"
        );
    } else if ( ( lowest.hostOrder() & networkOf24 ) == linkLocal ) {
        warn( group, ": routers and snooping switches do not keep track of 224.0.0.0/24 (RFC 4541)" );
    } else if ( ( lowest.hostOrder() & networkOf8 ) == sourceSpecific && filterMode( group ) == IgmpV3GroupRecord::exclude ) {
        warn( group, ": routers take a join of 232.0.0.0/8 for named sources alone (RFC 4604)" );
    }
}

void
GroupWarnings::checkFilterMode( GroupSpec const& group ) {
    auto const mode = filterMode( group );
    if ( mode == IgmpV3GroupRecord::include && group.sources.empty() ) {
        warn( group, ": filterMode include without sources joins nothing" );
    } else if ( mode != IgmpV3GroupRecord::include && mode != IgmpV3GroupRecord::exclude ) {
        warn( group, ": a filterMode other than include and exclude ends the process in version 3", true );
    }
}

void
GroupWarnings::checkSources( GroupSpec const& group ) {
    if ( group.sources.empty() ) {
        return;
    }
    if ( group.sources.highest().isMulticast() || group.sources.lowest().isZero() ) {
        warn( group, ": a multicast address, or 0.0.0.0, is no source of packets" );
    }
    if ( host_.settings.value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion ) != Igmp::igmpVersion3 ) {
        warn( group, ": before version 3 a host joins a group for every source; sources have no effect" );
        return;
    }
    U32 const mtu = host_.settings.value<U32>( IgmpHost::attrMtu );
    if ( headerBytes( host_ ) + recordBytes( group.sources.count() ) > mtu ) {
        warn(
            group,
            ": a record of its " + std::to_string( group.sources.count() ) +
                " sources is larger than the mtu; a change of filter mode is never reported whole, and "
                "after a general query the report is sent again and again without a pause, past later "
                "queries too"
        );
    }
}

void
GroupWarnings::checkReplication( GroupSpec const& group ) {
    if ( U64{ group.groups.highest().hostOrder() } + blockSize( group ) - 1 > 0xffffffffU ) {
        warn( group, ": its copies run past 255.255.255.255, which deletes every group of the host" );
    } else if ( hasGroupOutside( group ) ) {
        warn( group, ": replicate deletes every group of the host that is not one of its copies" );
    }
    if ( blockSize( group ) == 1 ) {
        warn( group, ": replicate makes no copies with a replicateNumber below 2" );
    }
}

bool
GroupWarnings::hasGroupOutside( GroupSpec const& block ) const {
    U64 const first = block.groups.first().hostOrder();
    U64 const last = first + blockSize( block ) - 1;
    return groups_.lowest.hostOrder() < first || groups_.highest.hostOrder() > last;
}

} // namespace Agent
