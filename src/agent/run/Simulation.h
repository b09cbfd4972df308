#pragma once

#include <map>
#include <memory>

#include "agent/demo/VlanTrunk.h"
#include "agent/scenario/Scenario.h"
#include "lab/Querier.h"
#include "lab/Wire.h"
#include "platform/kiv/Clock.h"

namespace Agent {

/// Stands in for the machine, from its making to its end: a clock that jumps from one thing that happens to
/// the next, and for each device of a scenario a cable in memory, with the reference querier at its other
/// end, one for each VLAN. Two runs of one scenario with one seed are alike to the byte.
class Simulation {
  public:
    explicit Simulation( Scenario const& scenario );

    Kiv::Ptr<Lumo::TimerWheel> const& wheel() const { return wheel_; }
    std::vector<Lab::Querier const*> queriers() const;
    /// The devices of the queriers, by deviceLabel().
    std::set<std::string> const& farEnds() const { return farEnds_; }

  private:
    struct Link {
        std::string name;                 ///< empty for hosts on no device
        std::unique_ptr<VlanTrunk> trunk; ///< where hosts are tagged
        std::map<U16, std::unique_ptr<Lab::Querier>> queriers;
    };

    Link& linkOf( HostSpec const& spec );
    void addQuerier( Link& link, U16 vlanId );
    Kiv::Ptr<Zornet::EthDevPam> farEnd( Link const& link, char const* what );

    Lab::QuerierConfig config_;
    Kiv::SimulatedClock clock_;
    Kiv::ClockScope const clockScope_{ clock_ };
    /// A wheel begins at the present time, and so after the clock: to one that began later, everything is
    /// due.
    Kiv::Ptr<Lumo::TimerWheel> const wheel_{ new Lumo::TimerWheel };
    Lab::Wire wire_{ wheel_ };
    Zornet::DeviceProviderScope const providerScope_{ wire_ };
    std::map<std::string, Link> links_; ///< by device and namespace
    std::set<std::string> farEnds_;
};

} // namespace Agent
