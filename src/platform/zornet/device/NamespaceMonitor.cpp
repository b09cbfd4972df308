#include "platform/zornet/device/NamespaceMonitor.h"

#include <fcntl.h>

namespace Zornet {

NamespaceMonitor::NamespaceMonitor(
    Kiv::Ptr<Kiv::ActivityConfig> const& activity, std::function<void()> handler
)
    : activity_( activity ),
      handler_( std::move( handler ) ),
      mounts_( open( "/proc/self/mountinfo", O_RDONLY | O_CLOEXEC ) ) {
    if ( mounts_ ) {
        activity_->activitySm().ioHandlerIs( mounts_.get(), EPOLLPRI, this );
    }
}

NamespaceMonitor::~NamespaceMonitor() {
    if ( mounts_ ) {
        activity_->activitySm().ioHandlerDel( mounts_.get() );
    }
}

} // namespace Zornet
