#pragma once

#include <chrono>

#include "agent/run/Emulation.h"
#include "agent/run/StartUpProgress.h"
#include "agent/scenario/ScenarioLoader.h"

namespace Agent {

/// Brings the hosts of a scenario up. Where there are many, or one has many groups, it takes a turn of the
/// default activity now and then, so that whoever asks meanwhile is answered and whoever wants it to end is
/// heard, and says how far it has come. In simulated time a turn would move the clock: only whoever wants it
/// to end is heard there.
class StartUp {
  public:
    using Tell = std::function<void( StartUpProgress const& )>;

    /// `tell` is called once a second. `lookAtSignals` takes the place of a turn in simulated time.
    StartUp(
        Scenario const& scenario, Emulation& emulation, Tell tell, std::function<void()> lookAtSignals = [] {}
    );

    /// Makes the hosts.
    void load();
    /// Binds and enables them.
    void start();
    /// Ends it, also from within, with the hosts that are there.
    void stop() { stopped_ = true; }
    bool isStopped() const { return stopped_; }

  private:
    bool goOn( DonePart part );
    void tell();

    Scenario const& scenario_;
    Igmp::IgmpHostDir& hostDir_;
    Tell const tell_;
    std::function<void()> const lookAtSignals_;
    StartUpProgress progress_;
    U64 work_ = 0; ///< since the last turn
    std::chrono::steady_clock::time_point told_ = std::chrono::steady_clock::now();
    bool stopped_ = false;
};

} // namespace Agent
