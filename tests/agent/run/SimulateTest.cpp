#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/FullPipe.h"
#include "tests/agent/TemporaryFolder.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// The real command without a device, in time that jumps.
class Simulate : public ::testing::Test {
  protected:
    std::string scenario( std::string const& more ) const {
        return folder_.fileWith(
            "s.yaml",
            "hosts:\n"
            "  - { name: rx, count: 3, ipAddr: 10.0.0.1, macAddr: 02:00:00:00:00:01, deviceName: eth0,\n"
            "      igmpVersion: 3, groups: 239.1.1.1-239.1.1.3 }\n"
            "  - { name: tagged, count: 2, ipAddr: 10.0.1.1, macAddr: 02:00:00:00:01:01, tagged: true,\n"
            "      deviceName: eth0, vlanId: 5, vlanStep: 1, igmpVersion: 3, groups: 239.2.2.2 }\n" +
                more
        );
    }

    TemporaryFolder folder_;
};

TEST_F( Simulate, QueriersLearnWhatHostsOfEveryVlanWant ) {
    AgentProcess agent(
        { "run", "--simulate",
          scenario(
              "duration: 4000\n"
              "querier: { device: none, interval: 60 }\n"
              "events: [ { at: 2000, hosts: 'rx*', leave: 239.1.1.3 } ]\n"
              "expect:\n"
              "  - { at: 1999, querier: { joined: [ 239.1.1.1-239.1.1.3, 239.2.2.2 ], groupCount: 4 } }\n"
              "  - { at: 2010, querier: { notJoined: 239.1.1.3, groupCount: 3 } }\n"
              "  - { hosts: tagged, v3GeneralQueryReceived: '>= 65' }\n"
          ) }
    );
    EXPECT_EQ( agent.exitStatus(), 0 ) << agent.written( AgentProcess::errors );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "igmphost: 3 of 3 expectations met\n" ) );
}

