#include "lab/Querier.h"
#include "platform/zornet/IpMcastMacAddr.h"

// What a querier hears: the way of a frame to the state of its groups.

namespace Lab {

using namespace Zornet;

namespace {

using Record = IgmpReportGroupRecordHeader;

/// The record at that place of the report; null if it does not lie in the message with all the sources and
/// auxiliary data that it counts.
Record const*
recordAt( IgmpFrame const& frame, std::size_t at ) {
    std::size_t const rest = frame.igmpBytes() - at;
    if ( rest < sizeof( Record ) ) {
        return nullptr;
    }
    auto const* const record = reinterpret_cast<Record const*>( &frame.igmp()[at] );
    return rest < record->recordBytes() ? nullptr : record;
}

/// True if the report holds all the records that it counts. What follows them is passed over (RFC 3376
/// section 4.2.11).
bool
recordsFit( IgmpFrame const& frame ) {
    std::size_t at = sizeof( IgmpV3ReportHdr );
    for ( U16 left = frame.v3Report().numGroupRecords(); left != 0; --left ) {
        Record const* const record = recordAt( frame, at );
        if ( !record ) {
            return false;
        }
        at += record->recordBytes();
    }
    return true;
}

bool
isKnown( IgmpV3GroupRecordType type ) {
    return type >= IgmpV3GroupRecordType::MODE_IS_INCLUDE && type <= IgmpV3GroupRecordType::BLOCK_OLD_SOURCES;
}

SourceSet
sourcesOf( Record const& record ) {
    U16 const count = record.numSources();
    return count == 0 ? SourceSet() : SourceSet( std::span( &record.source( 0 ), count ) );
}

} // namespace

void
Querier::handleReadable() {
    while ( enabled_ ) {
        Kiv::Ptr<Pkt> const pkt = pam_->rxPkt();
        if ( !pkt ) {
            return;
        }
        handlePkt( *pkt );
    }
}

void
Querier::handlePkt( Pkt const& pkt ) {
    if ( pkt.firstIoVec() == Pkt::maxIovecs_ - 1 ) {
        handleFrame( { pkt.front(), pkt.bytes() } );
        return;
    }
    scratch_.resize( pkt.bytes() );
    pkt.copyTo( scratch_.data() );
    handleFrame( scratch_ );
}

void
Querier::handleFrame( std::span<U8 const> bytes ) {
    ++counters_.framesHeard;
    IgmpFrame const frame( bytes, config_.vlanId );
    if ( frame.verdict() == IgmpFrame::Verdict::good ) {
        handleMessage( frame );
    } else {
        countFault( frame.verdict() );
    }
}

void
Querier::countFault( IgmpFrame::Verdict verdict ) {
    using Verdict = IgmpFrame::Verdict;
    switch ( verdict ) {
    case Verdict::good: return;
    case Verdict::foreign: ++counters_.framesForeign; return;
    case Verdict::truncated: ++counters_.truncatedFrames; return;
    case Verdict::badIpHeader: ++counters_.badIpHeaders; return;
    case Verdict::badIpChecksum: ++counters_.badIpChecksums; return;
    case Verdict::fragment: ++counters_.fragments; return;
    case Verdict::badIgmpLength: ++counters_.badIgmpLengths; return;
    case Verdict::badIgmpChecksum: ++counters_.badIgmpChecksums; return;
    }
}

void
Querier::handleMessage( IgmpFrame const& frame ) {
    switch ( frame.v12().messageType() ) {
    case IgmpMessageType::membershipQuery: return handleQuery( frame );
    case IgmpMessageType::v1MembershipReport: return handleV1Report( frame );
    case IgmpMessageType::v2MembershipReport: return handleV2Report( frame );
    case IgmpMessageType::v2LeaveGroup: return handleV2Leave( frame );
    case IgmpMessageType::v3MembershipReport: return handleV3Report( frame );
    }
    ++counters_.unknownTypes;
}

bool
Querier::understood( U8 version ) {
    counters_.messagesNotUnderstood += version > config_.version;
    return version <= config_.version;
}

/// 224.0.0.1 is never reported (RFC 3376 section 5): every system is in it.
bool
Querier::isJoinable( IpAddr const& group ) {
    bool const joinable = group.isMulticast() && group != allSystems;
    counters_.badGroups += !joinable;
    return joinable;
}

void
Querier::judgeManner( IgmpFrame const& frame, IpAddr const& destination, bool routerAlert ) {
    counters_.misaddressed += frame.dst() != destination || frame.ethDst() != ipMcastMacAddr( destination );
    counters_.wrongTtls += frame.ttl() != 1;
    counters_.withoutRouterAlert += routerAlert && !frame.hasRouterAlert();
}

void
Querier::handleV1Report( IgmpFrame const& frame ) {
    IpAddr const& group = frame.v12().groupAddress();
    if ( !isJoinable( group ) ) {
        return;
    }
    ++counters_.v1Reports;
    judgeManner( frame, group, false );
    lastReporter_ = frame.src();
    groupIs( group ).handleV1Report( frame.src() );
}

void
Querier::handleV2Report( IgmpFrame const& frame ) {
    IpAddr const& group = frame.v12().groupAddress();
    if ( !isJoinable( group ) ) {
        return;
    }
    ++counters_.v2Reports;
    judgeManner( frame, group, true );
    if ( understood( 2 ) ) {
        lastReporter_ = frame.src();
        groupIs( group ).handleV2Report( frame.src() );
    }
}

void
Querier::handleV2Leave( IgmpFrame const& frame ) {
    IpAddr const& group = frame.v12().groupAddress();
    if ( !isJoinable( group ) ) {
        return;
    }
    ++counters_.v2Leaves;
    judgeManner( frame, allRouters, true );
    auto const at = groups_.find( group );
    if ( understood( 2 ) && at != groups_.end() ) {
        at->second->handleV2Leave();
    }
}

void
Querier::handleV3Report( IgmpFrame const& frame ) {
    if ( !recordsFit( frame ) ) {
        ++counters_.badIgmpLengths;
        return;
    }
    ++counters_.v3Reports;
    judgeManner( frame, allV3Routers, true );
    bool const obeyed = understood( 3 );
    std::size_t at = sizeof( IgmpV3ReportHdr );
    for ( U16 left = frame.v3Report().numGroupRecords(); left != 0; --left ) {
        Record const& record = *recordAt( frame, at );
        ++counters_.records( record.recordType() );
        if ( obeyed ) {
            lastReporter_ = frame.src();
            handleRecord( record, frame.src() );
        }
        at += record.recordBytes();
    }
}

void
Querier::handleRecord( IgmpReportGroupRecordHeader const& record, IpAddr const& reporter ) {
    if ( isJoinable( record.mcastAddr() ) && isKnown( record.recordType() ) ) {
        QuerierGroup& group = groupIs( record.mcastAddr() );
        group.handleRecord( record.recordType(), sourcesOf( record ), reporter );
        groupDelIfIdle( group );
    }
}

QuerierGroup&
Querier::groupIs( IpAddr const& group ) {
    std::unique_ptr<QuerierGroup>& state = groups_[group];
    if ( !state ) {
        QuerierGroup::Router& router = *this;
        state = std::make_unique<QuerierGroup>( router, wheel_, group );
    }
    return *state;
}

void
Querier::groupDelIfIdle( QuerierGroup const& group ) {
    if ( group.isIdle() ) {
        groups_.erase( IpAddr( group.group() ) );
    }
}

void
Querier::handleGroupEnded( IpAddr const& group ) {
    groups_.erase( IpAddr( group ) );
}

} // namespace Lab
