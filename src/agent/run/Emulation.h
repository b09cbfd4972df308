#pragma once

#include "engine/IgmpHostDirSm.h"

namespace Agent {

/// A set of hosts with the engine that moves them. Its end takes every host down, without a leave, as hosts
/// go that are switched off.
class Emulation {
  public:
    explicit Emulation( Kiv::Ptr<Lumo::TimerWheel const> const& wheel );
    ~Emulation();
    Emulation( Emulation const& ) = delete;
    Emulation& operator=( Emulation const& ) = delete;

    Igmp::IgmpHostDir& hostDir() const { return *hostDir_; }
    Igmp::IgmpHostStatusDir& statusDir() const { return *statusDir_; }
    Igmp::IgmpHostDirSm& dirSm() const { return *dirSm_; }

  private:
    Kiv::Ptr<Igmp::IgmpHostDir> hostDir_;
    Kiv::Ptr<Igmp::IgmpHostStatusDir> statusDir_;
    Kiv::Ptr<Igmp::IgmpHostDirSm> dirSm_;
};

} // namespace Agent
