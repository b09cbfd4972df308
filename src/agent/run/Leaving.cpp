#include "agent/run/Leaving.h"

#include <algorithm>

#include "engine/IgmpHostSm.h"
#include "platform/zornet/device/DeviceProvider.h"

namespace Agent {

namespace {

/// In each turn, so that devices send what the leaves of a great many hosts come to.
constexpr std::size_t hostsPerTurn = 100;

} // namespace

Leaving::Leaving( Emulation& emulation, Kiv::Ptr<Lumo::TimerWheel const> const& wheel )
    : emulation_( emulation ), timer_( new Lab::Timer( wheel, [this] { leaveSome(); } ) ) {
    for ( Igmp::IgmpHost const& host : emulation.hostDir().igmpHost() ) {
        hosts_.push_back( host.name() );
    }
}

bool
Leaving::run() {
    Kiv::ActivitySm& activity = Kiv::defaultActivity()->activitySm();
    leaveSome();
    bool const allTold = activity.runUntil( [this] { return isDone(); } );
    timer_->stop();
    return allTold;
}

void
Leaving::leaveSome() {
    std::size_t const end = std::min( left_ + hostsPerTurn, hosts_.size() );
    for ( ; left_ < end; ++left_ ) {
        if ( auto const host = emulation_.hostDir().igmpHost( hosts_[left_] ) ) {
            host->v3groupDelAll();
            owing_.push_back( hosts_[left_] );
        }
    }
    if ( left_ < hosts_.size() ) {
        timer_->remainingIs( 0.0 );
    }
}

/// A host that owes nothing has nothing to come, so none is asked again. What hosts have sent may still wait
/// in devices, for the turn's end or for room in a full queue.
bool
Leaving::isDone() {
    while ( !owing_.empty() && !owes( owing_.back() ) ) {
        owing_.pop_back();
    }
    return owing_.empty() && left_ == hosts_.size() && Zornet::deviceProvider().framesWaiting() == 0;
}

/// What is owed counts only where it will be sent: not at a host that has fallen back to an older version,
/// nor at one that may not send.
bool
Leaving::owes( Kiv::Name const& name ) const {
    Kiv::Ptr<Igmp::IgmpHostSm> const sm = emulation_.dirSm().igmpHostSm( name );
    if ( !sm || !sm->aggregatedSenderSm() || sm->igmpHost()->blocked() ||
         sm->igmpHost()->direction() == Bridging::AllowedTrafficDirection::ingress ||
         emulation_.statusDir().igmpHostStatus( name )->igmpVersion() != Igmp::igmpVersion3 ) {
        return false;
    }
    Igmp::IgmpV3HostAggregatedSenderSm const& sender = *sm->aggregatedSenderSm();
    if ( !Kiv::isFinite( sender.responseDelayRemaining() ) ) {
        return false;
    }
    for ( Igmp::IgmpV3HostGroupSm const& group : sender.v3GroupSm() ) {
        if ( group.isStateChanged() ) {
            return true;
        }
    }
    return false;
}

} // namespace Agent
