#include "agent/scenario/schema/Schema.h"

#include <array>
#include <cstdio>

#include "agent/scenario/reading/SettingReader.h"
#include "model/IgmpHostStatus.h"
#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"
#include "tests/agent/scenario/ScenarioTexts.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

/// What an independent validator says of scenarios by the schema that the command prints, held against what
/// the reader says.
class Schema : public ::testing::Test {
  protected:
    /// "valid" or "invalid" for each of the files.
    std::vector<std::string> judge( std::vector<std::string> const& paths ) {
        AgentProcess agent( { "schema" } );
        EXPECT_EQ( agent.exitStatus(), 0 );
        std::string command = "/usr/bin/python3 " + Support::sourceFolder() +
                              "/tests/agent/scenario/schema/judge.py " +
                              folder_.fileWith( "schema.json", agent.written( AgentProcess::output ) );
        for ( std::string const& path : paths ) {
            command += " " + path;
        }
        std::vector<std::string> verdicts;
        FILE* const pipe = popen( command.c_str(), "r" );
        std::array<char, 100> line{};
        while ( fgets( line.data(), line.size(), pipe ) ) {
            verdicts.emplace_back( line.data(), std::string_view( line.data() ).find( '\n' ) );
        }
        EXPECT_EQ( pclose( pipe ), 0 );
        return verdicts;
    }
    /// Each text, by the schema and by the reader.
    void expectAll( std::vector<std::string> const& texts, bool valid ) {
        std::vector<std::string> paths;
        for ( std::string const& text : texts ) {
            paths.push_back( folder_.fileWith( std::to_string( paths.size() ) + ".yaml", text ) );
            EXPECT_EQ( errorsOf( text ).empty(), valid ) << text;
        }
        std::vector<std::string> const verdicts = judge( paths );
        ASSERT_EQ( verdicts.size(), texts.size() );
        for ( std::size_t i = 0; i < texts.size(); ++i ) {
            EXPECT_EQ( verdicts[i], valid ? "valid" : "invalid" ) << texts[i];
        }
    }
    static std::string withHost( std::string const& keys ) { return "hosts: [ { name: a, " + keys + " } ]"; }

    TemporaryFolder folder_;
};

TEST_F( Schema, TakesEveryExample ) {
    std::vector<std::string> paths;
    for ( auto const& entry :
          std::filesystem::recursive_directory_iterator( Support::sourceFolder() + "/examples" ) ) {
        if ( entry.path().extension() == ".yaml" ) {
            paths.push_back( entry.path().string() );
        }
    }
    EXPECT_GE( paths.size(), 10U );
    EXPECT_EQ( judge( paths ), std::vector<std::string>( paths.size(), "valid" ) );
}

TEST_F( Schema, TakesWhatTheReaderTakes ) {
    expectAll(
        { withHost( "count: 3, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', tagged: true, vlanStep: 1" ),
          withHost( "igmpVersion: 3, direction: egress, v1RouterPresentTimeout: .inf" ),
          withHost( "igmpVersion: igmpVersion2, unsolicitedReportInterval: 0.5" ),
          withHost( "groups: 239.1.1.1" ), withHost( "groups: [ 239.1.0.0/24, 239.2.1.1-239.2.1.9 ]" ),
          withHost( "groups: { multicastAddr: 239.1.1.1, count: 5, step: 2, filterMode: exclude }" ),
          withHost(
              "groups: [ { multicastAddr: 239.1.1.1, sources: [ 10.0.0.1, { sourceIp: 10.0.1.0/24 } ] } ]"
          ),
          withHost( "mtu: 900" ) + "\ndefaults: { deviceName: eth0 }\nseed: 5\nduration: 1.5\nshard: 1/2\n"
                                   "$schema: igmphost.json",
          withHost( "mtu: 900" ) + "\nevents:\n  - { at: 1, hosts: a, join: 239.1.1.0/30, rate: 5/s }\n"
                                   "  - { at: 2, every: 3, times: 4, jitter: 0.5, set: { robustness: 3 } }\n"
                                   "  - { at: 3, zap: { groups: 239.2.0.0/28, dwell: 2 } }\n"
                                   "  - { at: 4, flap: { down: 1, up: 2 } }\n"
                                   "  - { at: 5, add: { name: b, ipAddr: 10.0.0.2 } }\n"
                                   "  - { at: 6, hosts: b, delete: true }\n"
                                   "expect:\n  - { hosts: a, v2ReportsSent: '>= 2', igmpVersion: 2 }\n",
          withHost( "mtu: 900.0, count: 2.0, igmpVersion: 2.0" ) +
              "\nevents: [ { at: 1, rate: 0.5/s, enable: true }, { at: 1, rate: .5e1/min, enable: true } ]\n"
              "expect: [ { v2ReportsSent: 2.0, igmpVersion: 2.0, unsolicitedReportInterval: .inf } ]",
          withHost( "intfId: 5, igmpVersion: '2', ns: 7, v1RouterPresentTimeout: 'inf'" ),
          withHost( "mtu: 900" ) +
              "\nevents:\n  - { at: 1, times: 2, zap: { groups: 239.1.1.1, dwell: 1 } }\n"
              "  - { at: 2, hosts: a, add: true }\n  - { at: 3, hosts: a, disable: }\n"
              "  - { at: 4, rate: '5', enable: true }\n"
              "expect: [ { hosts: a, total: true, v2ReportsSent: 1 }, { total: false, igmpVersion: 2 } ]",
          withHost( "mtu: 900" ) + "\nexpect:\n  - { v2ReportsSent: '2', igmpVersion: '!= igmpVersion2' }\n"
                                   "  - { unsolicitedReportInterval: '< inf' }\n"
                                   "  - { at: 3, within: 1, bridge: { device: 0, groupCount: '> 2' } }\n" },
        true
    );
}

