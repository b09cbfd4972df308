#include "vlan/VlanPam.h"

#include <cstdlib>

#include "vlan/Trace.h"
#include "vlan/VlanPktMultiplexer.h"

namespace Zornet {

void
VlanPam::NotifieeConst::onAttribute( Kiv::AttributeId id ) {
    switch ( id ) {
    case attrInputPkt: onInputPkt(); break;
    case attrVlanId: onVlanId(); break;
    case attrInitialized: onInitialized(); break;
    default: break;
    }
}

VlanPam::VlanPam( Kiv::Name const& name, Kiv::Ptr<VlanPktMultiplexer> const& multiplexer )
    : Pam( name ), multiplexer_( multiplexer ) {
    handleInitialized();
}

VlanPam::~VlanPam() = default;

Kiv::Ptr<VlanPam>
VlanPam::VlanPamIs( Kiv::Name const& name, Kiv::Ptr<VlanPktMultiplexer> const& multiplexer ) {
    return new VlanPam( name, multiplexer );
}

Kiv::Ptr<VlanPam>
vlanPamFactory( Kiv::Name const& name, Kiv::Ptr<VlanPktMultiplexer> const& multiplexer ) {
    return VlanPam::VlanPamIs( name, multiplexer );
}

/// The name is taken as it comes: one that is no number gives 0, and of a larger number the low 16 bits
/// count.
void
VlanPam::handleInitialized() {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanPam::handleInitialized";
    vlanIdIs( static_cast<U16>( std::strtol( name().charPtr(), nullptr, 10 ) ) );
    initializedIs( true );
}

/// The signal goes out before the change of the attribute is told.
void
VlanPam::inputPktIs( Kiv::Ptr<Pkt> const& pkt ) {
    if ( pkt == inputPkt_ ) {
        return;
    }
    inputPkt_ = pkt;
    modificationCountInc();
    handleInput();
    notify<Reactor, Kiv::AttributeId>( attrInputPkt, &Reactor::onAttribute, attrInputPkt );
}

void
VlanPam::vlanIdIs( U16 vlanId ) {
    attributeIs( attrVlanId, vlanId_, vlanId );
}

void
VlanPam::initializedIs( bool value ) {
    attributeIs( attrInitialized, initialized_, value );
}

void
VlanPam::handleInput() {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanPam::handleInput";
    if ( initialized_ && inputPkt_ ) {
        readableCountInc( 1 );
    }
}

void
VlanPam::doGetRxPkt() {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanPam::doGetRxPkt for " << name();
    Kiv::Ptr<Pkt> const pkt = inputPkt_;
    inputPktIs( nullptr );
    if ( pkt ) {
        rxPktHolderIs( pkt );
    }
}

void
VlanPam::txPktIs( Kiv::Ptr<Pkt> const& pkt ) {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanPam::txPktIs";
    multiplexer_->handleTxPkt( Bridging::VlanId( vlanId_ ), pkt );
}

} // namespace Zornet
