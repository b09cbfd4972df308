#include "engine/host/Reactors.h"

#include "platform/kiv/Attribute.h"

namespace Igmp {

namespace {

/// Runs a handler of a machine that is held meanwhile: whoever is told of what it does may remove its host.
void
runHeld( IgmpHostSm* sm, void ( IgmpHostSm::*handler )() ) {
    Ptr<IgmpHostSm> const held( sm );
    ( sm->*handler )();
}

} // namespace

IgmpHostSm::KivIgmpHost::KivIgmpHost( Ptr<IgmpHost> const& host, IgmpHostSm* sm )
    : Notifiee( host ), sm_( sm ) {}

void
IgmpHostSm::KivIgmpHost::run( std::initializer_list<void ( IgmpHostSm::* )()> handlers ) {
    for ( auto const handler : handlers ) {
        if ( kivZombie() || !sm_ ) {
            return;
        }
        runHeld( sm_, handler );
    }
}

void
IgmpHostSm::KivIgmpHost::deliver( AttributeId id, std::initializer_list<void ( IgmpHostSm::* )()> handlers ) {
    if ( deliverable( id ) ) {
        run( handlers );
    }
}

void
IgmpHostSm::KivIgmpHost::notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) {
    bool const differs = notifier.get() != notifierObject();
    Notifiee::notifierIs( notifier );
    if ( differs && notifier ) {
        run( { &IgmpHostSm::handleIntfConfig, &IgmpHostSm::changeIgmpVersion,
               &IgmpHostSm::setUnsolicitedReportIntvl, &IgmpHostSm::handleEnablePeriodicReport,
               &IgmpHostSm::handleEnabled, &IgmpHostSm::handleV3Group, &IgmpHostSm::handleIgmpVersion,
               &IgmpHostSm::pktInitialize } );
    }
}

void
IgmpHostSm::KivIgmpHost::onConfigVersion() {
    deliver( IgmpHost::attrConfigVersion, { &IgmpHostSm::pktInitialize } );
}

void
IgmpHostSm::KivIgmpHost::onIntfConfigVersion() {
    deliver( IgmpHost::attrIntfConfigVersion, { &IgmpHostSm::handleIntfConfig, &IgmpHostSm::pktInitialize } );
}

void
IgmpHostSm::KivIgmpHost::onExternalPam() {
    deliver( IgmpHost::attrExternalPam, { &IgmpHostSm::handleIntfConfig } );
}

void
IgmpHostSm::KivIgmpHost::onPam() {
    deliver( IgmpHost::attrPam, { &IgmpHostSm::handleIntfConfig } );
}

void
IgmpHostSm::KivIgmpHost::onEnabled() {
    deliver( IgmpHost::attrEnabled, { &IgmpHostSm::handleEnabled } );
}

void
IgmpHostSm::KivIgmpHost::onIgmpVersion() {
    deliver( IgmpHost::attrIgmpVersion, { &IgmpHostSm::changeIgmpVersion, &IgmpHostSm::handleIgmpVersion } );
}

void
IgmpHostSm::KivIgmpHost::onIgmpVersionForced() {
    deliver( IgmpHost::attrIgmpVersionForced, { &IgmpHostSm::handleIgmpVersion } );
}

void
IgmpHostSm::KivIgmpHost::onProcessV3GroupChange() {
    deliver( IgmpHost::attrProcessV3GroupChange, { &IgmpHostSm::handleV3Group } );
}

void
IgmpHostSm::KivIgmpHost::onV3group( Zornet::IpAddr group ) {
    U8* const keyCount = pendingGroup_.store( group, pendingKeyCount_ );
    if ( !kivOnAttribute( IgmpHost::attrV3group, keyCount ) && !kivZombie() && sm_ ) {
        Ptr<IgmpHostSm> const held( sm_ );
        held->handleV3Group( group );
    }
}

void
IgmpHostSm::KivIgmpHost::onV3group() {
    deliver( IgmpHost::attrV3group, { &IgmpHostSm::handleV3Group } );
}

void
IgmpHostSm::KivIgmpHost::onUnsolicitedReportInterval() {
    deliver( IgmpHost::attrUnsolicitedReportInterval, { &IgmpHostSm::setUnsolicitedReportIntvl } );
}

void
IgmpHostSm::KivIgmpHost::onEnablePeriodicReport() {
    deliver( IgmpHost::attrEnablePeriodicReport, { &IgmpHostSm::handleEnablePeriodicReport } );
}

