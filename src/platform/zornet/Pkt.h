#pragma once

#include <array>
#include <span>
#include <type_traits>
#include <vector>

#include "platform/kiv/Assert.h"
#include "platform/kiv/Ptr.h"
#include "platform/zornet/PktSharedBuffer.h"
#include "platform/zornet/Types.h"

namespace Zornet {

class PktManager;

/// A frame, with a movable window on its shared data through which it is built and parsed in place. The frame
/// is the byte regions of its table from `firstIoVec()` on; the last region mirrors the data in use of the
/// shared buffer. Invariant of the window, checked by every operation on it: the two offsets together do not
/// exceed that data.
class Pkt : public Kiv::PtrInterface {
  public:
    using SharedBuffer = PktSharedBuffer;
    using Manager = PktManager;

    struct IoVec {
        U8* data = nullptr;
        U32 bytes = 0;
    };
    static constexpr U8 maxIovecs_ = 2;

    /// A packet without a shared buffer and with no region in use. PktManager::newPkt() is what makes usable
    /// ones.
    Pkt();
    ~Pkt() override;

    // The frame.
    /// 0, 1, or `maxIovecs_` for none.
    U8 firstIoVec() const { return firstIoVec_; }
    IoVec const& ioVec( U8 index ) const { return ioVecs_[index]; }
    /// The frame's first byte. Some region must be in use.
    U8* front() const { return ioVecs_[firstIoVec_].data; }
    /// Length of the frame.
    U32 bytes() const {
        U32 sum = 0;
        for ( U32 i = firstIoVec_; i < maxIovecs_; ++i ) {
            sum += ioVecs_[i].bytes;
        }
        return sum;
    }
    /// Copies the frame to `out`, which must have room for `bytes()`.
    void copyTo( U8* out ) const;

    // The buffer.
    Kiv::Ptr<SharedBuffer> const& sharedBuffer() const { return sharedBuffer_; }
    /// Puts another buffer behind the last region and takes the first out of use. The window is the whole of
    /// its data.
    void sharedBufferIs( Kiv::Ptr<SharedBuffer> const& buffer );
    /// Puts bytes of the caller's in front of the shared data as the first region. They must outlive the
    /// packet.
    void headIoVecIs( IoVec const& head );
    /// Takes every region out of use.
    void ioVecDelAll() { firstIoVec_ = maxIovecs_; }

    /// Grows the shared data by `bytes` at the front. Without enough head room, and only then, the data moves
    /// to a new buffer that has just the room which is asked for.
    void newSharedHeadData( U32 bytes );
    /// Gives `bytes` back at the front; they become head room.
    void delSharedHeadData( U32 bytes );
    /// Grows the shared data by `bytes` at the end, where the buffer must have the room. Counts wrap at 32
    /// bits.
    void newSharedTailData( U32 bytes );
    void delSharedTailData( U32 bytes );

    // The window.
    /// From the front of the shared data to the window.
    U16 beginOffset() const { return beginOffset_; }
    /// From the window to the end of the shared data.
    U16 endOffset() const { return endOffset_; }
    void beginOffsetIs( S16 offset );
    void beginOffsetInc( S16 bytes );
    void endOffsetIs( S16 offset );
    /// The window's first byte.
    U8* offsetFront() const {
        checkWindow();
        return sharedBuffer_->data() + beginOffset_;
    }
    /// The window's length.
    U32 offsetBytes() const {
        checkWindow();
        return sharedBuffer_->dataBytes() - beginOffset_ - endOffset_;
    }
    /// The window's first bytes as a header. The window must be long enough for it.
    template <class Header>
    Header* offsetHeader() const {
        static_assert( alignof( Header ) == 1 && std::is_trivially_copyable_v<Header> );
        Kiv::invariant( offsetBytes() >= sizeof( Header ), "checkOffsetBounds()" );
        return reinterpret_cast<Header*>( offsetFront() );
    }

  protected:
    /// Goes back to the manager that made it.
    void handleZeroRef() const override;

  private:
    friend class PktManager;

    /// In 16 bits, as wide as the offsets are.
    bool checkOffsetBounds() const {
        return static_cast<U16>( beginOffset_ + endOffset_ ) <=
               static_cast<U16>( checkedBuffer().dataBytes() );
    }
    void checkWindow() const { Kiv::invariant( checkOffsetBounds(), "checkOffsetBounds()" ); }
    SharedBuffer& checkedBuffer() const {
        Kiv::invariant( sharedBuffer_ != nullptr, "sharedBuffer_ != 0" );
        return *sharedBuffer_;
    }
    void updateSharedIovec();
    /// As new, with the buffer it has unless another packet holds that too.
    void recycle();

    std::array<IoVec, maxIovecs_> ioVecs_;
    U8 firstIoVec_ = maxIovecs_;
    U16 beginOffset_ = 0;
    U16 endOffset_ = 0;
    Kiv::Ptr<SharedBuffer> sharedBuffer_;
    Kiv::Ptr<PktManager> manager_; ///< while the packet is in use
    Pkt* nextFree_ = nullptr;      ///< while it waits in the manager's free list
};

/// Calls `use` with the bytes of the frame from its first to its last in one piece: in place where they are
/// one, else in a copy that lasts for the call. A packet with no region in use has none.
template <class Use>
auto
withFrame( Pkt const& pkt, Use use ) {
    if ( pkt.firstIoVec() == Pkt::maxIovecs_ - 1 ) {
        return use( std::span<U8>( pkt.front(), pkt.bytes() ) );
    }
    std::vector<U8> joined( pkt.bytes() );
    pkt.copyTo( joined.data() );
    return use( std::span<U8>( joined ) );
}

} // namespace Zornet
