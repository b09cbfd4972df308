#include <gmock/gmock.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"
#include "tests/support/Namespace.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

/// The real command over one file, s.yaml.
class CheckVerb : public ::testing::Test {
  protected:
    /// The exit status; both streams are kept, without the folder's name.
    int check( std::string const& text, std::vector<std::string> const& options = {} ) {
        std::vector<std::string> arguments{ "check", folder_.fileWith( "s.yaml", text ) };
        arguments.insert( arguments.end(), options.begin(), options.end() );
        AgentProcess agent( arguments );
        int const status = agent.exitStatus();
        output_ = withoutFolder( agent.written( AgentProcess::output ) );
        errors_ = withoutFolder( agent.written( AgentProcess::errors ) );
        return status;
    }

    std::string output_;
    std::string errors_;

  private:
    std::string withoutFolder( std::string text ) const {
        std::string const folder = folder_.path().string() + "/";
        for ( std::size_t at = text.find( folder ); at != std::string::npos; at = text.find( folder ) ) {
            text.erase( at, folder.size() );
        }
        return text;
    }

    TemporaryFolder folder_;
};

constexpr char bench[] = R"(
defaults: { deviceName: eth0, ns: blue }
duration: 60
hosts:
  - { name: rx, count: 3, ipAddr: 10.0.0.1, macAddr: 02:00:00:00:00:01, groups: [ 239.1.1.1, 239.1.2.0/24 ] }
  - { name: new, ipAddr: 10.0.0.9, macAddr: 02:00:00:00:00:09, igmpVersion: 3, groups: 239.1.2.0/23 }
  - { name: vlan, count: 4, ipAddr: 10.0.1.1, macAddr: 02:00:00:00:01:01, tagged: true, vlanId: 100, vlanStep: 2 }
)";

TEST_F( CheckVerb, TellsWhatWouldExist ) {
    EXPECT_EQ( check( bench ), 0 );
    EXPECT_EQ( errors_, "" );
    EXPECT_EQ(
        output_,
        "hosts:          8 (7 of version 2, 1 of version 3)\n"
        "groups:         513, in 1,283 memberships\n"
        "device:         eth0 in namespace blue: 8 hosts, 4 of them untagged, VLAN 100, 102, 104, 106\n"
        "duration:       60 s\n"
        "first reports:  774 when the hosts start\n"
    );
}

TEST_F( CheckVerb, TellsOfAShare ) {
    EXPECT_EQ( check( bench, { "--shard", "1/3" } ), 0 );
    EXPECT_EQ(
        output_, "hosts:          3 of 8, share 1/3 (2 of version 2, 1 of version 3)\n"
                 "groups:         513, in 769 memberships\n"
                 "device:         eth0 in namespace blue: 3 hosts, 2 of them untagged, VLAN 104\n"
                 "duration:       60 s\n"
                 "first reports:  260 when the hosts start\n"
    );
}

TEST_F( CheckVerb, TellsTheSameAsJson ) {
    EXPECT_EQ( check( bench, { "--json" } ), 0 );
    auto const scenario = nlohmann::json::parse( output_ ).at( "scenario" );
    EXPECT_EQ( scenario["hosts"], 8 );
    EXPECT_EQ( scenario["hostsOfVersion"]["2"], 7 );
    EXPECT_EQ( scenario["memberships"], 1283 );
    EXPECT_EQ( scenario["devices"][0]["vlans"], "100, 102, 104, 106" );
    EXPECT_EQ( scenario["firstReports"], 774 );
    EXPECT_EQ( scenario["duration"], 60 );
}

constexpr char regretted[] =
    "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, robustness: 0 } ]";

TEST_F( CheckVerb, WarnsAndSucceeds ) {
    EXPECT_EQ( check( regretted ), 0 );
    EXPECT_EQ(
        errors_, "s.yaml:1:99: warning: robustness: 0 ends the process when sources change in version 3\n"
    );
}

TEST_F( CheckVerb, StrictTakesWarningsForErrors ) {
    EXPECT_EQ( check( regretted, { "--strict" } ), 2 );
    EXPECT_EQ( check( bench, { "--strict" } ), 0 );
}

