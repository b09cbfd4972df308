#pragma once

#include <functional>

#include "platform/kiv/Activity.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Zornet {

/// Tells that named network namespaces may have come or gone. A name is a mount, and the kernel tells who
/// listens that the table of mounts has changed.
class NamespaceMonitor : private Kiv::IoHandler {
  public:
    /// `handler` runs at each change, from the activity's loop, as long as this lives.
    NamespaceMonitor( Kiv::Ptr<Kiv::ActivityConfig> const& activity, std::function<void()> handler );
    ~NamespaceMonitor() override;
    NamespaceMonitor( NamespaceMonitor const& ) = delete;
    NamespaceMonitor& operator=( NamespaceMonitor const& ) = delete;

  private:
    void handleIo( Kiv::U32 ) override { handler_(); }

    Kiv::Ptr<Kiv::ActivityConfig> const activity_;
    std::function<void()> const handler_;
    FileDescriptor const mounts_;
};

} // namespace Zornet
