#include "vlan/VlanPktMultiplexer.h"

#include "platform/zornet/EthDevPam.h"
#include "platform/zornet/PktManager.h"
#include "vlan/Trace.h"
#include "vlan/VlanTag.h"

namespace Zornet {

VlanPktMultiplexer::KivInnerPam::KivInnerPam( Kiv::Ptr<Pam> const& pam, VlanPktMultiplexer* multiplexer )
    : Notifiee( pam ), vlanPktMultiplexer_( multiplexer ) {}

void
VlanPktMultiplexer::KivInnerPam::onReadableCount() {
    if ( deliverable( Pam::attrReadableCount ) ) {
        vlanPktMultiplexer_->handleRxPkt();
    }
}

void
VlanPktMultiplexer::KivInnerPam::notifierIs( Kiv::Ptr<Kiv::PtrInterface const> const& pam ) {
    bool const moves = pam && pam.get() != notifier();
    Notifiee::notifierIs( pam );
    if ( moves && !kivZombie() ) {
        vlanPktMultiplexer_->handleRxPkt();
    }
}

std::span<Kiv::Watch const>
VlanPktMultiplexer::KivInnerPam::watches() const {
    static constexpr Kiv::Watch rows[] = { Kiv::watch<&KivInnerPam::onReadableCount>( Pam::attrReadableCount
    ) };
    return rows;
}

VlanPktMultiplexer::VlanPktMultiplexer( Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf )
    : StateMachine( activity ), intf_( intf ) {}

VlanPktMultiplexer::~VlanPktMultiplexer() {
    VlanPktMultiplexer::innerPamDel();
}

Kiv::Ptr<VlanPktMultiplexer>
VlanPktMultiplexer::VlanPktMultiplexerIs(
    Kiv::Ptr<Kiv::ActivityConfig> const& activity, IntfId const& intf
) {
    return Kiv::stateMachineIs<VlanPktMultiplexer>( activity, intf );
}

void
VlanPktMultiplexer::forEachReactor( Kiv::FunctionRef<void( NotifieeConst& )> visit ) {
    if ( innerPam_ ) {
        visit( *innerPam_ );
    }
}

Kiv::Ptr<Pam>
VlanPktMultiplexer::innerPam() const {
    return innerPam_ ? innerPam_->notifier() : nullptr;
}

void
VlanPktMultiplexer::innerPamIs( Kiv::Ptr<Pam> const& pam ) {
    if ( !pam ) {
        innerPamDel();
    } else if ( innerPam_ ) {
        innerPam_->notifierIs( pam );
    } else {
        innerPam_ = new KivInnerPam( pam, this );
        install( *innerPam_ );
    }
}

void
VlanPktMultiplexer::innerPamDel() {
    if ( innerPam_ ) {
        innerPam_->kivDoZombieReactors( true );
        innerPam_ = nullptr;
    }
}

void
VlanPktMultiplexer::innerEthDevPamIs( Kiv::Ptr<EthDevPam> const& pam ) {
    innerEthDevPam_ = pam;
}

bool
VlanPktMultiplexer::blocked( Bridging::VlanId vlanId ) const {
    KivBlocked const* const member = blocked_.find( vlanId );
    return member && member->blocked();
}

void
VlanPktMultiplexer::blockedIs( Bridging::VlanId vlanId, bool value ) {
    Kiv::Ptr<KivBlocked> member( blocked_.find( vlanId ) );
    if ( !member ) {
        member = new KivBlocked( vlanId );
        blocked_.insert( member );
    }
    member->blockedIs( value );
}

void
VlanPktMultiplexer::blockedDel( Bridging::VlanId vlanId ) {
    blocked_.remove( vlanId );
}

void
VlanPktMultiplexer::blockedDel( Blocked::Iterator const& at ) {
    blockedDel( at->fwkKey() );
}

void
VlanPktMultiplexer::handleRxPkt() {
    Kiv::invariant( false, "0 && \"Need to implement handleRxPkt in a derived class\"" );
}

void
VlanPktMultiplexer::handleTxPkt( Bridging::VlanId, Kiv::Ptr<Pkt> const& ) {
    Kiv::invariant( false, "0 && \"Need to implement handleTxPkt in a derived class\"" );
}

namespace {

/// A packet of its own with the same frame and room for a tag; null where there is no packet to be had.
Kiv::Ptr<Pkt>
copyPacket( Kiv::Ptr<Pkt> const& pkt ) {
    Kiv::invariant( pkt != nullptr, "0" );
    return withFrame( *pkt, []( std::span<U8> frame ) { return pktWithBytes( frame ); } );
}

} // namespace

void
VlanPktMultiplexer::handleVerifiedTxPkt( Bridging::VlanId vlanId, Kiv::Ptr<Pkt> const& pkt, bool tag ) {
    KIV_TRACE( linkLocalTrace, traceCall ) << "VlanPktMultiplexer::handleVerifiedTxPkt";
    Kiv::Ptr<Pkt> pktCopy = copyPktBeforeTx_ ? copyPacket( pkt ) : pkt;
    fixupPktVlanTag( pktCopy, vlanId.value(), tag );
    if ( tag ) {
        Kiv::invariant(
            vlanIdFromEthPkt( pktCopy ) == vlanId.value(), "vlanIdFromEthPkt( pktCopy ) == vlanId"
        );
    } else {
        Kiv::invariant( vlanIdFromEthPkt( pktCopy ) == 0, "vlanIdFromEthPkt( pktCopy ) == 0" );
    }
    innerPam()->txPktIs( pktCopy );
    KIV_TRACE( linkLocalTrace, traceCall ) << "done";
}

} // namespace Zornet
