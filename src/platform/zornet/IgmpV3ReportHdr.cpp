#include "platform/zornet/IgmpV3ReportHdr.h"

#include <ostream>

namespace Zornet {

std::ostream&
operator<<( std::ostream& out, IgmpV3ReportHdr const& hdr ) {
    return out << static_cast<IgmpCommonHdr const&>( hdr ) << " group records " << hdr.numGroupRecords();
}

} // namespace Zornet
