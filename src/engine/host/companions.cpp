#include "engine/Reinstantiation.h"
#include "engine/host/Reactors.h"

namespace Igmp {

IgmpHost*
IgmpHostSm::igmpHost() const {
    return igmpHost_->notifier();
}

IgmpHostStatus*
IgmpHostSm::igmpHostStatus() const {
    return igmpHostStatus_ ? igmpHostStatus_->notifier() : nullptr;
}

Zornet::Pam*
IgmpHostSm::rxPam() const {
    return rxPam_ ? rxPam_->notifier() : nullptr;
}

Lumo::TimerWheel::NotifieeConst*
IgmpHostSm::v1RouterPresentTimer() const {
    return v1RouterPresentTimer_.get();
}

Lumo::TimerWheel::NotifieeConst*
IgmpHostSm::v2RouterPresentTimer() const {
    return v2RouterPresentTimer_.get();
}

namespace {

/// Binds a reactor: made anew where there is none, moved to another notifier (which runs its handlers) where
/// there is one, and let go for a null notifier. A dropped reactor may still stand in a walk or wait for
/// delivery, so it is silenced.
template <class Reactor, class Make>
void
rebind( Ptr<Reactor>& reactor, Ptr<Kiv::PtrInterface const> const& notifier, Make make ) {
    if ( reactor && notifier ) {
        reactor->notifierIs( notifier );
    } else if ( reactor ) {
        Ptr<Reactor> const dropped = std::exchange( reactor, nullptr );
        dropped->kivDoZombieReactors( true );
        dropped->igmpHostSmDel();
    } else if ( notifier ) {
        reactor = make();
    }
}

} // namespace

void
IgmpHostSm::rxPamIs( Ptr<Zornet::Pam> const& pam ) {
    rebind( rxPam_, pam, [&] {
        Ptr<KivRxPam> const reactor( new KivRxPam( pam, this ) );
        install( *reactor );
        return reactor;
    } );
}

void
IgmpHostSm::igmpHostStatusIs( Ptr<IgmpHostStatus> const& status ) {
    rebind( igmpHostStatus_, status, [&] {
        Ptr<KivIgmpHostStatus> const reactor( new KivIgmpHostStatus( status, this ) );
        install( *reactor );
        return reactor;
    } );
}

void
IgmpHostSm::forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) {
    auto const visitOne = [&]( auto const& reactor ) {
        if ( reactor ) {
            visit( *reactor );
        }
    };
    visitOne( igmpHost_ );
    visitOne( rxPam_ );
    visitOne( igmpHostStatus_ );
    visitOne( v1RouterPresentTimer_ );
    visitOne( v2RouterPresentTimer_ );
}

void
IgmpHostSm::forEachChild( Kiv::FunctionRef<void( StateMachine& )> visit ) {
    auto const visitAll = [&]( auto const& children ) {
        for ( StateMachine& child : children ) {
            visit( child );
        }
    };
    visitAll( groupTimerSm_ );
    visitAll( v3GroupQueryTimerSm_ );
    visitAll( v3GroupCallbackSm_ );
}

Ptr<IgmpHostGroupTimerSm>
IgmpHostSm::newGroupTimerSm(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
    Ptr<Lumo::TimerWheel const> const& wheel
) {
    auto const timer = IgmpHostGroupTimerSm::IgmpHostGroupTimerSmIs( activity, group, wheel, this );
    groupTimerSm_.insert( timer );
    return timer;
}

Ptr<IgmpHostGroupTimerSm>
IgmpHostSm::groupTimerSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
    Ptr<Lumo::TimerWheel const> const& wheel
) {
    Ptr<IgmpHostGroupTimerSm> const present = groupTimerSm( group );
    if ( !present ) {
        return newGroupTimerSm( activity, group, wheel );
    }
    checkSameParameter( "timerWheel", wheel.get(), present->timerWheel().get() );
    return present;
}

namespace {

void
checkSameReportTimer(
    V3ReportTimerSm const& present, Ptr<Lumo::TimerWheel const> const& wheel, Ptr<IgmpHost> const& host,
    Ptr<IgmpHostStatus> const& status
) {
    checkSameParameter( "timerWheel", wheel.get(), present.timerWheel().get() );
    checkSameParameter( "igmpHost", host.get(), present.igmpHost().get() );
    checkSameParameter( "igmpHostStatus", status.get(), present.igmpHostStatus().get() );
}

} // namespace

Ptr<IgmpV3HostAggregatedSenderSm>
IgmpHostSm::aggregatedSenderSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& wheel,
    Ptr<IgmpHost> const& host, Ptr<IgmpHostStatus> const& status
) {
    if ( aggregatedSenderSm_ ) {
        checkSameReportTimer( *aggregatedSenderSm_, wheel, host, status );
    } else {
        aggregatedSenderSm_ = IgmpV3HostAggregatedSenderSm::IgmpV3HostAggregatedSenderSmIs(
            activity, wheel, host, status, this
        );
    }
    return aggregatedSenderSm_;
}

Ptr<IgmpV3HostGeneralQueryTimerSm>
IgmpHostSm::igmpV3HostGeneralQueryTimerSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& wheel,
    Ptr<IgmpHost> const& host, Ptr<IgmpHostStatus> const& status
) {
    if ( igmpV3HostGeneralQueryTimerSm_ ) {
        checkSameReportTimer( *igmpV3HostGeneralQueryTimerSm_, wheel, host, status );
    } else {
        igmpV3HostGeneralQueryTimerSm_ = IgmpV3HostGeneralQueryTimerSm::IgmpV3HostGeneralQueryTimerSmIs(
            activity, wheel, host, status, this
        );
    }
    return igmpV3HostGeneralQueryTimerSm_;
}

Ptr<IgmpV3HostGroupQueryTimerSm>
IgmpHostSm::v3GroupQueryTimerSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<Lumo::TimerWheel const> const& wheel,
    Zornet::IpAddr const& group, Ptr<IgmpHost> const& host, Ptr<IgmpHostStatus> const& status
) {
    if ( Ptr<IgmpV3HostGroupQueryTimerSm> const present = v3GroupQueryTimerSm( group ) ) {
        checkSameReportTimer( *present, wheel, host, status );
        return present;
    }
    auto const timer = IgmpV3HostGroupQueryTimerSm::IgmpV3HostGroupQueryTimerSmIs(
        activity, wheel, group, host, status, this
    );
    v3GroupQueryTimerSm_.insert( timer );
    return timer;
}

void
IgmpHostSm::v3GroupQueryTimerSmDel( Zornet::IpAddr const& group ) {
    v3GroupQueryTimerSm_.remove( group );
}

void
IgmpHostSm::v3GroupQueryTimerSmDelAll() {
    v3GroupQueryTimerSm_.clear();
}

Ptr<IgmpV3GroupCallbackSm>
IgmpHostSm::v3GroupCallbackSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Zornet::IpAddr const& group,
    Ptr<IgmpV3GroupRecord> const& record
) {
    if ( Ptr<IgmpV3GroupCallbackSm> const present = v3GroupCallbackSm( group ) ) {
        checkSameParameter( "groupRecord", record.get(), present->groupRecord() );
        return present;
    }
    auto const callback = IgmpV3GroupCallbackSm::IgmpV3GroupCallbackSmIs( activity, group, record, this );
    v3GroupCallbackSm_.insert( callback );
    return callback;
}

} // namespace Igmp
