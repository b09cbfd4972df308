#pragma once

#include "agent/run/RunPart.h"

namespace Agent {

/// Writes the status of every host at the end of a run and whenever it is wanted: --status.
class StatusFile : public RunPart {
  public:
    /// Raises std::system_error where the file could not be written.
    explicit StatusFile( RunContext const& context );

    void handleStatusWanted() override { write(); }
    ExitStatus handleEnded() override { return write() ? exitDone : exitFailed; }

  private:
    bool write() const;

    RunContext const& context_;
};

} // namespace Agent
