#include "lab/Querier.h"

// Other queriers on the link: who asks (RFC 3376 section 6.6.2) and what their queries do to the timers
// (6.6.1).

namespace Lab {

using namespace Zornet;

void
Querier::handleQuery( IgmpFrame const& frame ) {
    if ( frame.igmpBytes() >= sizeof( IgmpV3QueryHdr ) ) {
        handleV3Query( frame );
        return;
    }
    if ( frame.igmpBytes() != sizeof( IgmpV12Hdr ) ) { // RFC 3376 section 7.1
        ++counters_.badIgmpLengths;
        return;
    }
    bool const isV1 = frame.v12().maxResponseCode() == 0;
    ++( isV1 ? counters_.v1Queries : counters_.v2Queries );
    if ( !isV1 && understood( 2 ) && losesTo( frame.src() ) ) {
        otherQuerierIs( frame.src() );
        endSoon( frame.v12(), frame.v12().maxResponseSeconds(), {} );
    }
}

/// A query may be longer than its sources need; the rest is passed over (RFC 3376 section 4.1.10).
void
Querier::handleV3Query( IgmpFrame const& frame ) {
    IgmpV3QueryHdr const& query = frame.v3Query();
    if ( frame.igmpBytes() < query.messageBytes() ) {
        ++counters_.badIgmpLengths;
        return;
    }
    ++counters_.v3Queries;
    if ( !understood( 3 ) || !losesTo( frame.src() ) ) {
        return;
    }
    adopt( query );
    otherQuerierIs( frame.src() );
    if ( !query.suppressRouterProcessing() ) {
        U16 const count = query.numSources();
        SourceSet const sources = count ? SourceSet( std::span( &query.source( 0 ), count ) ) : SourceSet();
        endSoon( query, query.maxResponseSeconds(), sources );
    }
}

/// The lower address asks. A snooping switch without one takes no part.
bool
Querier::losesTo( IpAddr const& other ) const {
    return config_.electionEnabled && !other.isZero() && other < config_.ipAddr;
}

void
Querier::otherQuerierIs( IpAddr const& other ) {
    otherQuerier_ = other;
    generalQueryTimer_->stop();
    otherQuerierTimer_->remainingIs( configInForce_.otherQuerierPresentInterval() );
}

void
Querier::handleOtherQuerierGone() {
    configInForce_ = config_;
    startupQueriesLeft_ = 0;
    handleGeneralQueryTimer();
}

/// A router that does not ask goes by the numbers of the one that does; a zero tells nothing.
void
Querier::adopt( IgmpV3QueryHdr const& query ) {
    if ( query.querierRobustness() != 0 ) {
        configInForce_.robustness = query.querierRobustness();
    }
    if ( query.queryIntervalCode() != 0 ) {
        configInForce_.queryInterval = query.queryIntervalSeconds();
    }
}

/// What the querier asks about ends after that querier's Last Member Query Time, unless somebody answers.
void
Querier::endSoon( IgmpV12Hdr const& query, Seconds maxResponse, SourceSet const& sources ) {
    auto const at = groups_.find( query.groupAddress() );
    if ( at == groups_.end() ) {
        return;
    }
    Seconds const lastMemberQueryTime = configInForce_.lastMemberQueryCount() * maxResponse;
    if ( sources.empty() ) {
        at->second->handleGroupQuery( lastMemberQueryTime );
    } else {
        at->second->handleGroupSourceQuery( sources, lastMemberQueryTime );
    }
}

} // namespace Lab
