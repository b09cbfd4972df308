#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <thread>

#include "platform/kiv/Ptr.h"
#include "platform/zornet/device/Burst.h"
#include "platform/zornet/device/PacketSocket.h"

namespace Zornet {

/// A thread that hands bursts to the kernel, in order, while the loop's thread makes the next: what a frame
/// costs in the kernel is more than what it costs in a host, and so runs on another processor. It touches
/// nothing but its socket and the bursts that it was given, and those are nobody else's until it is done.
/// After a burst that the kernel did not take whole, what follows is left alone until all is taken back.
class SendingThread {
  public:
    /// Bursts that may be under way: enough that neither side waits for the other to wake up.
    static constexpr unsigned depth = 4;

    /// Null where this thread has one processor, and so gains nothing, or where no thread can be had.
    static std::unique_ptr<SendingThread> make( Kiv::Ptr<PacketSocket> const& socket );
    /// Nothing may be under way.
    ~SendingThread();
    SendingThread( SendingThread const& ) = delete;
    SendingThread& operator=( SendingThread const& ) = delete;

    /// Bursts given and not taken back.
    unsigned underWay() const { return given_.load( std::memory_order_relaxed ) - takenBack_; }
    /// The burst to fill and to give next; fewer than `depth` are under way.
    Burst& next() { return bursts_[given_.load( std::memory_order_relaxed ) % depth]; }
    void give();
    /// The burst that was given first, once it has been tried; one is under way.
    Burst const& tried() const;
    void takeBack();

  private:
    explicit SendingThread( Kiv::Ptr<PacketSocket> const& socket ) : socket_( socket ) {}

    void run();

    Kiv::Ptr<PacketSocket> const socket_;
    std::array<Burst, depth> bursts_;
    // Numbers of bursts, from the first on; they may wrap.
    std::atomic<unsigned> given_ = 0;
    std::atomic<unsigned> tried_ = 0;
    unsigned takenBack_ = 0;
    bool refused_ = false; ///< belongs to the thread while any burst is under way
    bool ending_ = false;
    std::thread thread_;
};

} // namespace Zornet
