#include "platform/zornet/IgmpCommonHdr.h"

#include <ostream>

#include "platform/zornet/Checksum.h"

namespace Zornet {

IpChecksum
IgmpCommonHdr::computedChecksum( U16 length ) const {
    return ipChecksumCalc( reinterpret_cast<char const*>( this ), length, 0 );
}

std::ostream&
operator<<( std::ostream& out, IgmpCommonHdr const& hdr ) {
    return out << hdr.messageType() << " code " << +hdr.unused() << " checksum " << hdr.checksum();
}

} // namespace Zornet
