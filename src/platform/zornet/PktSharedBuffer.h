#pragma once

#include <memory>

#include "platform/kiv/PtrInterface.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// The bytes behind a packet: a region of fixed size of which a part is in use. Head room lies in front of
/// that part, tail room behind it. Invariant, checked on each change: the part in use lies within the region.
/// It may be held by several packets and locks nothing.
class PktSharedBuffer : public Kiv::PtrInterface {
  public:
    /// Nothing in use, and the whole region is head room. The bytes are not initialised.
    explicit PktSharedBuffer( U32 size );

    U32 size() const { return size_; }
    U8* data() const { return data_; }
    U32 dataBytes() const { return dataBytes_; }
    bool hasHeadRoom( U32 bytes ) const { return bytes <= static_cast<U64>( data_ - buffer_.get() ); }

    /// Takes `bytes` more in use at the front, or gives them back. There must be room.
    void newHeadData( U32 bytes );
    void delHeadData( U32 bytes );
    /// The same at the end. The counts wrap at 32 bits.
    void newTailData( U32 bytes );
    void delTailData( U32 bytes );
    /// Back to nothing in use.
    void clear();

  private:
    void checkRegion() const;

    std::unique_ptr<U8[]> buffer_;
    U32 size_;
    U8* data_;
    U32 dataBytes_ = 0;
};

/// True from the first byte of the region up to and with the place right behind its last.
inline bool
ptrWithinRegion( U8 const* ptr, U8 const* region, U32 size ) {
    return region <= ptr && ptr <= region + size;
}

} // namespace Zornet
