#include "platform/zornet/IpMcastMacAddr.h"

namespace Zornet {

EthAddr
ipMcastMacAddr( IpAddr const& group ) {
    auto const& ip = group.bytes();
    return EthAddr( { 0x01, 0x00, 0x5e, static_cast<U8>( ip[1] & 0x7f ), ip[2], ip[3] } );
}

bool
isIpMcastMacAddr( EthAddr const& addr ) {
    auto const& mac = addr.bytes();
    return mac[0] == 0x01 && mac[1] == 0x00 && mac[2] == 0x5e && ( mac[3] & 0x80 ) == 0;
}

} // namespace Zornet
