#pragma once

#include <map>
#include <memory>

#include "platform/zornet/device/DeviceProvider.h"
#include "platform/zornet/device/LinkMonitor.h"
#include "platform/zornet/device/NamespaceMonitor.h"

namespace Zornet {

/// The provider of the machine's own devices, through packet sockets. All runs on the default activity.
class PacketSocketProvider : public DeviceProvider {
  public:
    PacketSocketProvider();
    ~PacketSocketProvider() override;

  protected:
    Kiv::Ptr<Device> newDevice( NamespaceName const& ns, Kiv::String8 const& name ) override;

  private:
    Kiv::Ptr<LinkMonitor> links( NamespaceName const& ns );
    void handleNamespaces();

    Kiv::Ptr<Kiv::ActivityConfig> const activity_;
    std::map<Kiv::String8, Kiv::Ptr<LinkMonitor>> links_;
    std::unique_ptr<NamespaceMonitor> namespaces_; ///< once a named namespace is in use
};

} // namespace Zornet
