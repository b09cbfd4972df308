#pragma once

#include <span>
#include <vector>

#include "platform/zornet/device/FileDescriptor.h"
#include "tests/support/Frames.h"
#include "tests/support/Namespace.h"

namespace Support {

using Lab::Bytes;

/// An IGMP frame with the kernel's stamp of its arrival, in seconds of the wall clock.
struct Arrival {
    Bytes frame;
    double time;
    Zornet::IpAddr source() const;
};

/// How many different hosts have sent these.
std::size_t senders( std::vector<Arrival> const& arrivals );

/// The wall clock by which the kernel stamps, in seconds.
double wallClock();

/// A bare packet socket on a device: sends prepared frames as fast as the kernel takes them, and stamps the
/// IGMP that arrives. It has nothing of the engine, and is the rival of whatever sends through that.
class PacketEnd {
  public:
    /// Raises std::runtime_error where the device cannot be opened.
    PacketEnd( Namespace const& ns, char const* device );

    /// Everything that has arrived.
    std::vector<Arrival> takeAll();
    /// In batches of 64, and until all are taken.
    void sendAll( std::vector<Bytes> const& frames );
    /// One call of `sendto`. Returns whether the frame was taken.
    bool send( std::span<Zornet::U8 const> frame );

  private:
    bool take( Arrival& arrival );

    Zornet::FileDescriptor socket_;
};

} // namespace Support
