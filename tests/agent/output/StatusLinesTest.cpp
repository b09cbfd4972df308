#include "agent/output/StatusLines.h"

#include <gmock/gmock.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/agent/CableTest.h"
#include "tests/agent/HostsBench.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Json = nlohmann::json;

RunView
someView() {
    RunView view;
    view.elapsed = 20.0;
    view.hosts = 1000;
    view.account.hosts = 999;
    view.account.hostsByVersion = { 0, 0, 990, 9 };
    view.account.groups = 12345;
    view.timersArmed = 7;
    view.devices["blue/veth1"].traffic = { 30, 4000, 1, 2 };
    view.all = { view.devices["blue/veth1"].traffic, 1.5, 200.4 };
    view.account.counters.at( 5 ) = 4000;
    return view;
}

TEST( StatusText, TellsHostsAndFrames ) {
    EXPECT_EQ(
        statusText( someView() ), "20 s: 1,000 hosts (v2 990, v3 9), 12,345 groups, 7 timers; sent 4,000 "
                                  "(200/s), received 30 (2/s), lost 3"
    );
}

TEST( StatusText, HostsThatAreAllDisabledAreToldAsSuch ) {
    EXPECT_THAT( statusText( {} ), HasSubstr( "0 hosts (none enabled)" ) );
}

TEST( StatusJson, HasEveryCounterByItsName ) {
    Json const json = Json::parse( statusJson( someView() ) );
    EXPECT_EQ( json["elapsed"], 20.0 );
    EXPECT_EQ( json["enabledHosts"], 999 );
    EXPECT_EQ( json["hostsByVersion"]["3"], 9 );
    EXPECT_EQ( json["totals"]["v2ReportsSent"], 4000 );
    EXPECT_EQ( json["totals"].size(), StatusLedger::counterRows().size() );
    EXPECT_EQ( json["devices"]["blue/veth1"]["framesSent"], 4000 );
    EXPECT_EQ( json["devices"]["blue/veth1"]["framesLostSending"], 2 );
}

TEST( Summary, TellsWhatWasCountedAndLeavesOutWhatWasNot ) {
    std::ostringstream out;
    printSummary( out, someView() );
    EXPECT_THAT( out.str(), HasSubstr( "igmphost:   v2ReportsSent                                4,000\n" ) );
    EXPECT_THAT( out.str(), HasSubstr( "igmphost: frames on blue/veth1\n" ) );
    EXPECT_THAT( out.str(), Not( HasSubstr( "v1ReportsSent" ) ) );
}

class StatusLinesTest : public HostsBench {
  protected:
    StatusLinesTest() : outer_( std::cerr.rdbuf( out_.rdbuf() ) ) {}
    ~StatusLinesTest() override { std::cerr.rdbuf( outer_ ); }

    std::ostringstream out_;
    std::streambuf* outer_;
};

TEST_F( StatusLinesTest, LineForPersonsComesEveryTenSeconds ) {
    hostsAre( "hosts: [ { name: a, igmpVersion: 2, deviceName: eth0, groups: [ 239.1.1.1 ] } ]" );
    StatusLines lines( context_ );
    lines.handleStarted();
    runFor( 9.9 );
    EXPECT_EQ( out_.str(), "" );
    runFor( 10.2 );
    EXPECT_THAT( out_.str(), HasSubstr( "igmphost: 10 s: 1 host (v2 1), 1 group, " ) );
    EXPECT_THAT( out_.str(), HasSubstr( "igmphost: 20 s: 1 host" ) );
}

TEST_F( StatusLinesTest, LineThatFallsOnTheEndIsWrittenOnce ) {
    hostsAre( "hosts: [ { name: a, igmpVersion: 2, deviceName: eth0, groups: [ 239.1.1.1 ] } ]" );
    options_.statusInterval = 5.0;
    std::ostringstream out;
    std::streambuf* const outer = std::cout.rdbuf( out.rdbuf() );
    StatusLines lines( context_ );
    lines.handleStarted();
    runFor( 10.0 );
    lines.handleEnded();
    std::cout.rdbuf( outer );
    std::istringstream written( out.str() );
    std::vector<double> times;
    for ( std::string line; std::getline( written, line ); ) {
        times.push_back( Json::parse( line )["elapsed"] );
    }
    EXPECT_THAT( times, ::testing::ElementsAre( 5.0, 10.0 ) );
}