TEST_F( Simulate, DevicesAndTheirFarEndsAreCalledAsElsewhere ) {
    std::string const path = folder_.fileWith(
        "s.yaml", "hosts:\n"
                  "  - { name: a, ipAddr: 10.0.0.1, macAddr: 02:00:00:00:00:01, deviceName: eth0, "
                  "groups: 239.1.1.1 }\n"
                  "  - { name: b, ipAddr: 10.0.0.2, macAddr: 02:00:00:00:00:02, deviceName: eth1, ns: blue, "
                  "groups: 239.1.1.1 }\n"
    );
    AgentProcess agent( { "run", "--simulate", path, "--duration", "100" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    for ( char const* const device : { "eth0", "eth0, far end", "blue/eth1", "blue/eth1, far end" } ) {
        EXPECT_THAT(
            agent.written( AgentProcess::errors ),
            HasSubstr( std::string( "igmphost: frames on " ) + device + "\n" )
        );
    }
}

TEST_F( Simulate, KeepsNoCapabilityButThoseOfFilesAtTheEnd ) {
    std::vector<std::string> arguments{ "run", "--simulate", scenario( "" ), "--duration", "1e8" };
    AgentProcess alone( arguments );
    arguments.insert( arguments.end(), { "--status", folder_.file( "status" ) } );
    AgentProcess writing( arguments );
    for ( AgentProcess* const agent : { &alone, &writing } ) {
        ASSERT_TRUE( agent->waitFor( AgentProcess::errors, "igmphost: 5 hosts for " ) );
    }
    EXPECT_THAT( alone.rights(), ElementsAre( "0000000000000000 1 " ) );
    // CAP_DAC_OVERRIDE and CAP_FOWNER, where root runs it.
    EXPECT_THAT(
        writing.rights(), ElementsAre( geteuid() == 0 ? "000000000000000a 1 " : "0000000000000000 1 " )
    );
}

TEST_F( Simulate, TwoRunsAreAlike ) {
    std::string const events = "events: [ { at: 5, jitter: 9, flap: { down: 10, up: 50 } } ]\n";
    std::vector<std::string> written;
    for ( int i = 0; i < 2; ++i ) {
        AgentProcess agent( { "run", "--simulate", scenario( events ), "--duration", "3000", "--status", "-" }
        );
        EXPECT_EQ( agent.exitStatus(), 0 );
        written.push_back( agent.written( AgentProcess::output ) );
    }
    EXPECT_GT( nlohmann::json::parse( written[0] )["hosts"]["rx-1"]["v3CurrentStateReportSent"], 0 );
    EXPECT_EQ( written[0], written[1] );
}

TEST_F( Simulate, SeedDecidesWhatTheTimelineDraws ) {
    auto const written = [this]( std::string const& more, std::vector<std::string> const& options ) {
        std::vector<std::string> arguments{
            "run",
            "--simulate",
            "--duration",
            "20",
            "--status-interval",
            "0.1",
            scenario( "events: [ { at: 1, jitter: 9, every: 9, times: 2, join: 239.8.8.8 } ]\n" + more )
        };
        arguments.insert( arguments.end(), options.begin(), options.end() );
        AgentProcess agent( arguments );
        EXPECT_EQ( agent.exitStatus(), 0 ) << agent.written( AgentProcess::errors );
        return agent.written( AgentProcess::output );
    };
    std::string const first = written( "", { "--seed", "1" } );
    EXPECT_NE( first, written( "", { "--seed", "2" } ) );
    EXPECT_EQ( first, written( "seed: 1\n", {} ) );
    EXPECT_EQ( first, written( "seed: 2\n", { "--seed", "1" } ) );
}

TEST_F( Simulate, OptionsGoBeforeWhatTheScenarioSays ) {
    AgentProcess agent( { "run", "--simulate", scenario( "duration: 4000\nshard: 1/5\n" ), "--duration", "5",
                          "--shard", "5/5", "--status", "-" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "igmphost: ended after 5.0 s" ) );
    nlohmann::json const status = nlohmann::json::parse( agent.written( AgentProcess::output ) );
    ASSERT_EQ( status["hosts"].size(), 1U );
    EXPECT_TRUE( status["hosts"].contains( "tagged-2" ) );
}

/// What a host counts does not depend on who else is in its process, as long as no leave makes the querier
/// ask for a group that another host is in too. What is drawn does: so changes keep away from queries, at 75,
/// 135 and so on, whose answers could make up for their reports.
class SimulatedShards : public Simulate {
  protected:
    static void
    expectTogetherTheSame( std::string const& path, std::string const& duration, std::size_t hosts ) {
        auto const hostsOf = [&]( std::vector<std::string> const& shard ) {
            std::vector<std::string> arguments{ "run",    "--simulate", path, "--duration",
                                                duration, "--status",   "-" };
            arguments.insert( arguments.end(), shard.begin(), shard.end() );
            AgentProcess agent( arguments );
            EXPECT_EQ( agent.exitStatus(), 0 ) << agent.written( AgentProcess::errors );
            return nlohmann::json::parse( agent.written( AgentProcess::output ) )["hosts"];
        };
        nlohmann::json const whole = hostsOf( {} );
        EXPECT_EQ( whole.size(), hosts );
        nlohmann::json together = hostsOf( { "--shard", "1/2" } );
        nlohmann::json const other = hostsOf( { "--shard", "2/2" } );
        EXPECT_EQ( together.size() + other.size(), whole.size() );
        together.insert( other.begin(), other.end() );
        EXPECT_TRUE( whole == together ) << nlohmann::json::diff( whole, together ).dump().substr( 0, 1000 );
    }
};

TEST_F( SimulatedShards, TogetherDoWhatOneProcessDoes ) {
    std::string const path =
        scenario( "  - { name: old, count: 5, igmpVersion: 2, deviceName: eth1, ipAddr: 10.0.2.1,\n"
                  "      macAddr: 02:00:00:00:02:01 }\n"
                  "querier: { device: none, interval: 60 }\n"
                  "events:\n"
                  "  - { at: 90, rate: 2/s, join: 239.4.4.4 }\n"
                  "  - { at: 110, hosts: 'rx*', set: { robustness: 4 } }\n"
                  "  - { at: 112, add: { name: late, count: 3, ipAddr: 10.0.3.1, deviceName: eth1 } }\n"
                  "  - { at: 115, hosts: [ late, 'rx*' ], rate: 2/s, join: 239.6.6.6 }\n"
                  "  - { at: 150, every: 120, jitter: 9, hosts: 'old*', join: 239.5.0.0/29 }\n" );
    expectTogetherTheSame( path, "600", 13 );
}

/// In one group, over the first two queries, at 0 and 31.25, each of which every host answers. Every night
/// they are a hundred thousand.
TEST_F( SimulatedShards, OfAGreatManyHostsDoTogetherWhatOneProcessDoes ) {
    char const* const set = std::getenv( "IGMPHOST_SHARD_HOSTS" );
    std::size_t const hosts = set ? std::stoul( set ) : 10'000;
    std::string const path = folder_.fileWith(
        "many.yaml", "hosts: [ { name: rx, count: " + std::to_string( hosts ) +
                         ", ipAddr: 10.0.0.1, deviceName: eth0, igmpVersion: 2, groups: 239.1.1.1 } ]\n"
    );
    expectTogetherTheSame( path, "50", hosts );
}

/// The time that each takes stays the same; where it grew with their number, this would take hours.
TEST_F( Simulate, ManyHostsAreNoTrouble ) {
    AgentProcess agent( { "run", "--simulate", "--duration", "100", "--quiet", "--status", "-",
                          folder_.fileWith(
                              "many.yaml",
                              "hosts: [ { name: rx, count: 10000, ipAddr: 10.0.0.1, deviceName: eth0,\n"
                              "           igmpVersion: 3, groups: 239.1.1.1 } ]\n"
                          ) } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_EQ( nlohmann::json::parse( agent.written( AgentProcess::output ) )["hosts"].size(), 10000U );
}

/// To bring all of them up would take minutes.
TEST_F( Simulate, SignalDuringTheStartEndsIt ) {
    AgentProcess agent( { "run", "--simulate", "--duration", "100",
                          folder_.fileWith(
                              "many.yaml",
                              "hosts: [ { name: rx, count: 1000, ipAddr: 10.0.0.1, deviceName: eth0,\n"
                              "           igmpVersion: 2, groups: 239.0.0.0/18 } ]\n"
                          ) } );
    ASSERT_TRUE( agent.waitFor( AgentProcess::errors, " of 1,000 hosts made, " ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "igmphost: ended after 0.0 s; sent 0 " ) );
}

/// Of the frames of a simulated cable its one end is the hosts'.
TEST_F( Simulate, TotalsAreThoseOfTheHostsEnd ) {
    std::string const path = folder_.fileWith(
        "s.yaml",
        "hosts: [ { name: rx, count: 3, ipAddr: 10.0.0.1, macAddr: 02:00:00:00:00:01, deviceName: eth0,\n"
        "           igmpVersion: 2, groups: 239.1.1.1 } ]\n"
    );
    AgentProcess agent( { "run", "--simulate", path, "--duration", "1000", "--status-interval", "1000" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    nlohmann::json const status = nlohmann::json::parse( agent.written( AgentProcess::output ) );
    nlohmann::json const& near = status["devices"]["eth0"];
    nlohmann::json const& far = status["devices"]["eth0, far end"];
    EXPECT_GT( near["framesReceived"], 3 );
    EXPECT_EQ( near["framesReceived"], far["framesSent"] ); // the first query too
    EXPECT_EQ( near["framesSent"], far["framesReceived"] );
    AgentProcess told( { "run", "--simulate", path, "--duration", "10" } );
    EXPECT_EQ( told.exitStatus(), 0 );
    EXPECT_THAT(
        told.written( AgentProcess::errors ), ::testing::ContainsRegex( "10 s: .* sent [3-9] .*received 1 " )
    );
}

TEST_F( Simulate, NeedsAnEnd ) {
    AgentProcess agent( { "run", "--simulate", scenario( "" ) } );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_EQ(
        agent.written( AgentProcess::errors ),
        "igmphost: error: --simulate: expected a duration, found none\n"
    );
}

TEST_F( Simulate, HasNoBridgeToAsk ) {
    AgentProcess agent( { "run", "--simulate",
                          scenario( "expect: [ { at: 1, bridge: { device: br0, joined: 239.1.1.1 } } ]\n" ) }
    );
    EXPECT_EQ( agent.exitStatus(), 2 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( ": error: bridge: there is none in a simulation; querier tells of its other side\n" )
    );
}

TEST_F( Simulate, HostOfWhatIsNoVlanSendsWithTheTagThatItsNumberLeaves ) {
    std::string const path = folder_.fileWith(
        "s.yaml",
        "defaults: { deviceName: eth0, igmpVersion: 3, tagged: true }\n"
        "hosts:\n"
        "  - { name: cut, vlanId: 5000, ipAddr: 10.0.0.1, macAddr: 02:00:00:00:00:01, groups: 239.1.1.1 }\n"
        "  - { name: last, vlanId: 4095, ipAddr: 10.0.0.2, macAddr: 02:00:00:00:00:02, groups: 239.1.1.2 }\n"
        "  - { name: in, vlanId: 904, ipAddr: 10.0.0.3, macAddr: 02:00:00:00:00:03, groups: 239.1.1.3 }\n"
        "querier: { device: far, interval: 60 }\n"
        "expect:\n"
        "  - { at: 5, querier: { joined: [ 239.1.1.1, 239.1.1.3 ], groupCount: 2 } }\n"
        "  - { at: 100, hosts: [ cut, last ], v3GeneralQueryReceived: 0, v3StateChangeReportSent: 1 }\n"
        "  - { at: 100, hosts: in, v3GeneralQueryReceived: '> 1' }\n"
    );
    AgentProcess agent( { "run", "--simulate", path } );
    EXPECT_EQ( agent.exitStatus(), 0 ) << agent.written( AgentProcess::errors );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "3 of 3 expectations met" ) );
}

TEST_F( Simulate, RecordLargerThanThePacketFloodsAfterOneQuery ) {
    std::string const path = folder_.fileWith(
        "large.yaml",
        "defaults: { deviceName: eth0, igmpVersion: 3 }\n"
        "hosts:\n"
        "  - { name: large, ipAddr: 10.0.0.1, macAddr: 02:00:00:00:00:01, mtu: 58,\n"
        "      groups: [ { multicastAddr: 239.1.1.1, sources: 10.1.0.1-10.1.0.9 } ] }\n"
        "  - { name: fits, ipAddr: 10.0.0.2, macAddr: 02:00:00:00:00:02, mtu: 90,\n"
        "      groups: [ { multicastAddr: 239.1.1.1, sources: 10.1.0.1-10.1.0.9 } ] }\n"
        "querier: { device: far, responseTime: 1 }\n"
        "expect:\n"
        "  - { at: 0, within: 2, hosts: large, v3GeneralQueryReceived: 1, "
        "v3CurrentStateReportSent: '> 1000' }\n"
        "  - { at: 0, within: 2, hosts: fits, v3GeneralQueryReceived: 1, v3CurrentStateReportSent: 1 }\n"
    );
    AgentProcess agent( { "run", "--simulate", path } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( "the report is sent again and again without a pause, past later queries too" )
    );
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "2 of 2 expectations met" ) );
}

TEST_F( Simulate, EveryExampleRunsAndMeetsWhatItExpects ) {
    std::filesystem::path const folder = std::filesystem::path( Support::sourceFolder() ) / "examples";
    for ( auto const& entry : std::filesystem::directory_iterator( folder ) ) {
        if ( entry.path().extension() == ".yaml" ) {
            AgentProcess agent( { "run", "--simulate", entry.path().string(), "--duration", "60" } );
            EXPECT_EQ( agent.exitStatus(), 0 ) << entry.path() << agent.written( AgentProcess::errors );
        }
    }
}

TEST_F( Simulate, SignalEndsItSoonWhereNobodyReadsWhatItWrites ) {
    FullPipe const pipe( folder_.file( "pipe" ) );
    AgentProcess agent(
        { "run", "--simulate", scenario( "" ), "--duration", "1000", "--status-interval", "1" },
        { "sh", "-c", "exec \"$@\" > " + pipe.path(), "sh" }
    );
    ASSERT_TRUE( agent.waitUntilItWaitsToWrite( STDOUT_FILENO ) );
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), -SIGINT );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        ::testing::EndsWith( "igmphost: ended at once, in the midst of work; no status, report or summary is "
                             "written\n" )
    );
}

