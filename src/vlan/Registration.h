#pragma once

namespace Zornet {

/// Declares the VLAN classes to introspection. Does nothing when done before, or while introspection is not
/// live: a later call may try again.
void kivInitVlanTaggingPam();

} // namespace Zornet
