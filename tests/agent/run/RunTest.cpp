#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

#include "lab/Querier.h"
#include "platform/zornet/EthDevPam.h"
#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"
#include "tests/support/Namespace.h"

namespace Agent {

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using Json = nlohmann::json;

/// The real command on a cable between two namespaces.
class Run : public ::testing::Test {
  protected:
    void SetUp() override {
        if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
            GTEST_SKIP() << "needs network namespaces: " << reason;
        }
        near_ = std::make_unique<Support::Namespace>( "run-near" );
        far_ = std::make_unique<Support::Namespace>( "run-far" );
    }

    void cableIs() { vethIs( *near_, "near0", *far_, "far0" ); }
    /// A file with three hosts on the near end.
    std::string scenario( std::string const& more = "" ) {
        return folder_.fileWith(
            "s.yaml", "hosts:\n"
                      "  - name: rx\n"
                      "    count: 3\n"
                      "    ipAddr: 10.0.0.11\n"
                      "    macAddr: 02:00:00:00:00:11\n"
                      "    deviceName: near0\n"
                      "    ns: " +
                          near_->name() + "\n" + more +
                          "    groups:\n"
                          "      - { multicastAddr: 239.1.1.1, filterMode: exclude }\n"
                          "      - { multicastAddr: 239.1.2.1, filterMode: exclude, count: 10 }\n"
        );
    }
    static bool hasBegun( AgentProcess& agent ) {
        return agent.waitFor( AgentProcess::errors, "until Ctrl-C\n" );
    }
    Json statusFile() const { return Json::parse( folder_.contents( "status" ) ); }

    TemporaryFolder folder_;
    std::unique_ptr<Support::Namespace> near_;
    std::unique_ptr<Support::Namespace> far_;
};

void
expectThreeHosts( Json const& status ) {
    EXPECT_EQ( status["hosts"].size(), 3U );
    for ( char const* const host : { "rx-1", "rx-2", "rx-3" } ) {
        EXPECT_GE( status["hosts"][host]["v2ReportsSent"], 11 ) << host;
    }
}

