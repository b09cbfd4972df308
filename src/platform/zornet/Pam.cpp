#include "platform/zornet/Pam.h"

#include <utility>

namespace Zornet {

Pam::Pam( Kiv::Name const& name ) : Entity( name ) {}
Pam::~Pam() = default;

Kiv::Ptr<Pkt>
Pam::rxPkt() {
    rxPktHolder_ = nullptr;
    doGetRxPkt();
    return std::exchange( rxPktHolder_, nullptr );
}

void
Pam::txPktIs( Kiv::Ptr<Pkt> const& ) {
    txDropsInc( 1 );
}

void
Pam::readableCountIs( U32 count ) {
    scalarIs( attrReadableCount, readableCount_, count, &NotifieeConst::onReadableCount );
}

void
Pam::writableCountIs( U32 count ) {
    scalarIs( attrWritableCount, writableCount_, count, &NotifieeConst::onWritableCount );
}

void
Pam::txDropsIs( U32 count ) {
    scalarIs( attrTxDrops, txDrops_, count, &NotifieeConst::onTxDrops );
}

void
Pam::txErrorsIs( U32 count ) {
    scalarIs( attrTxErrors, txErrors_, count, &NotifieeConst::onTxErrors );
}

void
Pam::rxErrorsIs( U32 count ) {
    scalarIs( attrRxErrors, rxErrors_, count, &NotifieeConst::onRxErrors );
}

Kiv::Ptr<Pkt>
Pam::savedPacket( U16 index ) const {
    auto const at = savedPackets_.find( index );
    return at == savedPackets_.end() ? nullptr : at->second;
}

void
Pam::savedPacketIs( U16 index, Kiv::Ptr<Pkt> const& pkt ) {
    savedPackets_[index] = pkt;
    changed<NotifieeConst, U16>( attrSavedPacket, &NotifieeConst::onSavedPacket, index );
}

void
Pam::savedPacketDel( U16 index ) {
    if ( savedPackets_.erase( index ) != 0 ) {
        changed<NotifieeConst, U16>( attrSavedPacket, &NotifieeConst::onSavedPacket, index );
    }
}

void
Pam::savedPacketNotify( U16 index ) {
    notify<NotifieeConst, U16>( attrSavedPacket, &NotifieeConst::onSavedPacket, index );
}

bool
Pam::savedPacketRx( U16 index ) const {
    auto const at = savedPacketsRx_.find( index );
    return at != savedPacketsRx_.end() && at->second;
}

void
Pam::savedPacketRxIs( U16 index, bool rx ) {
    savedPacketsRx_[index] = rx;
    changed<NotifieeConst, U16>( attrSavedPacketRx, &NotifieeConst::onSavedPacketRx, index );
}

void
Pam::savedPacketRxDel( U16 index ) {
    if ( savedPacketsRx_.erase( index ) != 0 ) {
        changed<NotifieeConst, U16>( attrSavedPacketRx, &NotifieeConst::onSavedPacketRx, index );
    }
}

void
Pam::savedPacketRxNotify( U16 index ) {
    notify<NotifieeConst, U16>( attrSavedPacketRx, &NotifieeConst::onSavedPacketRx, index );
}

void
Pam::tellOf( Kiv::AttributeId id ) {
    changed<Reactor, Kiv::AttributeId>( id, &Reactor::onAttribute, id );
}

} // namespace Zornet
