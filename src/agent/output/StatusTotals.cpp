#include "agent/output/StatusTotals.h"

namespace Agent {

/// The general counter of version 3 counts group queries too; the others count a query once.
StatusTotals::StatusTotals( Igmp::IgmpHostStatusDir const& dir ) {
    for ( Igmp::IgmpHostStatus const& status : dir.igmpHostStatus() ) {
        v1Reports += status.v1ReportsSent();
        v2Reports += status.v2ReportsSent();
        v2Leaves += status.v2LeavesSent();
        v3Reports += status.v3CurrentStateReportSent() + status.v3StateChangeReportSent();
        queriesHeard +=
            status.v2GeneralQueryReceived() + status.v2GroupQueryReceived() + status.v3GeneralQueryReceived();
    }
}

} // namespace Agent
