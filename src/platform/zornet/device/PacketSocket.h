#pragma once

#include <sys/socket.h>

#include <span>

#include "platform/kiv/FunctionRef.h"
#include "platform/kiv/Ptr.h"
#include "platform/kiv/PtrInterface.h"
#include "platform/zornet/device/FileDescriptor.h"
#include "platform/zornet/device/ReceiveRing.h"

namespace Zornet {

/// A packet socket on one link: hears the link's IGMP frames of all VLANs, to whatever multicast address, and
/// none that this machine sends on it. Never blocks.
class PacketSocket : public Kiv::PtrInterface {
  public:
    /// A socket on the link of that index in the thread's network namespace. Null, with errno set, where it
    /// cannot be had.
    static Kiv::Ptr<PacketSocket> open( U32 linkIndex );

    int descriptor() const { return descriptor_.get(); }
    U32 linkIndex() const { return linkIndex_; }

    /// Tells what has been received; see ReceiveRing.
    void receive( Kiv::FunctionRef<void( std::span<U8 const> )> frame ) { ring_.drain( frame ); }
    /// Frames lost for want of room since the last call.
    U32 takeLostFrames();
    /// The socket's pending error, which goes with the asking; 0 for none.
    int takeError();
    /// Sends the messages in order. Returns how many went; 0, with errno set, where not even the first did.
    std::size_t send( std::span<mmsghdr> messages );

  private:
    PacketSocket( FileDescriptor descriptor, U32 linkIndex );

    bool configure();

    FileDescriptor descriptor_;
    U32 linkIndex_;
    ReceiveRing ring_;
};

} // namespace Zornet
