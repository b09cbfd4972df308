#include "lab/QuerierGroup.h"

// RFC 3376 sections 6.4.1 and 6.4.2, the rows for the router state INCLUDE (A). B is the record's source
// list.

namespace Lab {

using Record = Zornet::IgmpV3GroupRecordType;

void
QuerierGroup::handleInInclude( Record type, SourceSet const& b ) {
    switch ( type ) {
    case Record::MODE_IS_INCLUDE: return includeIsIn( b );
    case Record::MODE_IS_EXCLUDE: return includeIsEx( b );
    case Record::CHANGE_TO_INCLUDE_MODE: return includeToIn( b );
    case Record::CHANGE_TO_EXCLUDE_MODE: return includeToEx( b );
    case Record::ALLOW_NEW_SOURCES: return includeAllow( b );
    case Record::BLOCK_OLD_SOURCES: return includeBlock( b );
    }
}

/// INCLUDE (A+B): (B)=GMI
void
QuerierGroup::includeIsIn( SourceSet const& b ) {
    sourceTimersAreMembershipInterval( b );
}

/// EXCLUDE (A*B,B-A): (B-A)=0, Delete (A-B), Group Timer=GMI
void
QuerierGroup::includeIsEx( SourceSet const& b ) {
    SourceSet const a = requestedSources();
    excludeModeIs();
    sourceTimersAreZero( b - a );
    sourcesDel( a - b );
    groupTimerIsMembershipInterval();
}

/// INCLUDE (A+B): (B)=GMI
void
QuerierGroup::includeAllow( SourceSet const& b ) {
    sourceTimersAreMembershipInterval( b );
}

/// INCLUDE (A): Send Q(G,A*B)
void
QuerierGroup::includeBlock( SourceSet const& b ) {
    sendQuery( requestedSources() * b );
}

/// EXCLUDE (A*B,B-A): (B-A)=0, Delete (A-B), Send Q(G,A*B), Group Timer=GMI
void
QuerierGroup::includeToEx( SourceSet const& b ) {
    SourceSet const a = requestedSources();
    excludeModeIs();
    sourceTimersAreZero( b - a );
    sourcesDel( a - b );
    sendQuery( a * b );
    groupTimerIsMembershipInterval();
}

/// INCLUDE (A+B): (B)=GMI, Send Q(G,A-B)
void
QuerierGroup::includeToIn( SourceSet const& b ) {
    SourceSet const a = requestedSources();
    sourceTimersAreMembershipInterval( b );
    sendQuery( a - b );
}

} // namespace Lab
