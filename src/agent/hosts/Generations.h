#pragma once

#include <vector>

#include "agent/scenario/Settings.h"
#include "model/IgmpHost.h"

namespace Agent {

/// The counter of a host that has to move for a change of that attribute to take effect: `configVersion` for
/// what goes into the ready-made packets, `intfConfigVersion` for what binds the host to the wire and tags
/// it. Null for what acts at once.
Kiv::Attribute const* generationOf( Kiv::AttributeId attribute );

/// A counter's next value; never 0, which stands for "nothing yet". Only a change counts, so a writer that is
/// not alone takes a step of its own: two that raise a counter at the same time would otherwise set the same
/// number, and what the second has changed would wait for the next change.
Kiv::U32 nextGeneration( Kiv::U32 present, Kiv::U32 step = 1 );

/// Sets attributes of a host, then raises once each counter that these need and that is not among them, then
/// enables or disables the host where that is asked for. A counter moves even where no value is another, so
/// that a change which was cut off can be repeated. Returns the counters that were raised.
std::vector<Kiv::Attribute const*>
setHost( Igmp::IgmpHost& host, Settings const& settings, Kiv::U32 step = 1 );

} // namespace Agent