TEST_F( Schema, RefusesWhatTheReaderRefuses ) {
    expectAll(
        { withHost( "mtuu: 5" ),
          withHost( "mtu: big" ),
          withHost( "mtu: 4294967296" ),
          withHost( "vlanId: 65536" ),
          withHost( "v1MaxResponseTime: 256" ),
          withHost( "tagged: 7" ),
          withHost( "direction: up" ),
          withHost( "igmpVersion: 4" ),
          withHost( "ipAddr: 10.0.0.300" ),
          withHost( "macAddr: '02:00'" ),
          withHost( "count: 0" ),
          withHost( "groups: 239.1.1" ),
          withHost( "groups: 239.1.1.0/33" ),
          withHost( "groups: [ { count: 2 } ]" ),
          withHost( "groups: [ { multicastAddr: 239.1.1.1, file: x } ]" ),
          withHost( "groups: [ { multicastAddr: 239.1.1.1, version: 3 } ]" ),
          withHost( "externalPam: true" ),
          withHost( "mtu: '900'" ),
          withHost( "tagged: 'true'" ),
          withHost( "count: \"3\"" ),
          withHost( "unsolicitedReportInterval: '1.5'" ),
          withHost( "v1RouterPresentTimeout: '.inf'" ),
          withHost( "groups: { multicastAddr: 239.1.1.1, count: '2' }" ),
          withHost( "groups: { file: x, count: 2 }" ),
          withHost( "mtu: 900" ) + "\nduration: '5'",
          withHost( "mtu: 900" ) + "\nseed: '5'",
          withHost( "mtu: 900" ) + "\nquerier: { device: x, interval: '5' }",
          withHost( "mtu: 900" ) + "\nevents: [ { at: '1', enable: true } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, enable: 'true' } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, times: 2, enable: true } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, every: 2, flap: { down: 1, up: 1 } } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, hosts: b, add: { name: b } } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, set: {} } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { at: 1, within: '1', v2ReportsSent: 1 } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { hosts: a, bridge: { device: b, groupCount: 2 } } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { total: true, igmpVersion: 2 } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { bridge: { device: b, groupCount: '=> 2' } } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { v2ReportsSent: '2.0' } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { v2ReportsSent: 2.5 } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, rate: 0/s, enable: true } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, rate: '0.0', enable: true } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, rate: 1.2.3/s, enable: true } ]",
          withHost( "igmpVersion: '2.0'" ),
          withHost( "mtu: 900.5" ),
          "hosts: [ { mtu: 900 } ]",
          "hosts: 5",
          "- a",
          "host: []",
          withHost( "mtu: 900" ) + "\nshard: 0/2",
          withHost( "mtu: 900" ) + "\nduration: 0",
          withHost( "mtu: 900" ) + "\ndefaults: { name: b }",
          withHost( "mtu: 900" ) + "\nevents: [ { at: -1, enable: true } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, sett: { mtu: 5 } } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, join: 239.1.1.1, leave: 239.1.1.2 } ]",
          withHost( "mtu: 900" ) + "\nevents: [ { at: 1, hosts: a } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { v2ReportSent: 2 } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { v2ReportsSent: '=> 2' } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { igmpVersion: '> 2' } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { at: 3 } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { within: 3, v2ReportsSent: 2 } ]",
          withHost( "mtu: 900" ) + "\nexpect: [ { bridge: { device: br0 } } ]" },
        false
    );
}

/// Whoever adds an attribute describes it.
TEST( AttributeHelp, IsThereForEachThatUsersMeet ) {
    std::vector<Kiv::Attribute const*> met(
        settableHostAttributes().begin(), settableHostAttributes().end()
    );
    met.insert( met.end(), settableGroupAttributes().begin(), settableGroupAttributes().end() );
    for ( Kiv::Attribute const& row : Igmp::IgmpHostStatus::attributes() ) {
        met.push_back( &row );
    }
    for ( Kiv::Attribute const* const row : met ) {
        ASSERT_NE( row->help, nullptr ) << row->name;
        EXPECT_GE( std::string_view( row->help ).size(), 10U ) << row->name;
    }
}

TEST( AttributeHelp, IsInTheSchemaWithTheDefault ) {
    Json const mtu = scenarioSchema()["definitions"]["host"]["properties"]["mtu"];
    EXPECT_EQ(
        mtu.dump(),
        R"({"type":"integer","minimum":0,"maximum":4294967295,"description":"Size limit of a sent frame )"
        R"(in bytes, headers included; below 65536","default":1514})"
    );
}

TEST( EnumerationTexts, AreAllTakenByTheParser ) {
    for ( Kiv::Attribute const* const row : settableHostAttributes() ) {
        for ( std::string const& text : row->type->texts() ) {
            EXPECT_NO_THROW( row->type->parse( text ) ) << row->name << ": " << text;
        }
    }
}

} // namespace

} // namespace Agent
