#pragma once

#include "platform/zornet/device/Device.h"

namespace Zornet {

/// A device of the machine, reached through one packet socket that all its ports share.
class PacketSocketDevice : public Device {
  public:
    PacketSocketDevice( NamespaceName const& ns, Kiv::String8 const& name ) : Device( ns, name ) {
        runningIs( false );
    }

    bool send( EthDevPam const&, std::span<U8 const> ) override { return false; }
};

} // namespace Zornet
