#pragma once

#include <functional>

#include "agent/scenario/Scenario.h"
#include "model/IgmpHostDir.h"

namespace Agent {

enum class DonePart { group, host };

/// Asked after each group of a host, and after each host; false ends the work there.
using GoOn = std::function<bool( DonePart )>;

/// Makes the hosts that are there from the start, and sets all that the scenario says of them. They are
/// neither bound nor enabled.
void loadHosts( Scenario const& scenario, Igmp::IgmpHostDir& dir, GoOn const& goOn = {} );

/// Makes it take effect: raises each host's generation counters once, enables the host and raises each
/// record's version once. A counter that the scenario sets gets that number, and a host that it disables
/// stays so. A host that has gone meanwhile is left out.
void startHosts( Scenario const& scenario, Igmp::IgmpHostDir& dir, GoOn const& goOn = {} );

// The same for one host. What the scenario does not name of a host that is there already stays. `step` is
// that of nextGeneration().
void loadHost( HostSpec const& spec, U32 index, Igmp::IgmpHost& host, GoOn const& goOn = {} );
void startHost( HostSpec const& spec, Igmp::IgmpHost& host, U32 step = 1, GoOn const& goOn = {} );

/// The host's record of a group, made where it is absent, with what `spec` sets and exactly its sources. Its
/// version is left alone.
Kiv::Ptr<Igmp::IgmpV3GroupRecord>
groupRecordIs( GroupSpec const& spec, Zornet::IpAddr const& group, Igmp::IgmpHost& host );

} // namespace Agent
