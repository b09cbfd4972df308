#pragma once

#include <sys/socket.h>

#include <span>

#include "platform/kiv/FunctionRef.h"
#include "platform/kiv/Ptr.h"
#include "platform/kiv/PtrInterface.h"
#include "platform/zornet/device/FileDescriptor.h"
#include "platform/zornet/device/ReceiveRing.h"

namespace Zornet {

/// The packet sockets on one link: one hears the link's IGMP frames of all VLANs, to whatever multicast
/// address, and none that this machine sends on it; the other sends. They are two because the kernel visits
/// whoever waits for a socket at every frame that leaves through it, which costs an eighth of the sending: so
/// what is waited for is not what is sent through. Neither ever blocks.
class PacketSocket : public Kiv::PtrInterface {
  public:
    /// The sockets on the link of that index in the thread's network namespace. Null, with errno set, where
    /// they cannot be had.
    static Kiv::Ptr<PacketSocket> open( U32 linkIndex );

    /// Readable when frames have come.
    int receiver() const { return receiver_.get(); }
    /// Writable when there is room.
    int sender() const { return sender_.get(); }
    U32 linkIndex() const { return linkIndex_; }

    /// Tells what has been received; see ReceiveRing.
    void receive( Kiv::FunctionRef<void( std::span<U8 const> )> frame, Kiv::Seconds span ) {
        ring_.drain( frame, span );
    }
    /// Frames lost for want of room since the last call.
    U32 takeLostFrames();
    /// The receiving socket's pending error, which goes with the asking; 0 for none.
    int takeError();
    /// Sends the messages in order. Returns how many went; 0, with errno set, where not even the first did.
    std::size_t send( std::span<mmsghdr> messages );

  private:
    explicit PacketSocket( U32 linkIndex );

    bool openReceiver();
    bool openSender();

    FileDescriptor receiver_;
    FileDescriptor sender_;
    U32 linkIndex_;
    ReceiveRing ring_;
};

} // namespace Zornet
