#include "engine/IgmpV3ReportProcessInfo.h"

namespace Igmp {

void
IgmpV3ReportProcessInfo::resetValues() {
    useBookMark_ = false;
    bookMarkSourceIp_ = Zornet::IpAddr();
    numGroups_ = 0;
    recordComplete_ = true;
    scheduleTimer_ = false;
}

} // namespace Igmp
