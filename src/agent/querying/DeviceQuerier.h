#pragma once

#include "lab/Querier.h"
#include "platform/zornet/EthDevPam.h"

namespace Agent {

/// The reference querier on a device of this machine, from its making to its end. A device that is missing
/// or down is waited for; what is asked meanwhile is lost. It hears nothing of what this process itself sends
/// on the same device: hosts that it is to ask belong at the other end of a cable.
class DeviceQuerier {
  public:
    /// Begins to ask. Raises RangeException for a `config` that fails its check.
    DeviceQuerier(
        Kiv::String8 const& device, Zornet::NamespaceName const& ns, Lab::QuerierConfig const& config,
        Kiv::Ptr<Lumo::TimerWheel const> const& wheel
    );
    ~DeviceQuerier();
    DeviceQuerier( DeviceQuerier const& ) = delete;
    DeviceQuerier& operator=( DeviceQuerier const& ) = delete;

    /// What it has learned and counted; see also learnedMembership().
    Lab::Querier const& querier() const { return querier_; }

  private:
    Kiv::Ptr<Zornet::EthDevPam> const pam_;
    Lab::Querier querier_;
};

} // namespace Agent
