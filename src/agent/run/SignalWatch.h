#pragma once

#include <csignal>
#include <functional>
#include <vector>

#include "platform/kiv/Activity.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

/// Takes signals in the turns of the default activity, in place of whatever they would do otherwise, as long
/// as it lives. Those that have not been taken by then are dropped.
class SignalWatch : private Kiv::IoHandler {
  public:
    SignalWatch( std::vector<int> const& signals, std::function<void( int signal )> handler );
    ~SignalWatch() override;
    SignalWatch( SignalWatch const& ) = delete;
    SignalWatch& operator=( SignalWatch const& ) = delete;

    /// Takes those that wait, outside of any turn.
    void look() { handleIo( 0 ); }

  private:
    void handleIo( Kiv::U32 events ) override;
    int take();

    std::function<void( int )> const handler_;
    sigset_t outerMask_{};
    Zornet::FileDescriptor descriptor_;
};

} // namespace Agent
