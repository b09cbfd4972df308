#pragma once

#include <vector>

#include "agent/run/Emulation.h"
#include "lab/Timer.h"

namespace Agent {

/// Takes every host out of every group, and knows when the network has been told: before version 3 a leave
/// is sent at once, in version 3 a report and its repeats (RFC 3376 section 5.1) are owed first. What devices
/// cannot get rid of yet counts as not told.
class Leaving {
  public:
    Leaving( Emulation& emulation, Kiv::Ptr<Lumo::TimerWheel const> const& wheel );

    /// Runs the default activity until nothing is owed any more, or until somebody stops it. Returns whether
    /// everything was told.
    bool run();

  private:
    void leaveSome();
    bool isDone();
    bool owes( Kiv::Name const& name ) const;

    Emulation& emulation_;
    std::vector<Kiv::Name> hosts_;
    std::size_t left_ = 0;         ///< how many of them have left their groups
    std::vector<Kiv::Name> owing_; ///< those that may still have to tell of it
    Kiv::Ptr<Lab::Timer> timer_;
};

} // namespace Agent
