#pragma once

namespace Igmp {

/// Declares the types of the host model to introspection. Does nothing when done before, or while
/// introspection is not live: a later call may try again.
void kivInitIgmpHost();

} // namespace Igmp
