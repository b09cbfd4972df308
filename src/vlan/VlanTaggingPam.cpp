#include "vlan/VlanTaggingPam.h"

#include <utility>

#include "vlan/Trace.h"

namespace Zornet {

void
VlanTaggingPam::NotifieeConst::onAttribute( Kiv::AttributeId id ) {
    switch ( id ) {
    case attrSm: onSm(); break;
    case attrInitialized: onInitialized(); break;
    default: break;
    }
}

/// The start-up hands this object out while nobody holds it, so it holds itself until that is over.
VlanTaggingPam::VlanTaggingPam( Kiv::Name const& name, U16 vlanId, Kiv::Ptr<Pam> const& innerPam )
    : Pam( name ), vlanId_( vlanId ), innerPam_( innerPam ) {
    referencesInc();
    handleInitialized();
    referencesRelease();
}

VlanTaggingPam::~VlanTaggingPam() = default;

void
VlanTaggingPam::handleInitialized() {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanTaggingPam::handleInitialized";
    if ( initialized_ ) {
        return;
    }
    smIs( nullptr, this, innerPam_ );
    initializedIs( true );
}

Kiv::Ptr<VTaggingInnerPamSm>
VlanTaggingPam::smIs(
    Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
    Kiv::Ptr<Pam> const& innerPam
) {
    bool const present = sm_ && sm_->kivFwkActivity() == activity && sm_->outerPam() == outerPam &&
                         sm_->innerPam().get() == innerPam.get();
    return present ? sm_ : newSm( activity, outerPam, innerPam );
}

Kiv::Ptr<VTaggingInnerPamSm>
VlanTaggingPam::newSm(
    Kiv::Ptr<Kiv::ActivityConfig> const& activity, Kiv::Ptr<VlanTaggingPam> const& outerPam,
    Kiv::Ptr<Pam> const& innerPam
) {
    sm_ = VTaggingInnerPamSm::VTaggingInnerPamSmIs( activity, outerPam, innerPam );
    tellOf( attrSm );
    return sm_;
}

void
VlanTaggingPam::smDel() {
    if ( Kiv::Ptr<VTaggingInnerPamSm> const sm = std::exchange( sm_, nullptr ) ) {
        tellOf( attrSm );
    }
}

void
VlanTaggingPam::initializedIs( bool value ) {
    attributeIs( attrInitialized, initialized_, value );
}

void
VlanTaggingPam::doGetRxPkt() {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanTaggingPam::doGetRxPkt";
    if ( !initialized_ ) {
        return;
    }
    Kiv::Ptr<Pkt> pkt = innerPam_->rxPkt();
    if ( pkt && vlanIdFromEthPkt( pkt ) == vlanId_ ) {
        stripPktVlanTag( pkt );
    } else {
        pkt = nullptr;
    }
    rxPktHolderIs( pkt );
}

void
VlanTaggingPam::txPktIs( Kiv::Ptr<Pkt> const& pkt ) {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanTaggingPam::txPktIs for vlan " << vlanId_;
    Kiv::Ptr<Pkt> tagged = pkt;
    addPktVlanTag( tagged, vlanId_ );
    innerPam_->txPktIs( tagged );
}

} // namespace Zornet
