#include "platform/zornet/IgmpV12Hdr.h"

#include <ostream>

namespace Zornet {

std::ostream&
operator<<( std::ostream& out, IgmpV12Hdr const& hdr ) {
    return out << static_cast<IgmpCommonHdr const&>( hdr ) << " group " << hdr.groupAddress();
}

} // namespace Zornet
