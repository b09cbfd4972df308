#include "agent/checking/FirstReports.h"

#include <algorithm>

#include "agent/scenario/warnings/FrameSizes.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;

bool
isSilent( HostSpec const& spec ) {
    auto const& settings = spec.settings;
    bool const disabled =
        settings.find( IgmpHost::attrEnabled ) && !settings.value<bool>( IgmpHost::attrEnabled );
    bool const unbound = settings.find( IgmpHost::attrIntfConfigVersion ) &&
                         settings.value<U32>( IgmpHost::attrIntfConfigVersion ) == 0;
    bool const deaf = !settings.value<bool>( IgmpHost::attrProcessV3GroupChange );
    auto const direction = settings.value<Bridging::AllowedTrafficDirection>( IgmpHost::attrDirection );
    return spec.later || disabled || unbound || deaf || settings.value<bool>( IgmpHost::attrBlocked ) ||
           direction == Bridging::AllowedTrafficDirection::ingress ||
           settings.value<Kiv::String8>( IgmpHost::attrDeviceName ).empty();
}

/// Of one entry of groups, copies of a template included.
U64
joinedGroups( GroupSpec const& group ) {
    auto const mode =
        group.settings.value<IgmpV3GroupRecord::FilterMode>( IgmpV3GroupRecord::attrFilterMode );
    if ( mode != IgmpV3GroupRecord::exclude && group.sources.empty() ) {
        return 0;
    }
    U64 const copies =
        group.settings.value<bool>( IgmpV3GroupRecord::attrReplicate )
            ? std::max( 1U, group.settings.value<U32>( IgmpV3GroupRecord::attrReplicateNumber ) )
            : 1;
    return group.groups.count() * copies;
}

/// Fills reports with records, one kind after the other.
class ReportFilling {
  public:
    explicit ReportFilling( U64 room ) : room_( room ) {}

    void add( U64 records, U64 bytes ) {
        U64 const perReport = std::max<U64>( 1, room_ / bytes );
        U64 const here = std::min( records, left_ / bytes );
        left_ -= here * bytes;
        if ( U64 const more = records - here; more != 0 ) {
            U64 const reports = ( more + perReport - 1 ) / perReport;
            reports_ += reports;
            U64 const used = ( more - ( reports - 1 ) * perReport ) * bytes;
            left_ = room_ - std::min( room_, used );
        }
    }
    U64 reports() const { return reports_; }

  private:
    U64 room_;
    U64 left_ = 0; ///< in the last report
    U64 reports_ = 0;
};

} // namespace

U64
firstReports( HostSpec const& spec ) {
    if ( isSilent( spec ) ) {
        return 0;
    }
    bool const is3 =
        spec.settings.value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion ) == Igmp::igmpVersion3;
    U64 const mtu = spec.settings.value<U32>( IgmpHost::attrMtu );
    ReportFilling filling( mtu - std::min<U64>( mtu, headerBytes( spec ) ) );
    U64 groups = 0;
    for ( GroupSpec const& group : spec.groups ) {
        U64 const joined = joinedGroups( group );
        groups += joined;
        filling.add( joined, recordBytes( group.sources.count() ) );
    }
    return is3 ? filling.reports() : groups;
}

} // namespace Agent
