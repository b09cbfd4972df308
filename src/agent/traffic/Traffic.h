#pragma once

#include <map>
#include <string>

#include "platform/kiv/String8.h"
#include "platform/zornet/NamespaceName.h"
#include "platform/zornet/device/FrameTap.h"

namespace Agent {

/// How a device is called: its name, with the namespace in front where there is one, as in "blue/veth1".
std::string deviceLabel( Zornet::NamespaceName const& ns, Kiv::String8 const& device );

/// What one device has carried for this process, in frames.
struct DeviceTraffic {
    Zornet::U64 received = 0;
    Zornet::U64 sent = 0;
    Zornet::U64 receiveLosses = 0; ///< came faster than they were taken
    Zornet::U64 sendLosses = 0;    ///< the device was missing, down or without room

    DeviceTraffic& operator+=( DeviceTraffic const& other );
};

/// Counts the frames of every device, and shows each to one further listener. It is the process's tap as long
/// as it lives.
class Traffic : private Zornet::FrameTap {
  public:
    class Listener {
      public:
        virtual ~Listener() = default;
        /// A frame as it was on the wire, received or sent.
        virtual void handleFrame( Zornet::Device const& device, std::span<Zornet::U8 const> frame ) = 0;
    };

    Traffic();
    ~Traffic() override;
    Traffic( Traffic const& ) = delete;
    Traffic& operator=( Traffic const& ) = delete;

    /// Null for none. The caller keeps it alive.
    void listenerIs( Listener* listener ) { listener_ = listener; }

    /// By deviceLabel(). A device is there once it has carried or lost something.
    std::map<std::string, DeviceTraffic> devices() const;

  private:
    void handleReceived( Zornet::Device const& device, std::span<Zornet::U8 const> frame ) override;
    void handleSent( Zornet::Device const& device, std::span<Zornet::U8 const> frame ) override;
    void handleReceiveLosses( Zornet::Device const& device, Zornet::U64 frames ) override;
    void handleSendLosses( Zornet::Device const& device, Zornet::U64 frames ) override;

    std::map<Zornet::Device const*, DeviceTraffic> devices_;
    Listener* listener_ = nullptr;
};

} // namespace Agent
