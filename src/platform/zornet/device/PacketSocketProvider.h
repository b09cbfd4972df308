#pragma once

#include "platform/zornet/device/DeviceProvider.h"

namespace Zornet {

/// The provider of the machine's own devices, through packet sockets.
class PacketSocketProvider : public DeviceProvider {
  protected:
    Kiv::Ptr<Device> newDevice( NamespaceName const& ns, Kiv::String8 const& name ) override;
};

} // namespace Zornet
