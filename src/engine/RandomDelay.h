#pragma once

#include "platform/kiv/Types.h"

namespace Igmp {

/// A random delay of at least a tenth of `maxSecs` and less than all of it, from the process-wide generator.
/// The lowest tenth is folded onto the next one by adding a tenth, not drawn again, so that stretch is twice
/// as likely: on purpose.
Kiv::Seconds randomDelay( Kiv::Seconds maxSecs );

/// Starts the process-wide generator anew from the clock's whole seconds. Every new host does so, and with it
/// restarts the sequence of all hosts: on purpose.
void seedRandomDelays();

} // namespace Igmp
