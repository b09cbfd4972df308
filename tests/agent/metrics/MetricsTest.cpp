#include <csignal>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>

#include "agent/metrics/MetricsAddress.h"
#include "agent/metrics/RunMetrics.h"
#include "tests/agent/CableTest.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using Json = nlohmann::json;

/// Reads an exposition with the parser of another project, and holds the names against its conventions.
/// Prints {name: {"type": …, "samples": [[labels, value], …]}}.
constexpr char parser[] = R"(
import json, re, sys, urllib.request
from prometheus_client.parser import text_string_to_metric_families as parse
text = urllib.request.urlopen( sys.argv[1], timeout=20 ).read().decode()
families = {}
ofServer = set()
for family in parse( text ):
    if family.name.startswith( 'exposer_' ):
        ofServer.add( family.name )
        continue
    assert re.fullmatch( 'igmphost_[a-z0-9_]+', family.name ), family.name
    assert family.documentation, family.name
    assert family.type in ( 'counter', 'gauge' ), family.name
    assert family.name not in families, family.name
    for sample in family.samples:
        assert ( family.type == 'counter' ) == sample.name.endswith( '_total' ), sample.name
    families[family.samples[0].name if family.samples else family.name] = {
        'type': family.type, 'samples': [[sample.labels, sample.value] for sample in family.samples]}
assert ofServer == { 'exposer_transferred_bytes', 'exposer_scrapes', 'exposer_request_latencies' }, ofServer
print( json.dumps( families ) )
)";

class Metrics : public CableTest {
  protected:
    /// What a running command serves, once it has said where.
    Json served( AgentProcess& agent ) const {
        std::string const& text = agent.written( AgentProcess::errors );
        std::smatch found;
        EXPECT_TRUE( std::regex_search( text, found, std::regex( "metrics at (http://[^\n]*)" ) ) ) << text;
        folder_.fileWith( "parse.py", parser );
        return Json::parse(
            Support::outputOf( "/usr/bin/python3 " + folder_.file( "parse.py" ) + " " + found[1].str() )
        );
    }
    std::vector<std::string> run( std::vector<std::string> const& more ) const {
        std::vector<std::string> arguments{ "run", scenario(), "--metrics", ":0" };
        arguments.insert( arguments.end(), more.begin(), more.end() );
        return arguments;
    }
    std::string device() const { return near_->name() + "/near0"; }
};

TEST_F( Metrics, AreReadByAnotherParserAndTellTheHosts ) {
    AgentProcess agent( run( {} ) );
    ASSERT_TRUE( hasBegun( agent ) );
    Json const metrics = served( agent );
    Json const hosts = metrics["igmphost_hosts"]["samples"];
    EXPECT_THAT(
        hosts,
        ::testing::Contains( Json::parse( R"([{"device": ")" + device() + R"(", "version": "2"}, 2.0])" ) )
    );
    EXPECT_GE( metrics["igmphost_v2_reports_sent_total"]["samples"][0][1], 4.0 );
    EXPECT_GE( metrics["igmphost_frames_sent_total"]["samples"][0][1], 4.0 );
    EXPECT_EQ( metrics["igmphost_groups"]["samples"][0][1], 4.0 );
    EXPECT_FALSE( metrics.contains( "igmphost_host_igmp_version" ) );
    for ( auto const& [name, metric] : metrics.items() ) {
        for ( Json const& sample : metric["samples"] ) {
            EXPECT_FALSE( sample[0].contains( "host" ) ) << name;
        }
    }
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

TEST_F( Metrics, TellEveryAttributeOfEveryHostWhereAsked ) {
    AgentProcess agent( run( { "--metrics-per-host" } ) );
    ASSERT_TRUE( hasBegun( agent ) );
    Json const metrics = served( agent );
    std::size_t perHost = 0;
    for ( auto const& [name, metric] : metrics.items() ) {
        if ( name.rfind( "igmphost_host_", 0 ) == 0 ) {
            ++perHost;
            EXPECT_EQ( metric["samples"].size(), 2U ) << name;
        }
    }
    EXPECT_EQ( perHost, Igmp::IgmpHostStatus::attributes().size() );
    EXPECT_EQ( metrics["igmphost_host_igmp_version"]["samples"][0][1], 2.0 );
    EXPECT_EQ( metrics["igmphost_host_unsolicited_report_interval_seconds"]["samples"][0][1], 10.0 );
}

TEST_F( Metrics, EveryMetricOfTheDashboardIsServed ) {
    std::ifstream in( Support::sourceFolder() + "/examples/grafana-dashboard.json" );
    std::string const dashboard( std::istreambuf_iterator<char>( in ), {} );
    AgentProcess agent( run( {} ) );
    ASSERT_TRUE( hasBegun( agent ) );
    Json const metrics = served( agent );
    std::regex const name( "igmphost_[a-z0-9_]+" );
    std::size_t queries = 0;
    for ( std::sregex_iterator at( dashboard.begin(), dashboard.end(), name ), end; at != end; ++at ) {
        EXPECT_TRUE( metrics.contains( at->str() ) ) << at->str();
        ++queries;
    }
    EXPECT_GT( queries, 8U );
}

TEST_F( Metrics, PortInUseIsToldBeforeAnythingBegins ) {
    AgentProcess first( run( {} ) );
    ASSERT_TRUE( hasBegun( first ) );
    std::smatch port;
    ASSERT_TRUE( std::regex_search(
        first.written( AgentProcess::errors ), port, std::regex( "127\\.0\\.0\\.1:([0-9]+)/metrics" )
    ) );
    AgentProcess second( { "run", scenario(), "--metrics", ":" + port[1].str() } );
    EXPECT_EQ( second.exitStatus(), 1 );
    EXPECT_EQ(
        second.written( AgentProcess::errors ),
        "igmphost: error: cannot serve metrics on 127.0.0.1:" + port[1].str() + ": Address already in use\n"
    );
}

TEST_F( Metrics, AddressThatIsNoneIsWrongUsage ) {
    AgentProcess agent( { "run", scenario(), "--metrics", "9464" } );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( "--metrics: expected ADDRESS:PORT such as 127.0.0.1:9464 or :9464, found '9464'\n" )
    );
}

TEST( MetricsAddress, WithoutAddressIsTheLoopback ) {
    EXPECT_EQ( metricsAddressOf( ":9464" ).text(), "127.0.0.1:9464" );
    EXPECT_EQ( metricsAddressOf( "0.0.0.0:80" ).text(), "0.0.0.0:80" );
    for ( char const* const text : { "", ":", ":x", ":70000", "a:80", "1.2.3.4" } ) {
        EXPECT_THROW( metricsAddressOf( text ), Kiv::RangeException ) << text;
    }
}

TEST( MetricName, IsInWords ) {
    EXPECT_EQ( metricName( "v3CurrentStateReportSent" ), "v3_current_state_report_sent" );
}

} // namespace

} // namespace Agent
