#include "lab/QuerierGroup.h"

namespace Lab {

QuerierGroup::QuerierGroup(
    Router& router, Kiv::Ptr<Lumo::TimerWheel const> const& wheel, IpAddr const& group
)
    : router_( router ),
      wheel_( wheel ),
      group_( group ),
      groupTimer_( new Timer( wheel, [this] { handleGroupTimer(); } ) ),
      groupQueryTimer_( new Timer( wheel, [this] { transmitGroupQuery(); } ) ),
      sourceQueryTimer_( new Timer( wheel, [this] { transmitGroupSourceQueries(); } ) ) {}

SourceSet
QuerierGroup::sources( bool running ) const {
    SourceSet set;
    for ( auto const& [source, state] : sources_ ) {
        if ( state.timer->isRunning() == running ) {
            set.append( source );
        }
    }
    return set;
}

Seconds
QuerierGroup::sourceTimerRemaining( IpAddr const& source ) const {
    auto const at = sources_.find( source );
    return at == sources_.end() ? 0.0 : at->second.timer->remaining();
}

bool
QuerierGroup::forwards( IpAddr const& source ) const {
    auto const at = sources_.find( source );
    return at == sources_.end() ? filterMode_ == FilterMode::exclude : at->second.timer->isRunning();
}

void
QuerierGroup::apply( Zornet::IgmpV3GroupRecordType type, SourceSet const& sources ) {
    filterMode_ == FilterMode::include ? handleInInclude( type, sources ) : handleInExclude( type, sources );
}

} // namespace Lab
