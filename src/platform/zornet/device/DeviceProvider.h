#pragma once

#include <map>
#include <utility>

#include "platform/zornet/device/Device.h"

namespace Zornet {

/// Where access objects find their devices. It keeps one device per namespace and name for as long as it
/// lives; a device without ports costs next to nothing.
class DeviceProvider {
  public:
    virtual ~DeviceProvider() = default;

    /// The device of that name, made on first demand. It need not exist on the machine.
    Kiv::Ptr<Device> device( NamespaceName const& ns, Kiv::String8 const& name );
    /// Frames that wait to leave, of all devices made so far.
    std::size_t framesWaiting() const;

  protected:
    virtual Kiv::Ptr<Device> newDevice( NamespaceName const& ns, Kiv::String8 const& name ) = 0;

  private:
    std::map<std::pair<Kiv::String8, Kiv::String8>, Kiv::Ptr<Device>> devices_;
};

/// The provider in force: packet sockets, unless a scope stands.
DeviceProvider& deviceProvider();

/// Puts another provider in force for the scope's life. The provider must outlive the scope. Ports that are
/// open keep the device they have.
class DeviceProviderScope {
  public:
    explicit DeviceProviderScope( DeviceProvider& provider );
    ~DeviceProviderScope();
    DeviceProviderScope( DeviceProviderScope const& ) = delete;
    DeviceProviderScope& operator=( DeviceProviderScope const& ) = delete;

  private:
    DeviceProvider* outer_;
};

} // namespace Zornet
