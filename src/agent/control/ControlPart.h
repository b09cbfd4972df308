#pragma once

#include "agent/control/ControlServer.h"
#include "agent/run/RunPart.h"

namespace Agent {

/// The control socket of a run (--control): it serves the hosts, which may be changed through it, and their
/// status, which may only be looked at.
class ControlPart : public RunPart {
  public:
    explicit ControlPart( RunContext const& context );

  private:
    ControlServer server_;
};

} // namespace Agent
