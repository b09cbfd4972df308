#include "engine/RandomDelay.h"
#include "engine/Trace.h"
#include "engine/host/Reactors.h"

namespace Igmp {

Ptr<IgmpHostSm>
IgmpHostSm::IgmpHostSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
    Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir,
    IgmpHostDirSm* dirSm
) {
    return Kiv::stateMachineIs<IgmpHostSm>( activity, name, host, timerWheel, statusDir, dirSm );
}

Ptr<IgmpHostSm>
igmpHostSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
    Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir,
    IgmpHostDirSm* dirSm
) {
    return IgmpHostSm::IgmpHostSmIs( activity, name, host, timerWheel, statusDir, dirSm );
}

/// Everything before handleInitialized() finds the machine uninitialized and does nothing but bind.
IgmpHostSm::IgmpHostSm(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
    Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir,
    IgmpHostDirSm* dirSm
)
    : StateMachine( activity ),
      name_( name ),
      timerWheel_( timerWheel ),
      igmpHostStatusDir_( statusDir ),
      igmpHostDirSm_( dirSm ) {
    if ( host ) {
        igmpHost_ = new KivIgmpHost( host, this );
        install( *igmpHost_ );
    }
    handleEnabled();
    setIntervalValue();
    v1RouterPresentTimer_ = new KivV1RouterPresentTimer( timerWheel, this );
    install( *v1RouterPresentTimer_ );
    handleV1RouterPresentTimer();
    v2RouterPresentTimer_ = new KivV2RouterPresentTimer( timerWheel, this );
    install( *v2RouterPresentTimer_ );
    handleV2RouterPresentTimer();
    handleInitialized();
}

IgmpHostSm::~IgmpHostSm() {
    kivDoZombieReactors( true );
    auto const detach = []( auto const& reactor ) {
        if ( reactor ) {
            reactor->igmpHostSmDel();
        }
    };
    detach( igmpHost_ );
    detach( rxPam_ );
    detach( igmpHostStatus_ );
    detach( v1RouterPresentTimer_ );
    detach( v2RouterPresentTimer_ );
    groupTimerSmDelAll();
    aggregatedSenderSmDel();
    igmpV3HostGeneralQueryTimerSmDel();
    v3GroupQueryTimerSmDelAll();
    v3GroupCallbackSmDelAll();
    cutTaggingPam();
}

void
IgmpHostSm::handleInitialized() {
    initialized_ = true;
    seedRandomDelays();
    handleEnabled();
}

void
IgmpHostSm::handleEnabled() {
    if ( initialized_ ) {
        handleEnabled( igmpHost()->enabled() );
    }
}

/// The present state is not asked: a call with the value in force runs the whole sequence again.
void
IgmpHostSm::handleEnabled( bool value ) {
    if ( !initialized_ ) {
        return;
    }
    KIV_TRACE( igmpHostTrace, 0 ) << "IgmpHost " << name_ << ( value ? " enabled" : " disabled" )
                                  << ", version is: " << igmpHost()->igmpVersion();
    if ( value ) {
        enableSequence();
    } else {
        disableSequence();
    }
}

/// Templates come before the binding and the binding before the groups, so that the first report finds both.
void
IgmpHostSm::enableSequence() {
    Ptr<IgmpHostStatus> status = igmpHostStatusDir_->igmpHostStatus( name_ );
    if ( !status ) {
        status = igmpHostStatusDir_->igmpHostStatusIs( name_ );
    }
    igmpHostStatusIs( status );
    pktInitialize();
    aggregatedSenderSmIs( nullptr, timerWheel_, igmpHost(), status );
    igmpV3HostGeneralQueryTimerSmIs( nullptr, timerWheel_, igmpHost(), status );
    enabled_ = true;
    handleIntfConfig();
    handleEnablePeriodicReport();
    handleIgmpVersion();
    handleV3Group();
}

/// Every timer is set to infinity before its machine goes, so nothing fires on the way out. The group
/// callbacks stay, on purpose: the next enable finds them. Nothing is sent.
void
IgmpHostSm::disableSequence() {
    for ( IgmpHostGroupTimerSm& timer : groupTimerSm_ ) {
        timer.doSetTimer( Kiv::never );
    }
    groupTimerSmDelAll();
    if ( v1RouterPresentTimer_ ) {
        v1RouterPresentTimer_->timeMinIs( Kiv::never );
    }
    if ( v2RouterPresentTimer_ ) {
        v2RouterPresentTimer_->timeMinIs( Kiv::never );
    }
    if ( aggregatedSenderSm_ ) {
        aggregatedSenderSm_->doSetTimer( Kiv::never );
        aggregatedSenderSmDel();
    }
    if ( igmpV3HostGeneralQueryTimerSm_ ) {
        igmpV3HostGeneralQueryTimerSm_->doSetTimer( Kiv::never );
        igmpV3HostGeneralQueryTimerSmDel();
    }
    for ( IgmpV3HostGroupQueryTimerSm& timer : v3GroupQueryTimerSm_ ) {
        timer.doSetTimer( Kiv::never );
    }
    v3GroupQueryTimerSmDelAll();
    igmpHostStatusIs( nullptr );
    igmpHostStatusDir_->igmpHostStatusDel( name_ );
    enabled_ = false;
    handleIntfConfig();
}

void
IgmpHostSm::doPrepareToDie() {
    KIV_TRACE( igmpHostTrace, 8 ) << " host " << name_;
    handleEnabled( false );
}

} // namespace Igmp
