#include "lab/QuerierGroup.h"

// The group timer, the source timers and what their ends mean (RFC 3376 sections 6.2.2, 6.2.3 and 6.5).

namespace Lab {

QuerierGroup::Source&
QuerierGroup::sourceIs( IpAddr const& source ) {
    Source& state = sources_[source];
    if ( !state.timer ) {
        state.timer = new Timer( wheel_, [this, source] { handleSourceTimer( source ); } );
    }
    return state;
}

/// A source that has just come to its end in INCLUDE mode must not stay as an excluded one.
void
QuerierGroup::excludeModeIs() {
    sourcesDel( sources( false ) );
    filterMode_ = FilterMode::exclude;
}

void
QuerierGroup::sourceTimersAreMembershipInterval( SourceSet const& sources ) {
    for ( IpAddr const& source : sources ) {
        sourceIs( source ).timer->remainingIs( config().groupMembershipInterval() );
    }
}

void
QuerierGroup::sourceTimersAreGroupTimer( SourceSet const& sources ) {
    for ( IpAddr const& source : sources ) {
        sourceIs( source ).timer->timeMinIs( groupTimer_->timeMin() );
    }
}

void
QuerierGroup::sourceTimersAreZero( SourceSet const& sources ) {
    for ( IpAddr const& source : sources ) {
        sourceIs( source ).timer->stop();
    }
}

void
QuerierGroup::sourcesDel( SourceSet const& sources ) {
    for ( IpAddr const& source : sources ) {
        sources_.erase( source );
    }
}

void
QuerierGroup::groupTimerIsMembershipInterval() {
    groupTimer_->remainingIs( config().groupMembershipInterval() );
    asked_ = false;
    if ( config().version <
         3 ) { // RFC 2236 section 7: a report ends the round, which has no S flag to go on with
        groupQueryTimer_->stop();
    }
}

void
QuerierGroup::lower( Timer& timer, Seconds span ) {
    if ( timer.runsLongerThan( span ) ) {
        timer.remainingIs( span );
    }
}

/// Nobody is left who excludes: the requested sources go on in INCLUDE mode, without any the group ends.
void
QuerierGroup::handleGroupTimer() {
    sourcesDel( excludedSources() );
    filterMode_ = FilterMode::include;
    groupQueryTimer_->stop();
    if ( isIdle() ) {
        router_.handleGroupEnded( group_ );
    }
}

/// In EXCLUDE mode the source stays, with its timer at zero, as an excluded one.
void
QuerierGroup::handleSourceTimer( IpAddr const& source ) {
    if ( filterMode_ == FilterMode::exclude ) {
        return;
    }
    sources_.erase( source );
    if ( isIdle() ) {
        router_.handleGroupEnded( group_ );
    }
}

} // namespace Lab
