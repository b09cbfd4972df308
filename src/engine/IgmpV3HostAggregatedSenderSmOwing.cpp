/// Which groups a report has to ask: those that owe something, so that a change of one group costs the same
/// whatever the number of the others.

#include <algorithm>

#include "engine/IgmpV3HostAggregatedSenderSm.h"
#include "engine/Trace.h"

namespace Igmp {

using V3GroupSms = IgmpV3HostAggregatedSenderSm::V3GroupSms;

namespace {

using Places = std::vector<Kiv::WalkPlace<Zornet::IpAddr>>;

/// Mostly one group owes something, and it was the last one asked.
Places::iterator
firstAfter( Places& places, Zornet::IpAddr const& group ) {
    if ( places.empty() || places.back().key == group ) {
        return places.end();
    }
    return std::upper_bound( places.begin(), places.end(), Kiv::WalkPlace( group ) );
}

} // namespace

bool
IgmpV3HostAggregatedSenderSm::knowsOwing() const {
    return !owesFromFallback_ && igmpHost()->v3group().generation() == seenGeneration_;
}

void
IgmpV3HostAggregatedSenderSm::noteOwing( IgmpV3HostGroupSm& groupSm ) {
    if ( owesFromFallback_ || groupSm.owingNoted() ) {
        return;
    }
    if ( !isVersion3() ) {
        owesFromFallback_ = true;
    } else if ( groupSm.isOwing() ) {
        addOwing( groupSm );
    }
}

void
IgmpV3HostAggregatedSenderSm::addOwing( IgmpV3HostGroupSm& groupSm ) {
    if ( v3GroupSm_.find( groupSm.group() ) == &groupSm ) {
        groupSm.owingNotedIs( true );
        owing_.emplace_back( groupSm.group() );
    }
}

/// One change since the last look is this group's if a group has gone and this one was there before, and
/// matters to nobody if a group has come. Whatever else has happened unheard, the next report finds it by
/// looking through all.
void
IgmpV3HostAggregatedSenderSm::noteConfigured( Zornet::IpAddr const& group ) {
    IgmpHost::V3groups const& configured = igmpHost()->v3group();
    if ( owesFromFallback_ || configured.generation() != seenGeneration_ + 1 ) {
        return;
    }
    IgmpV3HostGroupSm* const groupSm = v3GroupSm_.find( group );
    bool const isGone = !configured.find( group );
    if ( configured.size() < seenGroups_ && ( !groupSm || !isGone || groupSm->leaveNoted() ) ) {
        return;
    }
    configurationSeen();
    if ( groupSm ) {
        groupSm->leaveNotedIs( isGone );
        noteOwing( *groupSm );
    }
}

void
IgmpV3HostAggregatedSenderSm::configurationSeen() {
    seenGeneration_ = igmpHost()->v3group().generation();
    seenGroups_ = igmpHost()->v3groups();
}

void
IgmpV3HostAggregatedSenderSm::collectOwing() {
    for ( IgmpV3HostGroupSm& groupSm : v3GroupSm_ ) {
        groupSm.leaveNotedIs( !igmpHost()->v3group( groupSm.group() ) );
        if ( !groupSm.owingNoted() && groupSm.isOwing() ) {
            addOwing( groupSm );
        }
    }
    owesFromFallback_ = false;
    configurationSeen();
}

void
IgmpV3HostAggregatedSenderSm::sortOwing() {
    if ( owingInOrder_ == owing_.size() ) {
        return;
    }
    auto const fresh = owing_.begin() + static_cast<std::ptrdiff_t>( owingInOrder_ );
    std::sort( fresh, owing_.end() );
    if ( fresh != owing_.begin() && *fresh < fresh[-1] ) {
        std::inplace_merge( owing_.begin(), fresh, owing_.end() );
    }
    owingInOrder_ = owing_.size();
}

/// Takes out those that were asked and owe nothing any more. A report asks from the first on.
void
IgmpV3HostAggregatedSenderSm::settleOwing( Zornet::IpAddr const& lastAsked ) {
    if ( owing_.empty() ) {
        return;
    }
    sortOwing();
    auto const notAsked = firstAfter( owing_, lastAsked );
    auto const settled = std::remove_if( owing_.begin(), notAsked, [this]( auto const& place ) {
        IgmpV3HostGroupSm* const groupSm = v3GroupSm_.find( place.key );
        bool const owes = groupSm && groupSm->isOwing();
        if ( groupSm ) {
            groupSm->owingNotedIs( owes );
        }
        return !owes;
    } );
    owing_.erase( settled, notAsked );
    owingInOrder_ = owing_.size();
    constexpr std::size_t worthKeeping = 16;
    if ( owing_.empty() && owing_.capacity() > worthKeeping ) {
        owing_.shrink_to_fit();
    }
}

/// Periodic reports hold the state of every group. And a trace of the details has a line for each.
bool
IgmpV3HostAggregatedSenderSm::asksEveryGroup() const {
    return igmpHostStatus()->continueUnsolicitedReport() || igmpHostTrace.on( traceDetail );
}

V3GroupSms::Iterator
IgmpV3HostAggregatedSenderSm::firstAsked() {
    if ( asksEveryGroup() ) {
        return v3GroupSm_.begin();
    }
    sortOwing();
    return owing_.empty() ? V3GroupSms::Iterator() : v3GroupSm_.startAtHash( owing_.front().key );
}

V3GroupSms::Iterator
IgmpV3HostAggregatedSenderSm::askedAfter( V3GroupSms::Iterator at ) {
    if ( asksEveryGroup() ) {
        return ++at;
    }
    sortOwing();
    auto const next = firstAfter( owing_, at->group() );
    return next == owing_.end() ? V3GroupSms::Iterator() : v3GroupSm_.startAtHash( next->key );
}

} // namespace Igmp
