#include "vlan/VlanPamMultiplexer.h"

#include "vlan/Trace.h"
#include "vlan/VlanTag.h"

namespace Zornet {

VlanPamMultiplexer::VlanPamMultiplexer( Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf )
    : VlanPktMultiplexer( activity, intf ) {}

VlanPamMultiplexer::~VlanPamMultiplexer() = default;

Kiv::Ptr<VlanPamMultiplexer>
VlanPamMultiplexer::VlanPamMultiplexerIs(
    Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf
) {
    return Kiv::stateMachineIs<VlanPamMultiplexer>( activity, intf );
}

Kiv::Ptr<VlanPam>
VlanPamMultiplexer::vlanPam( U16 vlanId ) const {
    KivVlanPam const* const member = vlanPam_.find( { vlanId } );
    return member ? member->vlanPam() : nullptr;
}

void
VlanPamMultiplexer::vlanPamIs( Kiv::Ptr<VlanPam> const& pam ) {
    if ( !pam ) { // the stray quote at the end of the text is part of it
        Kiv::throwRangeException(
            "null _vlanPam parameter to mutator for Zornet::VlanPamMultiplexer::vlanPam not allowed\""
        );
    }
    VlanKey const key{ pam->vlanId() };
    Kiv::Ptr<KivVlanPam> member( vlanPam_.find( key ) );
    if ( !member ) {
        member = new KivVlanPam( key );
        vlanPam_.insert( member );
    }
    member->vlanPamIs( pam );
}

void
VlanPamMultiplexer::vlanPamDel( U16 vlanId ) {
    vlanPam_.remove( { vlanId } );
}

void
VlanPamMultiplexer::vlanPamDel( VlanPams::Iterator const& at ) {
    vlanPamDel( at->fwkKey().vlanId );
}

void
VlanPamMultiplexer::vlanPamDelAll() {
    Kiv::Ptr<VlanPamMultiplexer> const self( this ); // the channels may be all that holds it
    vlanPam_.clear();
}

void
VlanPamMultiplexer::handleRxPkt() {
    KIV_TRACE( igmpTrace, traceCall ) << "VlanPamMultiplexer::handleRxPkt on " << intf();
    Kiv::Ptr<Pkt> pkt = innerPam()->rxPkt();
    if ( !pkt ) {
        return;
    }
    U16 const vlanId = vlanIdFromEthPkt( pkt );
    if ( vlanId == 0 ) {
        KIV_TRACE( igmpTrace, traceSkip ) << "Skip untagged pkt on this channel.";
        return;
    }
    Kiv::Ptr<VlanPam> const channel = vlanPam( vlanId );
    if ( !channel ) {
        KIV_TRACE( igmpTrace, traceFrame ) << "Ignoring pkt for vlan " << vlanId << " on " << intf();
        return;
    }
    stripPktVlanTag( pkt );
    KIV_TRACE( igmpTrace, traceFrame ) << "Delivering pkt for vlan " << vlanId;
    channel->inputPktIs( pkt );
}

void
VlanPamMultiplexer::handleTxPkt( Bridging::VlanId vlanId, Kiv::Ptr<Pkt> const& pkt ) {
    KIV_TRACE( igmpTrace, traceCall )
        << "VlanPamMultiplexer::handleTxPkt on " << intf() << " for vlan " << vlanId;
    if ( vlanPam( vlanId.value() ) && pkt ) {
        handleVerifiedTxPkt( vlanId, pkt, true );
    }
}

} // namespace Zornet
