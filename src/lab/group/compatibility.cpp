#include "lab/QuerierGroup.h"

// RFC 3376 section 7.3.2: what hosts of older versions say stands for a record of version 3, and while such
// hosts are there, what hosts of later versions say and those cannot know is passed over.

namespace Lab {

using Record = Zornet::IgmpV3GroupRecordType;

U8
QuerierGroup::compatibilityVersion() const {
    return isAhead( v1HostsUntil_ ) ? 1 : isAhead( v2HostsUntil_ ) ? 2 : 3;
}

void
QuerierGroup::handleV1Report( IpAddr const& reporter ) {
    v1HostsUntil_ = Kiv::now() + config().olderHostPresentInterval();
    handleRecord( Record::MODE_IS_EXCLUDE, {}, reporter );
}

void
QuerierGroup::handleV2Report( IpAddr const& reporter ) {
    v2HostsUntil_ = Kiv::now() + config().olderHostPresentInterval();
    handleRecord( Record::MODE_IS_EXCLUDE, {}, reporter );
}

void
QuerierGroup::handleV2Leave() {
    if ( compatibilityVersion() > 1 ) {
        apply( Record::CHANGE_TO_INCLUDE_MODE, {} );
    }
}

void
QuerierGroup::handleRecord( Record type, SourceSet const& sources, IpAddr const& reporter ) {
    U8 const version = compatibilityVersion();
    lastReporter_ = reporter;
    if ( version < 3 && type == Record::BLOCK_OLD_SOURCES ) {
        return;
    }
    if ( version < 2 && type == Record::CHANGE_TO_INCLUDE_MODE ) {
        return;
    }
    bool const anySource = version < 3 && type == Record::CHANGE_TO_EXCLUDE_MODE;
    apply( type, anySource ? SourceSet() : sources );
}

} // namespace Lab
