#pragma once

#include <array>

#include "platform/zornet/Types.h"

namespace Zornet {

/// The Router Alert option of RFC 2113: every router on the way is to look at the packet. Constructed in
/// place behind an IpHdr.
class IpHdrRouterAlertOption {
  public:
    IpHdrRouterAlertOption() = default;

  private:
    [[maybe_unused]] std::array<U8, 4> bytes_{ 0x94, 0x04, 0x00, 0x00 };
};

static_assert( sizeof( IpHdrRouterAlertOption ) == 4 && alignof( IpHdrRouterAlertOption ) == 1 );

} // namespace Zornet
