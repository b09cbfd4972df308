#include "lab/QuerierGroup.h"

// The queries that a leave, a BLOCK or a change of mode brings about, and their repetition (RFC 3376
// section 6.6.3).

namespace Lab {

/// Send Q(G). Further leaves do not ask again while a round is on its way that can still lead to the group's
/// end, as RFC 2236 section 7 has it: when a thousand hosts leave together, a thousand queries tell nothing
/// that one does not.
void
QuerierGroup::sendQuery() {
    Seconds const lastMemberQueryTime = config().lastMemberQueryTime();
    bool const ending = asked_ && !groupTimer_->runsLongerThan( lastMemberQueryTime );
    if ( ending || !router_.isQuerier() ) {
        return;
    }
    asked_ = true;
    lower( *groupTimer_, lastMemberQueryTime );
    groupQueriesLeft_ = config().lastMemberQueryCount();
    transmitGroupQuery();
}

/// Send Q(G,X). A source that is not to last longer than the queries would give it is not asked about.
void
QuerierGroup::sendQuery( SourceSet const& sources ) {
    if ( !router_.isQuerier() ) {
        return;
    }
    bool any = false;
    for ( IpAddr const& source : sources ) {
        Source& state = sources_.at( source );
        if ( state.timer->runsLongerThan( config().lastMemberQueryTime() ) ) {
            state.timer->remainingIs( config().lastMemberQueryTime() );
            state.queriesLeft = config().lastMemberQueryCount();
            any = true;
        }
    }
    if ( any ) {
        transmitGroupSourceQueries();
    }
}

void
QuerierGroup::transmitGroupQuery() {
    if ( --groupQueriesLeft_ != 0 ) {
        groupQueryTimer_->remainingIs( config().lastMemberQueryInterval );
    }
    if ( router_.isQuerier() ) {
        router_.sendGroupQuery( group_, groupTimer_->runsLongerThan( config().lastMemberQueryTime() ) );
    }
}

/// The sources that somebody has asked for again since go into a query with the S flag, so that no router
/// lowers their timers; the others into one without.
void
QuerierGroup::transmitGroupSourceQueries() {
    SourceSet renewed;
    SourceSet ending;
    bool more = false;
    for ( auto& [source, state] : sources_ ) {
        if ( state.queriesLeft != 0 ) {
            more |= --state.queriesLeft != 0;
            bool const isRenewed = state.timer->runsLongerThan( config().lastMemberQueryTime() );
            ( isRenewed ? renewed : ending ).append( source );
        }
    }
    sourceQueryTimer_->remainingIs( more ? config().lastMemberQueryInterval : Kiv::never );
    if ( router_.isQuerier() ) {
        router_.sendGroupSourceQuery( group_, renewed, true );
        router_.sendGroupSourceQuery( group_, ending, false );
    }
}

void
QuerierGroup::handleGroupQuery( Seconds lastMemberQueryTime ) {
    lower( *groupTimer_, lastMemberQueryTime );
}

void
QuerierGroup::handleGroupSourceQuery( SourceSet const& sources, Seconds lastMemberQueryTime ) {
    for ( IpAddr const& source : sources ) {
        auto const at = sources_.find( source );
        if ( at != sources_.end() ) {
            lower( *at->second.timer, lastMemberQueryTime );
        }
    }
}

} // namespace Lab
