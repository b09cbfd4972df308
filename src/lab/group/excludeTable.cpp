#include "lab/QuerierGroup.h"

// RFC 3376 sections 6.4.1 and 6.4.2, the rows for the router state EXCLUDE (X,Y). X are the requested
// sources, Y the excluded ones, A is the record's source list.

namespace Lab {

using Record = Zornet::IgmpV3GroupRecordType;

void
QuerierGroup::handleInExclude( Record type, SourceSet const& a ) {
    switch ( type ) {
    case Record::MODE_IS_INCLUDE: return excludeIsIn( a );
    case Record::MODE_IS_EXCLUDE: return excludeIsEx( a );
    case Record::CHANGE_TO_INCLUDE_MODE: return excludeToIn( a );
    case Record::CHANGE_TO_EXCLUDE_MODE: return excludeToEx( a );
    case Record::ALLOW_NEW_SOURCES: return excludeAllow( a );
    case Record::BLOCK_OLD_SOURCES: return excludeBlock( a );
    }
}

/// EXCLUDE (X+A,Y-A): (A)=GMI
void
QuerierGroup::excludeIsIn( SourceSet const& a ) {
    sourceTimersAreMembershipInterval( a );
}

/// EXCLUDE (A-Y,Y*A): (A-X-Y)=GMI, Delete (X-A), Delete (Y-A), Group Timer=GMI
void
QuerierGroup::excludeIsEx( SourceSet const& a ) {
    SourceSet const x = requestedSources();
    SourceSet const y = excludedSources();
    sourceTimersAreMembershipInterval( a - x - y );
    sourcesDel( x - a );
    sourcesDel( y - a );
    groupTimerIsMembershipInterval();
}

/// EXCLUDE (X+A,Y-A): (A)=GMI
void
QuerierGroup::excludeAllow( SourceSet const& a ) {
    sourceTimersAreMembershipInterval( a );
}

/// EXCLUDE (X+(A-Y),Y): (A-X-Y)=Group Timer, Send Q(G,A-Y)
void
QuerierGroup::excludeBlock( SourceSet const& a ) {
    SourceSet const x = requestedSources();
    SourceSet const y = excludedSources();
    sourceTimersAreGroupTimer( a - x - y );
    sendQuery( a - y );
}

/// EXCLUDE (A-Y,Y*A): (A-X-Y)=Group Timer, Delete (X-A), Delete (Y-A), Send Q(G,A-Y), Group Timer=GMI
void
QuerierGroup::excludeToEx( SourceSet const& a ) {
    SourceSet const x = requestedSources();
    SourceSet const y = excludedSources();
    sourceTimersAreGroupTimer( a - x - y );
    sourcesDel( x - a );
    sourcesDel( y - a );
    sendQuery( a - y );
    groupTimerIsMembershipInterval();
}

/// EXCLUDE (X+A,Y-A): (A)=GMI, Send Q(G,X-A), Send Q(G)
void
QuerierGroup::excludeToIn( SourceSet const& a ) {
    SourceSet const x = requestedSources();
    sourceTimersAreMembershipInterval( a );
    sendQuery( x - a );
    sendQuery();
}

} // namespace Lab