TEST_F( Run, StatusIsWrittenOnSigusr1AndAtTheEnd ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", "-" } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGUSR1 );
    ASSERT_TRUE( agent.waitFor( AgentProcess::output, "\n}}\n" ) );
    std::string const first = agent.written( AgentProcess::output );
    expectThreeHosts( Json::parse( first ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
    expectThreeHosts( Json::parse( agent.written( AgentProcess::output ).substr( first.size() ) ) );
}

TEST_F( Run, SigintEndsItWithItsStatusWritten ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", folder_.file( "status" ) } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), 0 );
    expectThreeHosts( statusFile() );
    EXPECT_EQ( agent.written( AgentProcess::output ), "" );
}

TEST_F( Run, EndOfTheTerminalEndsItWithItsStatusWritten ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", folder_.file( "status" ) } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGHUP );
    EXPECT_EQ( agent.exitStatus(), 0 );
    expectThreeHosts( statusFile() );
}

TEST_F( Run, UnderNohupItGoesOnWithoutATerminal ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", "-" }, { "nohup" } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGHUP );
    agent.signal( SIGUSR1 );
    EXPECT_TRUE( agent.waitFor( AgentProcess::output, "\n}}\n" ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

TEST_F( Run, DurationEndsIt ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", folder_.file( "status" ), "--duration", "0.02" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "igmphost: 3 hosts for 0.02 s\n" ) );
    expectThreeHosts( statusFile() );
}

TEST_F( Run, QuerierAtTheFarEndLearnsTheGroups ) {
    cableIs();
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    Kiv::Ptr<Zornet::EthDevPam> const pam = Zornet::EthDevPamIs( "far0" );
    pam->nsIs( far_->ns() );
    pam->deviceOpenIs( true );
    Lab::Querier querier( {}, pam, wheel );
    querier.enabledIs( true );
    AgentProcess agent( { "run", scenario() } );
    constexpr Kiv::Seconds onlyInFailure = 20.0;
    auto const learned = [&] { return querier.groupCount() == 11; };
    EXPECT_TRUE( Kiv::defaultActivity()->activitySm().runUntil( learned, onlyInFailure ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_EQ( querier.counters().malformed(), 0U );
}

TEST_F( Run, HostsOfVersion3AreTaken ) {
    cableIs();
    AgentProcess agent( { "run", scenario( "    igmpVersion: 3\n" ), "--status", "-", "--duration", "0.02" }
    );
    EXPECT_EQ( agent.exitStatus(), 0 );
    Json const status = Json::parse( agent.written( AgentProcess::output ) );
    EXPECT_GE( status["hosts"]["rx-1"]["v3StateChangeReportSent"], 1 );
}

TEST_F( Run, MissingDeviceKeepsItFromBeginning ) {
    AgentProcess agent( { "run", scenario() } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        "igmphost: error: there is no device near0 in " + near_->name() + "; --wait-for-device waits for it\n"
    );
}

TEST_F( Run, MissingNamespaceKeepsItFromBeginning ) {
    std::string const path = scenario();
    std::string const name = near_->name();
    near_.reset();
    AgentProcess agent( { "run", path } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        "igmphost: error: there is no namespace " + name + "; --wait-for-device waits for it\n"
    );
}

TEST_F( Run, MissingNamespaceIsToldOnceWhoeverNeedsIt ) {
    std::string const path = scenario();
    std::string const name = near_->name();
    std::string const more = folder_.fileWith(
        "more.yaml", "querier: { device: far9, ns: " + name + " }\nevents: [ { at: 9, add: { name: late, " +
                         "deviceName: near9, ns: " + name + " } } ]\n"
    );
    near_.reset();
    AgentProcess agent( { "run", path, more } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        EndsWith( "\nigmphost: error: there is no namespace " + name + "; --wait-for-device waits for it\n" )
    );
    EXPECT_THAT( agent.written( AgentProcess::errors ), Not( HasSubstr( name + " for " ) ) );
}

TEST_F( Run, MissingDeviceOfTheQuerierOrOfLaterHostsKeepsItFromBeginning ) {
    cableIs();
    std::string const more = folder_.fileWith(
        "more.yaml", "querier: { device: far9 }\n"
                     "events:\n"
                     "  - { at: 9999, add: { name: late, deviceName: near9 } }\n"
                     "  - { at: 9999, add: { name: here, deviceName: lo } }\n"
    );
    AgentProcess agent( { "run", scenario(), more, "--quiet" } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        EndsWith( "igmphost: error: there is no device far9 for the querier; --wait-for-device waits for it\n"
                  "igmphost: error: there is no device near9 for hosts added later; --wait-for-device waits "
                  "for it\n" )
    );
}

TEST_F( Run, MissingBridgeOfAnExpectationKeepsItFromBeginning ) {
    cableIs();
    std::string const more = folder_.fileWith(
        "more.yaml", "expect:\n"
                     "  - { at: 0, bridge: { device: br9, ns: " +
                         far_->name() +
                         ", joined: 239.1.1.1 } }\n"
                         "  - { at: 0, bridge: { device: br9, ns: none9, joined: 239.1.1.1 } }\n"
    );
    AgentProcess agent( { "run", scenario(), more } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    constexpr char wait[] = " for an expectation; --wait-for-device waits for it\n";
    EXPECT_EQ(
        agent.written( AgentProcess::errors ), "igmphost: error: there is no device br9 in " + far_->name() +
                                                   wait + "igmphost: error: there is no namespace none9" +
                                                   wait
    );
    AgentProcess waiting( { "run", scenario(), more, "--wait-for-device" } );
    EXPECT_EQ( waiting.exitStatus(), 3 );
}

TEST_F( Run, WhatIsLostIsNotToldAsSent ) {
    std::string const more = folder_.fileWith(
        "more.yaml",
        "hosts: [ { name: nowhere, deviceName: near0, ns: " + near_->name() +
            ", ipAddr: 10.0.0.99, macAddr: '02:00:00:00:00:99', groups: 239.2.0.0-239.2.3.231 } ]\n"
    );
    AgentProcess agent( { "run", scenario( "    igmpVersion: 2\n" ), more, "--wait-for-device", "--duration",
                          "0.02" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( " s; sent 0 messages, lost 1,033, heard 0 queries\n" )
    );
}

TEST_F( Run, TwoSharesDoTogetherWhatOneDoes ) {
    cableIs();
    std::string const path = scenario();
    std::map<std::string, int> reports;
    for ( char const* const shard : { "1/2", "2/2" } ) {
        AgentProcess agent( { "run", path, "--shard", shard, "--status", "-", "--duration", "0.02" } );
        EXPECT_EQ( agent.exitStatus(), 0 );
        Json const hosts = Json::parse( agent.written( AgentProcess::output ) ).at( "hosts" );
        for ( auto const& [name, status] : hosts.items() ) {
            reports[name] += status["v2ReportsSent"].get<int>();
        }
    }
    EXPECT_EQ( reports, ( std::map<std::string, int>{ { "rx-1", 11 }, { "rx-2", 11 }, { "rx-3", 11 } } ) );
}

TEST_F( Run, QuerierRunsBesideTheFirstShareAlone ) {
    cableIs();
    std::string const path = scenario();
    std::string const more = folder_.fileWith(
        "more.yaml", "querier: { device: far0, igmpVersion: 2, ns: " + far_->name() +
                         " }\nexpect: [ { at: 0, within: 20, querier: { joined: 239.1.1.1 } } ]\n"
    );
    AgentProcess first( { "run", path, more, "--shard", "1/2" } );
    EXPECT_EQ( first.exitStatus(), 0 );
    EXPECT_THAT( first.written( AgentProcess::errors ), HasSubstr( "1 of 1 expectations met" ) );
    EXPECT_THAT( first.written( AgentProcess::errors ), Not( HasSubstr( "heard 0 queries" ) ) );
    AgentProcess second( { "run", path, more, "--shard", "2/2", "--duration", "0.3" } );
    EXPECT_EQ( second.exitStatus(), 0 );
    EXPECT_THAT( second.written( AgentProcess::errors ), HasSubstr( "heard 0 queries" ) );
}

TEST_F( Run, SimulatedSharesHaveAQuerierEach ) {
    std::string const path = scenario();
    std::string const more = folder_.fileWith(
        "more.yaml", "querier: { device: far0, igmpVersion: 2 }\nduration: 60\n"
                     "expect: [ { at: 50, querier: { joined: 239.1.1.1 } } ]\n"
    );
    AgentProcess second( { "run", "--simulate", path, more, "--shard", "2/2" } );
    EXPECT_EQ( second.exitStatus(), 0 );
    EXPECT_THAT( second.written( AgentProcess::errors ), Not( HasSubstr( "heard 0 queries" ) ) );
}

TEST_F( Run, MissingDeviceIsToldAndTakenUpWhenItAppears ) {
    AgentProcess agent( { "run", scenario(), "--wait-for-device" } );
    std::string const device = "device near0 in " + near_->name();
    ASSERT_TRUE( agent.waitFor(
        AgentProcess::errors, "igmphost: error: " + device + ": no such device; waiting for it\n"
    ) );
    cableIs();
    EXPECT_TRUE( agent.waitFor( AgentProcess::errors, "igmphost: " + device + ": running\n" ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

TEST_F( Run, DeviceThatGoesAwayIsToldAndTakenUpAgain ) {
    cableIs();
    AgentProcess agent( { "run", scenario() } );
    std::string const device = "device near0 in " + near_->name();
    ASSERT_TRUE( agent.waitFor( AgentProcess::errors, "igmphost: " + device + ": running\n" ) );
    near_->ip( "link del near0" );
    ASSERT_TRUE( agent.waitFor(
        AgentProcess::errors, "igmphost: error: " + device + ": no such device; waiting for it\n"
    ) );
    cableIs();
    EXPECT_TRUE(
        agent.waitFor( AgentProcess::errors, "; waiting for it\nigmphost: " + device + ": running\n" )
    );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

TEST_F( Run, HostsGoWithoutALeave ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", "-" } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_EQ( Json::parse( agent.written( AgentProcess::output ) )["hosts"]["rx-1"]["v2LeavesSent"], 0 );
}

TEST_F( Run, HostsLeaveTheirGroupsFirstWhereTheyAreTold ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", "-", "--leave-on-exit" } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_EQ( Json::parse( agent.written( AgentProcess::output ) )["hosts"]["rx-1"]["v2LeavesSent"], 11 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( "igmphost: leaving every group; Ctrl-C ends at once\n" )
    );
}

TEST_F( Run, SecondSignalEndsTheLeavingAtOnce ) {
    cableIs();
    std::string const slow = "    igmpVersion: 3\n    unsolicitedReportInterval: 3600\n";
    AgentProcess agent( { "run", scenario( slow ), "--leave-on-exit" } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGINT );
    ASSERT_TRUE( agent.waitFor( AgentProcess::errors, "Ctrl-C ends at once\n" ) );
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ), HasSubstr( "igmphost: ended before every leave was told\n" )
    );
}

TEST_F( Run, WarningsAreToldAndTheRunGoesOn ) {
    cableIs();
    AgentProcess agent( { "run", scenario( "    robustness: 0\n" ), "--duration", "0.01" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( "s.yaml:8:17: warning: robustness: 0 ends the process when sources change in version 3\n" )
    );
}

TEST_F( Run, ErrorsKeepItFromBeginningAndWarningsAreToldBesideThem ) {
    AgentProcess agent( { "run", scenario( "    robustness: 0\n    mtuu: 7\n" ) } );
    EXPECT_EQ( agent.exitStatus(), 2 );
    AgentProcess check( { "check", folder_.file( "s.yaml" ) } );
    EXPECT_EQ( check.exitStatus(), 2 );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "error: unknown key 'mtuu'" ) );
    EXPECT_EQ( agent.written( AgentProcess::errors ), check.written( AgentProcess::errors ) );
}

TEST_F( Run, StatusThatCannotBeWrittenIsToldBeforeAnythingBegins ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", folder_.file( "none/status" ), "--duration", "0.01" }
    );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        "igmphost: error: cannot write " + folder_.file( "none/status" ) + ": No such file or directory\n"
    );
}

TEST_F( Run, StatusThatCannotBeWrittenInTheEndIsAFailure ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", "/dev/full", "--duration", "0.01" } );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr(
            "igmphost: error: the status is not written: cannot write /dev/full: No space left on device\n"
        )
    );
}

TEST_F( Run, StatusThatCannotBeWrittenMeanwhileLeavesTheHostsAlone ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", "/dev/full", "--pcap", folder_.file( "pcap" ) } );
    ASSERT_TRUE( hasBegun( agent ) );
    agent.signal( SIGUSR1 );
    ASSERT_TRUE( agent.waitFor( AgentProcess::errors, "No space left on device\n" ) );
    auto const before = std::filesystem::file_size( folder_.file( "pcap" ) );
    AgentProcess query( { "query", "--once", "--igmp-version", "2", "--response-time", "0.1", "--address",
                          "10.0.0.99", "far0", "--ns", far_->name() } );
    EXPECT_EQ( query.exitStatus(), 0 );
    EXPECT_THAT( query.written( AgentProcess::output ), HasSubstr( "239.1.1.1" ) );
    EXPECT_GT( std::filesystem::file_size( folder_.file( "pcap" ) ), before );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 1 );
}

TEST_F( Run, SignalDuringTheStartEndsItWell ) {
    std::string const path = folder_.fileWith( "many.yaml", "hosts: [ { name: rx, count: 30000 } ]\n" );
    AgentProcess agent( { "run", path, "--leave-on-exit" } );
    ASSERT_TRUE( hasBegun( agent ) ); // said before the hosts are started
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "igmphost: ended after " ) );
}

TEST_F( Run, KeepsNoCapabilityThatDevicesDoNotTake ) {
    cableIs();
    AgentProcess agent( { "run", scenario() } );
    ASSERT_TRUE( hasBegun( agent ) );
    // CAP_NET_ADMIN, CAP_NET_RAW, CAP_SYS_ADMIN
    EXPECT_THAT( agent.rights(), ElementsAre( "0000000000203000 1 " ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

TEST_F( Run, KeepsMoreCapabilitiesForFilesAtTheEndAndNoneForTheThreadsOfMetrics ) {
    cableIs();
    AgentProcess agent( { "run", scenario(), "--status", folder_.file( "status" ), "--metrics",
                          "127.0.0.1:0" } );
    ASSERT_TRUE( hasBegun( agent ) );
    // CAP_DAC_OVERRIDE and CAP_FOWNER beside them.
    EXPECT_THAT( agent.rights(), ElementsAre( "0000000000000000 1 ", "000000000020300a 1 " ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
    expectThreeHosts( statusFile() );
}

/// Hosts of any namespace may come through it, and it is removed at the end.
TEST_F( Run, KeepsTheCapabilitiesOfNamespacesAndFilesForItsControlSocket ) {
    AgentProcess agent( { "run", "--control", folder_.file( "socket" ) } );
    ASSERT_TRUE( hasBegun( agent ) );
    EXPECT_THAT( agent.rights(), ElementsAre( "000000000020300a 1 " ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

TEST_F( Run, WithoutNamespacesThatCapabilityGoesToo ) {
    std::string const path = folder_.fileWith( "here.yaml", "hosts: [ { name: rx, deviceName: lo } ]\n" );
    AgentProcess agent( { "run", path } );
    ASSERT_TRUE( hasBegun( agent ) );
    EXPECT_THAT( agent.rights(), ElementsAre( "0000000000003000 1 " ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
}

TEST_F( Run, KeepsTheCapabilityOfNamespacesWhereAnEventMovesAHostIntoOne ) {
    cableIs();
    std::string const path = folder_.fileWith(
        "moved.yaml", "hosts: [ { name: rx, deviceName: near0 } ]\n"
                      "events: [ { at: 0.01, set: { ns: " +
                          near_->name() + " } } ]\n"
    );
    AgentProcess agent( { "run", path, "--wait-for-device" } );
    ASSERT_TRUE( hasBegun( agent ) );
    ASSERT_THAT( agent.rights(), ElementsAre( "0000000000203000 1 " ) );
    EXPECT_TRUE( agent.waitFor( AgentProcess::errors, "device near0 in " + near_->name() + ": running\n" ) );
}

TEST_F( Run, RootFollowsNoLinkToWriteAFile ) {
    cableIs();
    folder_.fileWith( "precious", "precious" );
    std::filesystem::create_symlink( "precious", folder_.file( "link" ) );
    for ( char const* const option : { "--status", "--junit", "--pcap" } ) {
        AgentProcess agent( { "run", scenario(), option, folder_.file( "link" ), "--duration", "0.02" } );
        EXPECT_EQ( agent.exitStatus(), 1 ) << option;
        EXPECT_EQ(
            agent.written( AgentProcess::errors ),
            "igmphost: error: cannot write " + folder_.file( "link" ) +
                ", a link, and as root none is followed: Too many levels of symbolic links\n"
        );
    }
    EXPECT_EQ( folder_.contents( "precious" ), "precious" );
}

/// Runs the command as a user who has root's rights but for those named.
std::vector<std::string>
without( std::string const& capabilities ) {
    return { "setpriv", "--bounding-set=" + capabilities, "--inh-caps=" + capabilities };
}

TEST_F( Run, MissingPrivilegeForPacketSocketsIsNamed ) {
    AgentProcess agent( { "run", scenario() }, without( "-net_raw" ) );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        "igmphost: error: packet sockets need the capability CAP_NET_RAW; run as root, or once: setcap "
        "cap_net_raw+ep $(command -v igmphost)\n"
    );
}

TEST_F( Run, MissingPrivilegeForNamespacesIsNamed ) {
    AgentProcess agent( { "run", scenario() }, without( "-net_raw,-sys_admin" ) );
    EXPECT_EQ( agent.exitStatus(), 1 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        EndsWith(
            "CAP_NET_RAW, and entering a network namespace needs the capability CAP_SYS_ADMIN; run as root, "
            "or once: setcap cap_net_raw,cap_sys_admin+ep $(command -v igmphost)\n"
        )
    );
}

} // namespace

} // namespace Agent
