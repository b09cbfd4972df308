#pragma once

#include <functional>
#include <string>

#include "agent/run/EndSignals.h"
#include "model/IgmpHostDir.h"
#include "model/IgmpHostStatusDir.h"
#include "platform/kiv/Connection.h"

namespace Agent {

/// A controller's end of a control socket: a mirror of an agent's hosts and their status that replication
/// keeps up to date while the loop runs. What is changed on the mirrored hosts happens at the agent.
/// SIGINT and SIGTERM end a wait.
class ControlClient {
  public:
    /// Connects, within `patience` seconds. Raises std::invalid_argument for a path that is too long and
    /// std::runtime_error where no agent is reached.
    ControlClient( std::string const& path, Kiv::Seconds patience );

    Igmp::IgmpHostDir& hostDir() const { return *hostDir_; }
    Igmp::IgmpHostStatusDir& statusDir() const { return *statusDir_; }
    bool isOpen() const { return connection_->isOpen(); }

    // Each runs the loop and raises std::runtime_error where the connection ends first, or where nothing has
    // come from the agent for `patience` seconds, or for a signal.

    /// Until the mirror stands in full.
    void synchronise();
    /// Until the agent has applied all changes so far, its hosts' reactions included.
    void settle();
    /// Until a signal, `condition`, or the end of `span`.
    void watch( std::function<bool()> const& condition, Kiv::Seconds span );

  private:
    void await( std::function<bool()> const& condition );
    bool run( std::function<bool()> const& condition, Kiv::Seconds span );

    std::string const path_;
    Kiv::Seconds const patience_;
    bool isInterrupted_ = false;
    EndSignals const signals_;
    Kiv::Ptr<Igmp::IgmpHostDir> const hostDir_;
    Kiv::Ptr<Igmp::IgmpHostStatusDir> const statusDir_;
    Kiv::Ptr<Kiv::Connection> const connection_;
};

} // namespace Agent
