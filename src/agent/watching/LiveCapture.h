#pragma once

#include <pcap/pcap.h>

#include <functional>
#include <memory>
#include <span>
#include <string>

#include "platform/kiv/Activity.h"
#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/Types.h"

namespace Agent {

/// Every IGMP frame that passes a device in either direction, with its tags and the kernel's time, in turns
/// of the default activity. Unlike an access object it also hears what this machine itself sends.
class LiveCapture : private Kiv::IoHandler {
  public:
    using FrameHandler = std::function<void( Kiv::Seconds time, std::span<Zornet::U8 const> frame )>;

    /// Begins to listen. Raises std::runtime_error, in words for the user, where the device cannot be
    /// listened to. `ended` tells why a capture has come to its end by itself, such as a device that is gone.
    LiveCapture(
        std::string const& device, Zornet::NamespaceName const& ns, FrameHandler frame,
        std::function<void( std::string const& why )> ended
    );
    ~LiveCapture() override;
    LiveCapture( LiveCapture const& ) = delete;
    LiveCapture& operator=( LiveCapture const& ) = delete;

    /// Frames that were lost because they came faster than they were taken.
    Zornet::U64 lost() const;

  private:
    using Handle = std::unique_ptr<pcap_t, decltype( &pcap_close )>;

    void handleIo( Kiv::U32 events ) override;
    static void take( u_char* self, pcap_pkthdr const* header, u_char const* bytes );

    FrameHandler const frame_;
    std::function<void( std::string const& why )> const ended_;
    Handle handle_;
    int descriptor_;
};

} // namespace Agent
