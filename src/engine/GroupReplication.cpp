#include "engine/GroupReplication.h"

#include "engine/Trace.h"

namespace Igmp {

namespace {

void
deleteGroupsOutside( IgmpHost& host, U32 start, U32 end ) {
    for ( auto at = host.v3group().begin(); at; ++at ) {
        U32 const addr = at->multicastAddr().hostOrder();
        if ( addr < start || addr > end ) {
            host.v3groupDel( at );
        }
    }
}

/// The version comes last, since its move is what makes the copy take effect. Sources are only ever added: on
/// purpose.
void
copyTemplate( IgmpV3GroupRecord const& from, Zornet::IpAddr const& group, IgmpV3GroupRecord& copy ) {
    copy.filterModeIs( from.filterMode() );
    if ( from.source() ) {
        Ptr<IgmpV3HostGroupSourceList> const sources = copy.sourceIs();
        for ( auto const& source : from.source()->sourceIp() ) {
            sources->sourceIpIs( source.key, 1 );
        }
    }
    copy.replicateGroupIs( group );
    copy.versionIs( from.version() );
}

} // namespace

/// A block that wraps past the highest address ends below its start: it makes no copy and deletes every
/// group.
void
replicateGroupOver( Ptr<IgmpHost> const& host, Zornet::IpAddr const& group ) {
    KIV_TRACE( igmpHostTrace, traceDetail ) << " host " << host->name() << " group " << group;
    Ptr<IgmpV3GroupRecord> const pattern = host->v3group( group );
    if ( !pattern ) {
        return;
    }
    U32 const start = group.hostOrder();
    U32 const end = pattern->replicateNumber() < 2 ? start : start + pattern->replicateNumber() - 1;
    deleteGroupsOutside( *host, start, end );
    for ( Kiv::U64 addr = Kiv::U64{ start } + 1; addr <= end; ++addr ) {
        Zornet::IpAddr const copyAddr = Zornet::IpAddr::fromHost( static_cast<U32>( addr ) );
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Replicating group " << copyAddr;
        copyTemplate( *pattern, group, *host->v3groupIs( copyAddr ) );
    }
}

} // namespace Igmp
