#pragma once

namespace Igmp {

/// Declares the state machines and the root to introspection, as kivInitIgmpHost() does the host model.
void kivInitIgmpHostSm();

} // namespace Igmp