TEST_F( StatusLinesTest, StartUpIsToldWhileItLasts ) {
    StatusLines( context_ ).handleProgress( { "made", 1200, 100000, 12000, 1000000 } );
    EXPECT_EQ( out_.str(), "igmphost: 1,200 of 100,000 hosts made, 12,000 of 1,000,000 groups\n" );
    StatusLines( context_ ).handleProgress( { "started", 1, 2, 0, 0 } );
    EXPECT_THAT( out_.str(), HasSubstr( "igmphost: 1 of 2 hosts started\n" ) );
}

class StatusInterval : public CableTest {};

TEST_F( StatusInterval, WritesLinesOfJsonWhileTheHostsRun ) {
    AgentProcess hosts( { "run", scenario(), "--status-interval", "0.05", "--quiet" } );
    ASSERT_TRUE( hosts.waitFor( AgentProcess::output, "\n{\"time\":" ) );
    hosts.signal( SIGTERM );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    EXPECT_EQ( hosts.written( AgentProcess::errors ), "" );
    std::istringstream lines( hosts.written( AgentProcess::output ) );
    std::size_t count = 0;
    for ( std::string line; std::getline( lines, line ); ++count ) {
        Json const json = Json::parse( line );
        EXPECT_EQ( json["hosts"], 2 );
        EXPECT_GE( json["totals"]["v2ReportsSent"], 4 );
    }
    EXPECT_GE( count, 3U );
}

TEST_F( StatusInterval, ReaderWhoGoesAwayEndsTheLinesAndNotTheHosts ) {
    AgentProcess hosts(
        { "run", scenario(), "--status-interval", "0.02", "--duration", "0.2" },
        { "sh", "-c", "exec \"$@\" >/dev/full", "sh" }
    );
    EXPECT_EQ( hosts.exitStatus(), 1 );
    EXPECT_THAT(
        hosts.written( AgentProcess::errors ),
        HasSubstr(
            "igmphost: error: the status lines end: cannot write the standard output: No space left on "
            "device; the hosts go on\n"
        )
    );
    EXPECT_THAT( hosts.written( AgentProcess::errors ), HasSubstr( "igmphost: ended after 0.2 s" ) );
}

TEST_F( StatusInterval, SummaryStandsAtTheEnd ) {
    AgentProcess hosts( { "run", scenario(), "--duration", "0.02" } );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    EXPECT_THAT( hosts.written( AgentProcess::errors ), HasSubstr( "igmphost: what the hosts counted\n" ) );
    EXPECT_THAT(
        hosts.written( AgentProcess::errors ),
        HasSubstr( "igmphost: frames on " + near_->name() + "/near0\n" )
    );
}

TEST_F( StatusInterval, QuietRunTellsNothingAndErrorsAllTheSame ) {
    AgentProcess hosts( { "run", scenario(), "--duration", "0.02", "--quiet" } );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    EXPECT_EQ( hosts.written( AgentProcess::errors ), "" );
    AgentProcess faulty( { "run", "/nowhere/s.yaml", "--quiet" } );
    EXPECT_EQ( faulty.exitStatus(), 2 );
    EXPECT_THAT( faulty.written( AgentProcess::errors ), HasSubstr( "/nowhere/s.yaml: error: " ) );
}

TEST_F( StatusInterval, LogFormatJsonMakesAnObjectOfEachLine ) {
    AgentProcess hosts( { "run", scenario( "    robustness: 0\n" ), "--duration", "0.02", "--log-format",
                          "json" } );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    std::istringstream lines( hosts.written( AgentProcess::errors ) );
    std::map<std::string, int> levels;
    for ( std::string line; std::getline( lines, line ); ) {
        ++levels[Json::parse( line )["level"]];
    }
    EXPECT_EQ( levels["warning"], 1 );
    EXPECT_GE( levels["info"], 3 );
}

} // namespace

} // namespace Agent
