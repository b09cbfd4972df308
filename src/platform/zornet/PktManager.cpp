#include "platform/zornet/PktManager.h"

#include <algorithm>
#include <utility>

namespace Zornet {

PktManager::~PktManager() {
    pktLimitIs( 0 );
}

Kiv::Ptr<Pkt>
PktManager::newPkt() {
    Kiv::Ptr<Pkt> pkt( firstFree_ ? takeFreePkt() : new Pkt );
    pkt->recycle();
    pkt->manager_ = this;
    return pkt;
}

void
PktManager::pktLimitIs( U32 limit ) {
    pktLimit_ = limit;
    while ( freePkts_ > limit ) {
        delete takeFreePkt();
    }
}

Pkt*
PktManager::takeFreePkt() {
    Pkt* const pkt = std::exchange( firstFree_, firstFree_->nextFree_ );
    --freePkts_;
    return pkt;
}

void
PktManager::freePktIs( Pkt* pkt ) {
    if ( freePkts_ >= pktLimit_ ) {
        delete pkt;
        return;
    }
    pkt->nextFree_ = std::exchange( firstFree_, pkt );
    ++freePkts_;
}

namespace {

Kiv::Ptr<PktManager>&
currentManager() {
    static Kiv::Ptr<PktManager> manager( new PktManager );
    return manager;
}

} // namespace

Kiv::Ptr<PktManager>
globalPktManager() {
    return currentManager();
}

void
globalPktManagerIs( Kiv::Ptr<PktManager> const& manager ) {
    currentManager() = validPtr( manager );
}

Kiv::Ptr<Pkt>
pktWithBytes( std::span<U8 const> frame, U32 headRoom ) {
    Kiv::Ptr<Pkt> pkt = globalPktManager()->newPkt();
    if ( pkt ) {
        pkt->newSharedHeadData( static_cast<U32>( frame.size() ) + headRoom );
        pkt->delSharedHeadData( headRoom );
        std::copy( frame.begin(), frame.end(), pkt->front() );
    }
    return pkt;
}

} // namespace Zornet
