#include "agent/demo/DemoReport.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "agent/output/Grouped.h"

namespace Agent {

using Igmp::IgmpHostStatus;

namespace {

void
printRow( std::ostream& out, char const* what, std::string const& left, std::string const& right ) {
    out << std::left << std::setw( 20 ) << what << std::right << std::setw( 22 ) << left << std::setw( 22 )
        << right << '\n';
}

void
printRow( std::ostream& out, char const* what, Kiv::U64 left, Kiv::U64 right ) {
    printRow( out, what, grouped( left ), grouped( right ) );
}

} // namespace

void
DemoReport::querierIs( Lab::Querier const& querier, Membership const& configured, std::string const& link ) {
    Lab::QuerierCounters const& counters = querier.counters();
    heard_.v1Reports += counters.v1Reports;
    heard_.v2Reports += counters.v2Reports;
    heard_.v2Leaves += counters.v2Leaves;
    heard_.v3Reports += counters.v3Reports;
    queries_ += counters.generalQueriesSent + counters.groupQueriesSent + counters.groupSourceQueriesSent;
    Membership const learned = learnedMembership( querier );
    configuredGroups_ += configured.size();
    learnedGroups_ += learned.size();
    for ( std::string const& difference : differences( configured, learned ) ) {
        differences_.push_back( link + difference );
    }
}

void
DemoReport::print( std::ostream& out ) const {
    Kiv::U64 const v3Reports = hosts_.counter( IgmpHostStatus::attrV3CurrentStateReportSent ) +
                               hosts_.counter( IgmpHostStatus::attrV3StateChangeReportSent );
    printRow( out, "", "hosts have sent", "querier has heard" );
    printRow(
        out, "version 1 reports", hosts_.counter( IgmpHostStatus::attrV1ReportsSent ), heard_.v1Reports
    );
    printRow(
        out, "version 2 reports", hosts_.counter( IgmpHostStatus::attrV2ReportsSent ), heard_.v2Reports
    );
    printRow( out, "version 2 leaves", hosts_.counter( IgmpHostStatus::attrV2LeavesSent ), heard_.v2Leaves );
    printRow( out, "version 3 reports", v3Reports, heard_.v3Reports );
    printRow( out, "", "hosts have heard", "querier has sent" );
    printRow( out, "queries", hosts_.queriesHeard(), queries_ );
    printRow( out, "", "hosts want", "querier has learned" );
    printRow( out, "groups", configuredGroups_, learnedGroups_ );

    constexpr std::size_t most = 10;
    for ( std::size_t i = 0; i < std::min( most, differences_.size() ); ++i ) {
        out << differences_[i] << '\n';
    }
    if ( agrees() ) {
        out << "The querier has learned exactly what is configured.\n";
    } else {
        out << "The querier's table and the configuration differ in " << differences_.size() << " groups.\n";
    }
}

} // namespace Agent
