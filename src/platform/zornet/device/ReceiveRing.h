#pragma once

#include <linux/if_packet.h>

#include <span>

#include "platform/kiv/FunctionRef.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// The ring of a packet socket into which the kernel receives, mapped into the process. The kernel fills a
/// block with frames and hands it over when it is full or, with anything in it, a millisecond old; a drain
/// hands it back. Frames are told as they were on the wire: the tag that the kernel has taken out of a frame
/// is put back in place. No pointer into the ring outlives the call that tells it.
class ReceiveRing {
  public:
    /// Room for 28,000 of the smallest frames, which is what a port full of hosts may say at once. A trickle
    /// takes a block a millisecond, however few its frames: the number of blocks is also the time in
    /// milliseconds that the reader may be away. A frame must fit into a block, and the largest of any
    /// Ethernet does.
    static constexpr U32 blockBytes = 1U << 14;
    static constexpr U32 blocks = 256;
    static constexpr U32 blockAgeMilliseconds = 1;

    ReceiveRing() = default;
    ~ReceiveRing();
    ReceiveRing( ReceiveRing const& ) = delete;
    ReceiveRing& operator=( ReceiveRing const& ) = delete;

    /// Gives the socket its ring. False, with errno set, where the kernel refuses.
    bool open( int socket );
    /// Tells the frames that are ready for as long as `span`, and one at least. The socket stays readable
    /// while more are ready.
    void drain( Kiv::FunctionRef<void( std::span<U8 const> )> frame, Kiv::Seconds span );

  private:
    using Block = tpacket_block_desc;

    Block* block() const { return reinterpret_cast<Block*>( memory_ + number_ * blockBytes ); }
    bool hasFrame();
    void closeBlock();
    static std::span<U8 const> wireFrame( tpacket3_hdr* header );

    U8* memory_ = nullptr;
    U32 number_ = 0;   ///< of the block that is drained next, or at present
    U32 left_ = 0;     ///< frames of it that have not been told
    U8* at_ = nullptr; ///< the next of them, while there are any
};

} // namespace Zornet
