#pragma once

#include "engine/IgmpHostSm.h"

namespace Support {

/// What must hold at any moment between the configuration of a host, its machine, its companions and its
/// status, once every change has been told. Gives what does not hold, or null. With periodic reports, now or
/// since the host was enabled, the version in force and the timers at rest are not judged: what is
/// remembered and what is in force may part then.
char const* hostFault( Igmp::IgmpHostSm const& sm, bool everPeriodic = false );

/// What does not hold between the groups that owe something and those that the next report asks, or null.
/// This holds whatever has been told.
char const* owingFault( Igmp::IgmpV3HostAggregatedSenderSm const& sender );

/// How many timers of the wheel the host has armed, by what its machines say.
std::size_t armedTimers( Igmp::IgmpHostSm const& sm );

/// Groups of which the machine keeps what it has announced, though the configuration has them no longer.
std::size_t leavingGroups( Igmp::IgmpHostSm const& sm );

/// Where the parts of the ready-made packets that no report changes differ from the configuration, or null.
/// That must have been followed by a new `configVersion`.
char const* templateFault( Igmp::IgmpHostSm const& sm );

} // namespace Support
