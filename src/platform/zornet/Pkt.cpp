#include "platform/zornet/Pkt.h"

#include <algorithm>
#include <utility>

#include "platform/zornet/PktManager.h"

namespace Zornet {

Pkt::Pkt() = default;
Pkt::~Pkt() = default;

void
Pkt::copyTo( U8* out ) const {
    for ( U32 i = firstIoVec_; i < maxIovecs_; ++i ) {
        out = std::copy_n( ioVecs_[i].data, ioVecs_[i].bytes, out );
    }
}

void
Pkt::sharedBufferIs( Kiv::Ptr<SharedBuffer> const& buffer ) {
    sharedBuffer_ = buffer;
    firstIoVec_ = maxIovecs_ - 1;
    beginOffset_ = 0;
    endOffset_ = 0;
    checkedBuffer();
    updateSharedIovec();
}

void
Pkt::headIoVecIs( IoVec const& head ) {
    ioVecs_[0] = head;
    firstIoVec_ = 0;
}

void
Pkt::updateSharedIovec() {
    Kiv::invariant( firstIoVec_ != maxIovecs_, "firstIoVec_ != maxIovecs_" );
    ioVecs_.back() = { sharedBuffer_->data(), sharedBuffer_->dataBytes() };
}

void
Pkt::newSharedHeadData( U32 bytes ) {
    SharedBuffer const& old = checkedBuffer();
    if ( !old.hasHeadRoom( bytes ) ) {
        Kiv::Ptr<SharedBuffer> const larger( new SharedBuffer( old.size() + bytes ) );
        larger->newHeadData( old.dataBytes() );
        std::copy_n( old.data(), old.dataBytes(), larger->data() );
        sharedBuffer_ = larger;
    }
    sharedBuffer_->newHeadData( bytes );
    updateSharedIovec();
}

void
Pkt::delSharedHeadData( U32 bytes ) {
    checkedBuffer().delHeadData( bytes );
    updateSharedIovec();
}

void
Pkt::newSharedTailData( U32 bytes ) {
    checkedBuffer().newTailData( bytes );
    updateSharedIovec();
}

void
Pkt::delSharedTailData( U32 bytes ) {
    checkedBuffer().delTailData( bytes );
    updateSharedIovec();
}

void
Pkt::beginOffsetIs( S16 offset ) {
    beginOffset_ = static_cast<U16>( offset );
    checkWindow();
}

void
Pkt::beginOffsetInc( S16 bytes ) {
    beginOffset_ = static_cast<U16>( beginOffset_ + bytes );
    checkWindow();
}

void
Pkt::endOffsetIs( S16 offset ) {
    endOffset_ = static_cast<U16>( offset );
    checkWindow();
}

void
Pkt::recycle() {
    if ( sharedBuffer_ && sharedBuffer_->references() == 1 ) {
        sharedBuffer_->clear();
    } else {
        sharedBuffer_ = new SharedBuffer( 0 );
    }
    sharedBufferIs( sharedBuffer_ );
}

void
Pkt::handleZeroRef() const {
    auto* const self = const_cast<Pkt*>( this );
    if ( Kiv::Ptr<PktManager> const manager = std::exchange( self->manager_, nullptr ) ) {
        manager->freePktIs( self );
    } else {
        delete self;
    }
}

} // namespace Zornet
