#include "platform/zornet/device/DeviceProvider.h"

#include "platform/zornet/device/PacketSocketProvider.h"

namespace Zornet {

namespace {

DeviceProvider*&
providerInForce() {
    static PacketSocketProvider packetSockets;
    static DeviceProvider* provider = &packetSockets;
    return provider;
}

} // namespace

Kiv::Ptr<Device>
DeviceProvider::device( NamespaceName const& ns, Kiv::String8 const& name ) {
    Kiv::Ptr<Device>& device = devices_[{ ns.name(), name }];
    if ( !device ) {
        device = newDevice( ns, name );
    }
    return device;
}

std::size_t
DeviceProvider::framesWaiting() const {
    std::size_t frames = 0;
    for ( auto const& [name, device] : devices_ ) {
        frames += device->framesWaiting();
    }
    return frames;
}

DeviceProvider&
deviceProvider() {
    return *providerInForce();
}

DeviceProviderScope::DeviceProviderScope( DeviceProvider& provider ) : outer_( providerInForce() ) {
    providerInForce() = &provider;
}

DeviceProviderScope::~DeviceProviderScope() {
    providerInForce() = outer_;
}

} // namespace Zornet