TEST_F( Simulate, SignalEndsALastStatusThatNobodyReads ) {
    FullPipe const pipe( folder_.file( "pipe" ) );
    AgentProcess agent(
        { "run", "--simulate", scenario( "" ), "--duration", "10", "--status", "-", "--quiet" },
        { "sh", "-c", "exec \"$@\" > " + pipe.path(), "sh" }
    );
    ASSERT_TRUE( agent.waitUntilItWaitsToWrite( STDOUT_FILENO ) );
    agent.signal( SIGTERM );
    EXPECT_EQ( agent.exitStatus(), -SIGTERM );
}

TEST_F( Simulate, StandardOutputThatCannotTakeTheStatusOrTheOutcomeIsAFailure ) {
    for ( auto const& [option, what] : { std::pair( "--status", "status" ), { "--junit", "outcome" } } ) {
        AgentProcess agent(
            { "run", "--simulate", scenario( "" ), "--duration", "10", option, "-" },
            { "sh", "-c", "exec \"$@\" > /dev/full", "sh" }
        );
        EXPECT_EQ( agent.exitStatus(), 1 );
        EXPECT_THAT(
            agent.written( AgentProcess::errors ),
            ::testing::HasSubstr(
                std::string( "igmphost: error: the " ) + what +
                " is not written: cannot write the standard output: No space left on device\n"
            )
        );
    }
}

/// A template makes that many groups in one call.
TEST_F( Simulate, SignalEndsACallThatGoesOnForLong ) {
    AgentProcess agent( { "run", "--simulate", "--duration", "10",
                          folder_.fileWith(
                              "long.yaml", "hosts: [ { name: rx, groups: { multicastAddr: 224.1.0.0, "
                                           "replicate: true, replicateNumber: 8000000 } } ]\n"
                          ) } );
    ASSERT_TRUE( agent.waitFor( AgentProcess::errors, "igmphost: 1 host for 10 s\n" ) );
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), -SIGINT );
    EXPECT_THAT( agent.written( AgentProcess::errors ), ::testing::HasSubstr( "ended at once" ) );
}

} // namespace

} // namespace Agent
