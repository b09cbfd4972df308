#include "engine/IgmpHostDirSm.h"

#include "engine/KivIgmpHostDir.h"
#include "engine/Reinstantiation.h"
#include "engine/Trace.h"

namespace Igmp {

Ptr<IgmpHostDirSm>
IgmpHostDirSm::IgmpHostDirSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<IgmpHostDir> const& dir,
    Ptr<IgmpHostStatusDir> const& statusDir, Ptr<Lumo::TimerWheel const> const& timerWheel
) {
    return Kiv::stateMachineIs<IgmpHostDirSm>( activity, dir, statusDir, timerWheel );
}

Ptr<IgmpHostDirSm>
igmpHostDirSmFactory(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<IgmpHostDir> const& dir,
    Ptr<IgmpHostStatusDir> const& statusDir, Ptr<Lumo::TimerWheel const> const& timerWheel
) {
    return IgmpHostDirSm::IgmpHostDirSmIs( activity, dir, statusDir, timerWheel );
}

IgmpHostDirSm::IgmpHostDirSm(
    Ptr<Kiv::ActivityConfig> const& activity, Ptr<IgmpHostDir> const& dir,
    Ptr<IgmpHostStatusDir> const& statusDir, Ptr<Lumo::TimerWheel const> const& timerWheel
)
    : StateMachine( activity ), igmpHostStatusDir_( statusDir ), timerWheel_( timerWheel ) {
    if ( dir ) {
        igmpHostDir_ = new KivIgmpHostDir( dir, this );
        install( *igmpHostDir_ );
    }
    handleIgmpHostDir();
    handleInitialized();
}

/// The hosts' machines are not disabled on the way out: their devices go by reference.
IgmpHostDirSm::~IgmpHostDirSm() {
    kivDoZombieReactors( true );
    if ( igmpHostDir_ ) {
        igmpHostDir_->igmpHostDirSmDel();
    }
    igmpHostSmDelAll();
    multiplexerDirDelAll();
}

IgmpHostDir*
IgmpHostDirSm::igmpHostDir() const {
    return igmpHostDir_ ? igmpHostDir_->notifier() : nullptr;
}

void
IgmpHostDirSm::forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) {
    if ( igmpHostDir_ ) {
        visit( *igmpHostDir_ );
    }
}

void
IgmpHostDirSm::forEachChild( Kiv::FunctionRef<void( StateMachine& )> visit ) {
    for ( IgmpHostSm& sm : igmpHostSm_ ) {
        visit( sm );
    }
}

void
IgmpHostDirSm::handleInitialized() {
    initialized_ = true;
    handleIgmpHostDir();
}

void
IgmpHostDirSm::handleIgmpHostDir() {
    if ( !initialized_ ) {
        return;
    }
    Kiv::invariant( igmpHostSms() == 0, "igmpHostSms() == 0" );
    if ( !igmpHostDir() ) {
        return;
    }
    for ( auto at = igmpHostDir()->igmpHost().begin(); at; ++at ) {
        handleIgmpHostDir( at->name().string() );
    }
}

void
IgmpHostDirSm::handleIgmpHostDir( Kiv::String8 name ) {
    if ( !initialized_ ) {
        return;
    }
    Ptr<IgmpHost> const host = igmpHostDir() ? igmpHostDir()->igmpHost( name ) : nullptr;
    Ptr<IgmpHostSm> const sm = igmpHostSm( name );
    if ( host && !sm ) {
        KIV_TRACE( igmpHostTrace, 2 ) << " Creating IgmpHostSm for " << name;
        igmpHostSmIs( nullptr, name, host, timerWheel_, igmpHostStatusDir_ );
    } else if ( !host && sm ) {
        KIV_TRACE( igmpHostTrace, 2 ) << "Deleting IgmpHostSm for " << name;
        sm->doPrepareToDie();
        igmpHostSmDel( name );
    }
}

Ptr<IgmpHostSm>
IgmpHostDirSm::newIgmpHostSm(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
    Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir
) {
    Ptr<IgmpHostSm> const sm = IgmpHostSm::IgmpHostSmIs( activity, name, host, timerWheel, statusDir, this );
    igmpHostSm_.insert( sm );
    return sm;
}

Ptr<IgmpHostSm>
IgmpHostDirSm::igmpHostSmIs(
    Ptr<Kiv::ActivityConfig> const& activity, Kiv::Name const& name, Ptr<IgmpHost> const& host,
    Ptr<Lumo::TimerWheel const> const& timerWheel, Ptr<IgmpHostStatusDir> const& statusDir
) {
    Ptr<IgmpHostSm> const present = igmpHostSm( name );
    if ( !present ) {
        return newIgmpHostSm( activity, name, host, timerWheel, statusDir );
    }
    if ( activity != present->kivFwkActivity() ) {
        present->kivFwkActivityIs( activity );
    }
    checkSameParameter( "igmpHost", host.get(), present->igmpHost() );
    checkSameParameter( "timerWheel", timerWheel.get(), present->timerWheel().get() );
    checkSameParameter( "igmpHostStatusDir", statusDir.get(), present->igmpHostStatusDir().get() );
    return present;
}

} // namespace Igmp
