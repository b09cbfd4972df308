#pragma once

#include <vector>

#include "tests/support/Child.h"
#include "tests/support/PacketEnd.h"

namespace Support {

/// A process that sends a frame through a device again and again, as long as this lives or until it is told
/// to stop.
class Flood {
  public:
    /// As fast as the device carries.
    static constexpr double unlimited = 0.0;

    Flood( Namespace const& ns, char const* device, Bytes const& frame, double perSecond );

    /// Ends it. Returns how many frames the device has taken.
    Zornet::U64 stop();

  private:
    Child child_;
};

} // namespace Support
