#include "platform/zornet/PktSharedBuffer.h"

#include "platform/kiv/Assert.h"

namespace Zornet {

PktSharedBuffer::PktSharedBuffer( U32 size )
    : buffer_( std::make_unique_for_overwrite<U8[]>( size ) ), size_( size ), data_( buffer_.get() + size ) {}

void
PktSharedBuffer::checkRegion() const {
    U8 const* const buffer = buffer_.get();
    Kiv::invariant( ptrWithinRegion( data_, buffer, size_ ), "ptrWithinRegion( data_, buffer_, size_ )" );
    Kiv::invariant(
        ptrWithinRegion( data_ + dataBytes_, buffer, size_ ),
        "ptrWithinRegion( data_ + dataBytes_, buffer_, size_ )"
    );
}

void
PktSharedBuffer::newHeadData( U32 bytes ) {
    data_ -= bytes;
    dataBytes_ += bytes;
    checkRegion();
}

void
PktSharedBuffer::delHeadData( U32 bytes ) {
    data_ += bytes;
    dataBytes_ -= bytes;
    checkRegion();
}

void
PktSharedBuffer::newTailData( U32 bytes ) {
    dataBytes_ += bytes;
    checkRegion();
}

void
PktSharedBuffer::delTailData( U32 bytes ) {
    dataBytes_ -= bytes;
    checkRegion();
}

void
PktSharedBuffer::clear() {
    data_ = buffer_.get() + size_;
    dataBytes_ = 0;
}

} // namespace Zornet
