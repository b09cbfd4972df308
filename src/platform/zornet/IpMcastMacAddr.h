#pragma once

#include "platform/zornet/EthAddr.h"
#include "platform/zornet/IpAddr.h"

namespace Zornet {

/// The Ethernet address of an IPv4 multicast group (RFC 1112 section 6.4): 01:00:5e and the low 23 bits of
/// the group.
EthAddr ipMcastMacAddr( IpAddr const& group );

/// True for every address that ipMcastMacAddr() can give.
bool isIpMcastMacAddr( EthAddr const& addr );

} // namespace Zornet
