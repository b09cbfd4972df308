#include "platform/zornet/IgmpReportGroupRecordHeader.h"

#include <ostream>

namespace Zornet {

std::ostream&
operator<<( std::ostream& out, IgmpReportGroupRecordHeader const& record ) {
    return out << record.recordType() << " " << record.mcastAddr() << " sources " << record.numSources();
}

} // namespace Zornet
