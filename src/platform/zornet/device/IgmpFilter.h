#pragma once

#include <linux/filter.h>

#include <span>

namespace Zornet {

/// The kernel's filter for a receiving socket: passes IPv4 frames of protocol IGMP behind no tag, one or two,
/// whatever else may be wrong with them, and nothing else. The kernel has taken the outermost tag out of a
/// frame before the filter sees it, so that one tag at most is left to look behind.
std::span<sock_filter const> igmpFilter();

} // namespace Zornet