std::span<Kiv::Watch const>
IgmpHostSm::KivIgmpHost::watches() const {
    using Reactor = KivIgmpHost;
    static constexpr Kiv::Watch rows[] = {
        Kiv::watch<&Reactor::onConfigVersion>( IgmpHost::attrConfigVersion ),
        Kiv::watch<&Reactor::onIntfConfigVersion>( IgmpHost::attrIntfConfigVersion ),
        Kiv::watch<&Reactor::onExternalPam>( IgmpHost::attrExternalPam ),
        Kiv::watch<&Reactor::onPam>( IgmpHost::attrPam ),
        Kiv::watch<&Reactor::onEnabled>( IgmpHost::attrEnabled ),
        Kiv::watch<&Reactor::onIgmpVersion>( IgmpHost::attrIgmpVersion ),
        Kiv::watch<&Reactor::onIgmpVersionForced>( IgmpHost::attrIgmpVersionForced ),
        Kiv::watch<&Reactor::onProcessV3GroupChange>( IgmpHost::attrProcessV3GroupChange ),
        { IgmpHost::attrV3group,
          []( PtrInterface::NotifieeConst& reactor ) { static_cast<Reactor&>( reactor ).onV3group(); },
          []( PtrInterface::NotifieeConst& reactor ) {
              auto& self = static_cast<Reactor&>( reactor );
              self.onV3group( self.pendingGroup_.pendingKey() );
          } },
        Kiv::watch<&Reactor::onUnsolicitedReportInterval>( IgmpHost::attrUnsolicitedReportInterval ),
        Kiv::watch<&Reactor::onEnablePeriodicReport>( IgmpHost::attrEnablePeriodicReport ),
    };
    return rows;
}

IgmpHostSm::KivIgmpHostStatus::KivIgmpHostStatus( Ptr<IgmpHostStatus> const& status, IgmpHostSm* sm )
    : Notifiee( status ), sm_( sm ) {}

void
IgmpHostSm::KivIgmpHostStatus::notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) {
    bool const differs = notifier.get() != notifierObject();
    Notifiee::notifierIs( notifier );
    if ( differs && notifier && !kivZombie() && sm_ ) {
        runHeld( sm_, &IgmpHostSm::handleContinueUnsolicitedReport );
    }
    if ( differs && notifier && !kivZombie() && sm_ ) {
        runHeld( sm_, &IgmpHostSm::setIntervalValue );
    }
}

void
IgmpHostSm::KivIgmpHostStatus::onIgmpVersion() {
    if ( deliverable( IgmpHostStatus::attrIgmpVersion ) && sm_ ) {
        runHeld( sm_, &IgmpHostSm::setIntervalValue );
    }
}

void
IgmpHostSm::KivIgmpHostStatus::onContinueUnsolicitedReport() {
    if ( deliverable( IgmpHostStatus::attrContinueUnsolicitedReport ) && sm_ ) {
        runHeld( sm_, &IgmpHostSm::handleContinueUnsolicitedReport );
    }
}

std::span<Kiv::Watch const>
IgmpHostSm::KivIgmpHostStatus::watches() const {
    static constexpr Kiv::Watch rows[] = {
        Kiv::watch<&KivIgmpHostStatus::onIgmpVersion>( IgmpHostStatus::attrIgmpVersion ),
        Kiv::watch<&KivIgmpHostStatus::onContinueUnsolicitedReport>(
            IgmpHostStatus::attrContinueUnsolicitedReport
        ),
    };
    return rows;
}

IgmpHostSm::KivRxPam::KivRxPam( Ptr<Zornet::Pam> const& pam, IgmpHostSm* sm ) : Notifiee( pam ), sm_( sm ) {}

void
IgmpHostSm::KivRxPam::notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) {
    bool const differs = notifier.get() != notifierObject();
    Notifiee::notifierIs( notifier );
    if ( differs && notifier && !kivZombie() && sm_ ) {
        runHeld( sm_, &IgmpHostSm::handlePamReadable );
    }
}

void
IgmpHostSm::KivRxPam::onReadableCount() {
    if ( deliverable( Zornet::Pam::attrReadableCount ) && sm_ ) {
        runHeld( sm_, &IgmpHostSm::handlePamReadable );
    }
}

std::span<Kiv::Watch const>
IgmpHostSm::KivRxPam::watches() const {
    static constexpr Kiv::Watch rows[] = {
        Kiv::watch<&KivRxPam::onReadableCount>( Zornet::Pam::attrReadableCount )
    };
    return rows;
}

RouterPresentTimer::RouterPresentTimer(
    Ptr<Lumo::TimerWheel const> const& wheel, IgmpHostSm* sm, Handler handler
)
    : NotifieeConst( wheel ), sm_( sm ), handler_( handler ) {}

void
RouterPresentTimer::notifierIs( Ptr<Kiv::PtrInterface const> const& notifier ) {
    bool const differs = notifier.get() != notifierObject();
    NotifieeConst::notifierIs( notifier );
    if ( differs && notifier && !kivZombie() && sm_ ) {
        runHeld( sm_, handler_ );
    }
}

void
RouterPresentTimer::onTime() {
    if ( deliverable( Kiv::attrTime ) && sm_ ) {
        runHeld( sm_, handler_ );
    }
}

std::span<Kiv::Watch const>
RouterPresentTimer::watches() const {
    static constexpr Kiv::Watch rows[] = { Kiv::watch<&RouterPresentTimer::onTime>( Kiv::attrTime ) };
    return rows;
}

IgmpHostSm::KivV1RouterPresentTimer::KivV1RouterPresentTimer(
    Ptr<Lumo::TimerWheel const> const& wheel, IgmpHostSm* sm
)
    : RouterPresentTimer( wheel, sm, &IgmpHostSm::handleV1RouterPresentTimer ) {}

IgmpHostSm::KivV2RouterPresentTimer::KivV2RouterPresentTimer(
    Ptr<Lumo::TimerWheel const> const& wheel, IgmpHostSm* sm
)
    : RouterPresentTimer( wheel, sm, &IgmpHostSm::handleV2RouterPresentTimer ) {}

} // namespace Igmp