TEST_F( CheckVerb, EveryErrorIsTold ) {
    EXPECT_EQ( check( "hosts:\n  - name: a\n    mtuu: 1\n    tagged: 7\nseeds: 3\n" ), 2 );
    EXPECT_EQ( output_, "" );
    EXPECT_EQ(
        errors_, "s.yaml:3:5: error: unknown key 'mtuu' in a host; did you mean 'mtu'?\n"
                 "s.yaml:4:13: error: tagged: expected true or false, found '7'\n"
                 "s.yaml:5:1: error: unknown key 'seeds' in a scenario; did you mean 'seed'?\n"
    );
}

constexpr char mixed[] = R"(
hosts:
  - { name: a, ipAddr: 10.0.0.1, macAddr: 02:00:00:00:00:01, deviceName: eth0, robustness: 0 }
  - { name: b, robustness: 0, groups: { multicastAddr: 239.1.1.1, filterMode: excluded } }
events:
  - { at: 1, hosts: a, set: { mtu: 20 } }
  - { at: 1, hosts: a, set: { mtu: 19, robustness: many } }
)";

/// What has an error itself is not looked at: its missing value would draw warnings of its own.
TEST_F( CheckVerb, WarningsAreToldBesideErrors ) {
    EXPECT_EQ( check( mixed ), 2 );
    EXPECT_EQ(
        errors_, "s.yaml:4:79: error: filterMode: expected IgmpV3GroupRecordType, one of include, exclude, "
                 "MODE_IS_INCLUDE, MODE_IS_EXCLUDE, CHANGE_TO_INCLUDE_MODE, CHANGE_TO_EXCLUDE_MODE, "
                 "ALLOW_NEW_SOURCES, BLOCK_OLD_SOURCES, found 'excluded'\n"
                 "s.yaml:7:52: error: robustness: expected a whole number from 0 to 4294967295, found "
                 "'many'\n"
                 "s.yaml:3:92: warning: robustness: 0 ends the process when sources change in version 3\n"
                 "s.yaml:6:36: warning: mtu: below 58, headers and a record with a source, a report ends the "
                 "process\n"
    );
    EXPECT_EQ( check( mixed, { "--json" } ), 2 );
    EXPECT_EQ( nlohmann::json::parse( output_ ).at( "errors" ).size(), 2U );
    EXPECT_EQ( nlohmann::json::parse( output_ ).at( "warnings" ).size(), 2U );
}

TEST_F( CheckVerb, FaultyDefaultsDrawNoWarningsOfHosts ) {
    EXPECT_EQ( check( "defaults: { deviceName: eth0, macAddr: none }\nhosts: [ { name: a } ]\n" ), 2 );
    EXPECT_THAT( errors_, ::testing::Not( ::testing::HasSubstr( "warning" ) ) );
}

TEST_F( CheckVerb, JsonHasErrorsAndWarningsWithTheirPlaces ) {
    EXPECT_EQ( check( "hosts: [ { name: a, mtu: x } ]", { "--json" } ), 2 );
    auto const error = nlohmann::json::parse( output_ ).at( "errors" ).at( 0 );
    EXPECT_EQ( error["file"], "s.yaml" );
    EXPECT_EQ( error["line"], 1 );
    EXPECT_EQ( error["column"], 26 );
    EXPECT_EQ( check( regretted, { "--json" } ), 0 );
    EXPECT_EQ( nlohmann::json::parse( output_ ).at( "warnings" ).at( 0 ).at( "endsProcess" ), true );
    EXPECT_EQ( errors_, "" );
}

TEST_F( CheckVerb, FolderIsNoScenario ) {
    TemporaryFolder const folder;
    AgentProcess agent( { "check", folder.path().string() } );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        folder.path().string() + ": error: cannot be read: Is a directory\n"
    );
}

/// Of a scenario that comes when somebody has lost patience, a second and a half after he began to wait for
/// it, with all that a terminal is sent.
TEST( CheckOnATerminal, TellsHowFarItIsAndTakesThatAway ) {
    TemporaryFolder const folder;
    std::string const pipe = folder.file( "s.yaml" );
    ASSERT_EQ( mkfifo( pipe.c_str(), S_IRUSR | S_IWUSR ), 0 );
    std::string const told = Support::outputOf(
        "( exec 3>" + pipe + "; sleep 1.6; echo 'hosts: [ { name: a } ]' >&3 ) & script -qec '" +
        Support::agentBinary() + " check " + pipe + "' /dev/null </dev/null"
    );
    EXPECT_THAT(
        told, ::testing::StartsWith( "\rigmphost: 0 of 1 entries of hosts read\x1b[K\r\x1b[K" + pipe + ":1:" )
    );
}

} // namespace

} // namespace Agent
