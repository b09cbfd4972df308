#include <algorithm>

#include "lab/Querier.h"

// What a querier asks on its own: general queries at the start and for ever (RFC 3376 sections 8.6 and 8.7),
// and the queries that its groups want.

namespace Lab {

void
Querier::handleGeneralQueryTimer() {
    if ( startupQueriesLeft_ != 0 ) {
        --startupQueriesLeft_;
    }
    generalQueryTimer_->remainingIs(
        startupQueriesLeft_ != 0 ? configInForce_.startupQueryInterval() : configInForce_.queryInterval
    );
    sendGeneralQuery();
}

void
Querier::sendGeneralQuery() {
    if ( enabled_ && isQuerier() ) {
        ++counters_.generalQueriesSent;
        pam_->txPktIs( packets_.general() );
    }
}

void
Querier::sendGroupQuery( IpAddr const& group, bool suppress ) {
    ++counters_.groupQueriesSent;
    pam_->txPktIs( packets_.group( group, suppress ) );
}

/// As many queries as the sources need (RFC 3376 section 4.1.8); none without sources.
void
Querier::sendGroupSourceQuery( IpAddr const& group, SourceSet const& sources, bool suppress ) {
    std::span<IpAddr const> rest = sources;
    while ( !rest.empty() ) {
        std::size_t const count = std::min<std::size_t>( rest.size(), packets_.sourcesPerQuery() );
        ++counters_.groupSourceQueriesSent;
        pam_->txPktIs( packets_.groupAndSources( group, rest.first( count ), suppress ) );
        rest = rest.subspan( count );
    }
}

} // namespace Lab
