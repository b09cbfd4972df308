#include "platform/zornet/device/SendBatch.h"

#include <algorithm>

namespace Zornet {

SendBatch::SendBatch() : region_( std::make_unique_for_overwrite<U8[]>( capacity ) ) {}

std::size_t
SendBatch::room( std::size_t frameBytes ) {
    std::size_t const bytes = sizeof( Record ) + frameBytes;
    return ( bytes + alignof( Record ) - 1 ) / alignof( Record ) * alignof( Record );
}

/// Leaves `tail_` where a record of that size fits. An empty batch starts over, so that a quiet one stays in
/// the first pages.
bool
SendBatch::makeRoom( std::size_t bytes ) {
    if ( frames_ == 0 ) {
        head_ = 0;
        tail_ = 0;
        next_ = 0;
        wrap_ = capacity;
    }
    if ( tail_ < head_ ) {
        return bytes < head_ - tail_;
    }
    if ( bytes <= capacity - tail_ ) {
        return true;
    }
    if ( bytes < head_ ) {
        wrap_ = tail_;
        tail_ = 0;
        next_ = outsideBursts() == 0 ? 0 : next_;
        return true;
    }
    return false;
}

bool
SendBatch::push( U64 sender, std::span<U8 const> frame ) {
    if ( !makeRoom( room( frame.size() ) ) ) {
        return false;
    }
    new ( region_.get() + tail_ ) Record{ sender, static_cast<U32>( frame.size() ) };
    std::copy( frame.begin(), frame.end(), region_.get() + tail_ + sizeof( Record ) );
    tail_ += room( frame.size() );
    ++frames_;
    return true;
}

std::size_t
SendBatch::after( std::size_t at ) const {
    std::size_t const next = at + room( record( at )->bytes );
    return next == wrap_ ? 0 : next;
}

void
SendBatch::fill( Burst& burst ) {
    burst.clear();
    for ( ; outsideBursts() != 0 && !burst.full(); ++inBursts_ ) {
        burst.push( { region_.get() + next_ + sizeof( Record ), record( next_ )->bytes } );
        next_ = after( next_ );
    }
}

void
SendBatch::emptyBursts() {
    next_ = head_;
    inBursts_ = 0;
}

void
SendBatch::pop( std::size_t frames ) {
    frames_ -= frames;
    inBursts_ -= std::min( frames, inBursts_ );
    for ( ; frames != 0; --frames ) {
        head_ = after( head_ );
        if ( head_ == 0 ) {
            wrap_ = capacity;
        }
    }
    if ( inBursts_ == 0 ) {
        next_ = head_;
    }
}

} // namespace Zornet
