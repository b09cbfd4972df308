#include "agent/demo/DemoReport.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tests/lab/ScriptedPam.h"
#include "tests/support/SimulatedTest.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using Zornet::IpAddr;

IpAddr const G( "239.1.1.1" );
IpAddr const H( "239.1.1.2" );
Want const everything{ Lab::FilterMode::exclude, {} };

/// A querier that has heard a report for G.
class DemoReportTest : public Support::SimulatedTest {
  protected:
    DemoReportTest() {
        querier_.enabledIs( true );
        pam_->arrive( Lab::v2Report( IpAddr( "10.0.0.1" ), G ) );
    }
    std::string told() const {
        std::ostringstream out;
        report_.print( out );
        return out.str();
    }

    Kiv::Ptr<Lab::ScriptedPam> const pam_{ new Lab::ScriptedPam };
    Lab::Querier querier_{ {}, pam_, wheel() };
    DemoReport report_{ StatusLedger::Account() };
};

TEST_F( DemoReportTest, AgreesWhereTheQuerierHasLearnedWhatIsConfigured ) {
    report_.querierIs( querier_, { { G, everything } }, "" );
    EXPECT_TRUE( report_.agrees() );
    EXPECT_EQ( report_.exitStatus(), 0 );
    EXPECT_THAT( told(), HasSubstr( "The querier has learned exactly what is configured.\n" ) );
}

TEST_F( DemoReportTest, DiffersWhereAGroupIsMissing ) {
    report_.querierIs( querier_, { { G, everything }, { H, everything } }, "" );
    EXPECT_FALSE( report_.agrees() );
    EXPECT_EQ( report_.exitStatus(), 1 );
    EXPECT_THAT( told(), HasSubstr( "239.1.1.2: configured is EXCLUDE {}, learned is nothing\n" ) );
}

TEST_F( DemoReportTest, DiffersWhereAGroupIsNotConfigured ) {
    report_.querierIs( querier_, {}, "VLAN 7: " );
    EXPECT_FALSE( report_.agrees() );
    EXPECT_THAT( told(), HasSubstr( "VLAN 7: 239.1.1.1: configured is nothing, learned is EXCLUDE {}\n" ) );
}

TEST_F( DemoReportTest, OneQuerierThatDiffersIsEnough ) {
    report_.querierIs( querier_, {}, "" );
    report_.querierIs( querier_, { { G, everything } }, "" );
    EXPECT_FALSE( report_.agrees() );
}

TEST_F( DemoReportTest, TenDifferencesAreShownAndAllAreCounted ) {
    Membership configured{ { G, everything } };
    for ( Zornet::U32 i = 0; i < 12; ++i ) {
        configured[IpAddr::fromHost( H.hostOrder() + i )] = everything;
    }
    report_.querierIs( querier_, configured, "" );
    EXPECT_THAT( told(), HasSubstr( "239.1.1.11: configured" ) );
    EXPECT_THAT( told(), ::testing::Not( HasSubstr( "239.1.1.12: configured" ) ) );
    EXPECT_THAT( told(), HasSubstr( "differ in 12 groups.\n" ) );
}

TEST_F( DemoReportTest, TableShowsBothSides ) {
    Emulation const emulation( wheel() );
    for ( char const* const name : { "a", "b" } ) {
        emulation.hostDir().igmpHostIs( name );
        emulation.statusDir().igmpHostStatusIs( name );
    }
    emulation.statusDir().igmpHostStatus( "a" )->v2ReportsSentIs( 1234567 );
    emulation.statusDir().igmpHostStatus( "b" )->v2GeneralQueryReceivedIs( 2 );
    StatusLedger ledger( emulation );
    ledger.balance();
    DemoReport report( ledger.total() );
    report.querierIs( querier_, { { G, everything } }, "" );
    std::ostringstream out;
    report.print( out );
    EXPECT_THAT(
        out.str(), HasSubstr( "version 2 reports                1,234,567                     1\n" )
    );
    EXPECT_THAT(
        out.str(), HasSubstr( "queries                                  2                     1\n" )
    );
    EXPECT_THAT(
        out.str(), HasSubstr( "groups                                   1                     1\n" )
    );
}

} // namespace

} // namespace Agent
