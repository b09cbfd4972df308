#include "vlan/VlanTag.h"

#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"

namespace Zornet {

namespace {

constexpr U32 tagOffset = sizeof( EthHdr );
constexpr U32 tagBytes = sizeof( Eth8021QHdr );

EthHdr&
ethHdr( Pkt const& pkt ) {
    return *reinterpret_cast<EthHdr*>( pkt.front() );
}

Eth8021QHdr&
tagHdr( Pkt const& pkt ) {
    return *reinterpret_cast<Eth8021QHdr*>( pkt.front() + tagOffset );
}

bool
isTagged( Pkt const& pkt ) {
    return pkt.bytes() >= tagOffset + tagBytes && ethHdr( pkt ).typeOrLen() == ethType8021Q;
}

} // namespace

U16
vlanIdFromEthPkt( Kiv::Ptr<Pkt> const& pkt ) {
    return isTagged( *pkt ) ? tagHdr( *pkt ).tagControl().vlanId() : U16{ 0 };
}

void
addPktVlanTag( Kiv::Ptr<Pkt>& pkt, U16 vlanId ) {
    Kiv::invariant( pkt->bytes() >= sizeof( EthHdr ), "pkt->bytes() >= sizeof( EthHdr )" );
    EthHdr header = ethHdr( *pkt );
    Eth8021QTagControl control;
    control.vlanIdIs( vlanId );
    Eth8021QHdr tag;
    tag.tagControlIs( control );
    tag.typeOrLenIs( header.typeOrLen() );
    header.typeOrLenIs( ethType8021Q );

    pkt->newSharedHeadData( tagBytes );
    ethHdr( *pkt ) = header;
    tagHdr( *pkt ) = tag;
}

void
stripPktVlanTag( Kiv::Ptr<Pkt>& pkt ) {
    if ( !isTagged( *pkt ) ) {
        return;
    }
    EthHdr header = ethHdr( *pkt );
    header.typeOrLenIs( tagHdr( *pkt ).typeOrLen() );
    pkt->delSharedHeadData( tagBytes );
    ethHdr( *pkt ) = header;
}

void
fixupPktVlanTag( Kiv::Ptr<Pkt>& pkt, U16 vlanId, bool tag ) {
    if ( !tag ) {
        stripPktVlanTag( pkt );
    } else if ( !isTagged( *pkt ) ) {
        addPktVlanTag( pkt, vlanId );
    } else {
        Eth8021QTagControl control = tagHdr( *pkt ).tagControl();
        control.vlanIdIs( vlanId );
        tagHdr( *pkt ).tagControlIs( control );
    }
}

} // namespace Zornet
