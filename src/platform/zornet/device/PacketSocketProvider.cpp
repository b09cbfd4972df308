#include "platform/zornet/device/PacketSocketProvider.h"

#include "platform/zornet/device/PacketSocketDevice.h"

namespace Zornet {

Kiv::Ptr<Device>
PacketSocketProvider::newDevice( NamespaceName const& ns, Kiv::String8 const& name ) {
    return new PacketSocketDevice( ns, name );
}

} // namespace Zornet
