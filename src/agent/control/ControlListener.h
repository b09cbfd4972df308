#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "platform/kiv/Activity.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

/// A Unix-domain socket at a path, open to the process's user alone, that hands over each peer that connects.
/// A socket that a process left there which has ended is replaced. The path goes with its object, unless
/// another has been put there meanwhile.
class ControlListener : private Kiv::IoHandler {
  public:
    using Taken = std::function<void( Zornet::FileDescriptor peer )>;

    /// Raises std::invalid_argument for a path that is too long and std::runtime_error for one that cannot be
    /// taken, with the reason.
    ControlListener( std::string const& path, Taken taken );
    ~ControlListener() override;
    ControlListener( ControlListener const& ) = delete;
    ControlListener& operator=( ControlListener const& ) = delete;

    /// Whether a socket that was left behind had to be replaced.
    bool hasReplaced() const { return hasReplaced_; }

  private:
    void handleIo( Kiv::U32 events ) override;
    void removeStale();
    void listen();
    void refuseForWantOfDescriptors();

    std::string const path_;
    Taken const taken_;
    bool hasReplaced_ = false;
    Zornet::FileDescriptor socket_;
    /// Given up for a moment to take and refuse a peer where the process has no descriptor left; otherwise
    /// the peer would keep the loop awake.
    Zornet::FileDescriptor reserve_;
    struct stat made_ {}; ///< the socket at the path, to know it again
};

} // namespace Agent
