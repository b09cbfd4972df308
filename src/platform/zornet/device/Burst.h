#pragma once

#include <sys/socket.h>

#include <array>
#include <span>

#include "platform/zornet/Types.h"

namespace Zornet {

class PacketSocket;

/// Frames that are handed to the kernel at a time, as it wants to be told of them, and what became of them.
/// Their bytes belong to somebody else.
class Burst {
  public:
    /// Fewer make the kernel's part and the hosts' push each other out of the caches more often.
    static constexpr std::size_t capacity = 256;

    Burst();
    Burst( Burst const& ) = delete;
    Burst& operator=( Burst const& ) = delete;

    void clear() {
        size_ = sent_ = 0;
        refusal_ = 0;
    }
    bool full() const { return size_ == capacity; }
    /// Takes one more frame in; the burst must not be full.
    void push( std::span<U8> frame ) { parts_[size_++] = { frame.data(), frame.size() }; }

    /// Sends the frames in order, until all have gone or one is refused.
    void send( PacketSocket& socket );
    std::span<iovec const> frames() const { return std::span( parts_ ).first( size_ ); }
    /// Those of them that went, the first ones.
    std::span<iovec const> sent() const { return frames().first( sent_ ); }
    /// Why the frame after these did not go, as an error number; 0 where none was refused.
    int refusal() const { return refusal_; }

  private:
    std::array<iovec, capacity> parts_{};
    std::array<mmsghdr, capacity> messages_{};
    std::size_t size_ = 0;
    std::size_t sent_ = 0;
    int refusal_ = 0;
};

} // namespace Zornet
