#pragma once

#include "model/IgmpHost.h"

namespace Igmp {

/// Spreads the record of `group` over the block of `replicateNumber` consecutive addresses that it begins:
/// every group of the host outside the block goes, and every address inside gets a copy. A missing template
/// does nothing.
void replicateGroupOver( Ptr<IgmpHost> const& host, Zornet::IpAddr const& group );

} // namespace Igmp
