#include "agent/scenario/warnings/GroupDigest.h"

#include <algorithm>

#include "agent/scenario/warnings/FrameSizes.h"

namespace Agent {

using Igmp::IgmpV3GroupRecord;

namespace {

bool
isExclude( GroupSpec const& group ) {
    return group.settings.value<IgmpV3GroupRecord::FilterMode>( IgmpV3GroupRecord::attrFilterMode ) ==
           IgmpV3GroupRecord::exclude;
}

GroupDigest
digestOf( GroupSpec const& group ) {
    GroupDigest digest;
    digest.count = group.groups.count();
    digest.recordBytes = digest.count * recordBytes( group.sources.count() );
    digest.excludes = isExclude( group );
    digest.longest = &group;
    digest.lowest = group.groups.lowest();
    digest.highest = group.groups.highest();
    return digest;
}

} // namespace

GroupDigest::GroupDigest( std::vector<GroupSpec> const& groups ) {
    for ( GroupSpec const& group : groups ) {
        *this += digestOf( group );
    }
}

GroupDigest&
GroupDigest::operator+=( GroupDigest const& other ) {
    count += other.count;
    recordBytes += other.recordBytes;
    excludes = excludes || other.excludes;
    bool const isLonger =
        other.longest && ( !longest || other.longest->sources.count() > longest->sources.count() );
    longest = isLonger ? other.longest : longest;
    lowest = std::min( lowest, other.lowest );
    highest = std::max( highest, other.highest );
    return *this;
}

} // namespace Agent
