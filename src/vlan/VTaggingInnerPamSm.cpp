#include "vlan/VTaggingInnerPamSm.h"

#include "vlan/Trace.h"
#include "vlan/VlanTaggingPam.h"

namespace Zornet {

VTaggingInnerPamSm::KivInnerPam::KivInnerPam( Kiv::Ptr<Pam const> const& pam, VTaggingInnerPamSm* sm )
    : Pam::NotifieeConst( pam ), vTaggingInnerPamSm_( sm ) {}

void
VTaggingInnerPamSm::KivInnerPam::onReadableCount() {
    if ( deliverable( Pam::attrReadableCount ) ) {
        vTaggingInnerPamSm_->handleInput();
    }
}

void
VTaggingInnerPamSm::KivInnerPam::notifierIs( Kiv::Ptr<Kiv::PtrInterface const> const& pam ) {
    bool const moves = pam && pam.get() != notifier();
    Pam::NotifieeConst::notifierIs( pam );
    if ( moves && !kivZombie() ) {
        vTaggingInnerPamSm_->handleInput();
    }
}

std::span<Kiv::Watch const>
VTaggingInnerPamSm::KivInnerPam::watches() const {
    static constexpr Kiv::Watch rows[] = { Kiv::watch<&KivInnerPam::onReadableCount>( Pam::attrReadableCount
    ) };
    return rows;
}

VTaggingInnerPamSm::VTaggingInnerPamSm(
    Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
    Kiv::Ptr<Pam const> const& innerPam
)
    : StateMachine( activity ), outerPam_( outerPam ) {
    if ( innerPam ) {
        innerPam_ = new KivInnerPam( innerPam, this );
        install( *innerPam_ );
        handleInput();
    }
}

VTaggingInnerPamSm::~VTaggingInnerPamSm() {
    if ( innerPam_ ) {
        innerPam_->kivDoZombieReactors( true );
    }
}

Kiv::Ptr<VTaggingInnerPamSm>
VTaggingInnerPamSm::VTaggingInnerPamSmIs(
    Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
    Kiv::Ptr<Pam const> const& innerPam
) {
    return Kiv::stateMachineIs<VTaggingInnerPamSm>( activity, outerPam, innerPam );
}

void
VTaggingInnerPamSm::forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) {
    if ( innerPam_ ) {
        visit( *innerPam_ );
    }
}

Kiv::Ptr<Pam const>
VTaggingInnerPamSm::innerPam() const {
    return innerPam_ ? innerPam_->notifier() : nullptr;
}

/// The reader may cut the pair while it is told: the outer object is held, and this one not touched after.
void
VTaggingInnerPamSm::handleInput() {
    KIV_TRACE( igmpTrace, traceCall ) << "VTaggingInnerPamSm::handleInput";
    Kiv::Ptr<VlanTaggingPam> const outerPam = outerPam_;
    outerPam->readableCountInc( 1 );
}

} // namespace Zornet
