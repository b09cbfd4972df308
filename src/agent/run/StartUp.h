#pragma once

#include <chrono>

#include "agent/run/Emulation.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

/// Brings the hosts of a scenario up. Where there are many it takes a turn of the default activity now and
/// then, so that whoever asks meanwhile is answered and whoever wants it to end is heard, and says how far it
/// has come. In simulated time, which nobody waits for, it takes none.
class StartUp {
  public:
    StartUp( Scenario const& scenario, Emulation& emulation )
        : scenario_( scenario ), hostDir_( emulation.hostDir() ) {}

    /// Makes the hosts.
    void load();
    /// Binds and enables them.
    void start();
    /// Ends it, also from within, with the hosts that are there.
    void stop() { stopped_ = true; }
    bool isStopped() const { return stopped_; }

  private:
    bool goOn();
    void tell();

    Scenario const& scenario_;
    Igmp::IgmpHostDir& hostDir_;
    char const* done_ = "";
    U64 hosts_ = 0; ///< that are done
    std::chrono::steady_clock::time_point told_ = std::chrono::steady_clock::now();
    bool stopped_ = false;
};

} // namespace Agent
