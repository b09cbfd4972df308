#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/agent/CableTest.h"
#include "tests/agent/FullPipe.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;
using Json = nlohmann::json;

class Watch : public CableTest {};

TEST_F( Watch, PrintsWhatArrivesUntilCtrlC ) {
    AgentProcess watch( atFarEnd( { "watch" } ) );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess hosts( { "run", scenario( "    tagged: true\n    vlanId: 7\n" ), "--duration", "0.1" } );
    EXPECT_TRUE(
        watch.waitFor( AgentProcess::output, " 02:00:00:00:00:11 10.0.0.11 vlan 7 v2 report 239.1.1.1\n" )
    );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    watch.signal( SIGINT );
    EXPECT_EQ( watch.exitStatus(), 0 );
    EXPECT_THAT( watch.written( AgentProcess::errors ), ::testing::EndsWith( "messages\n" ) );
}

TEST_F( Watch, SeesWhatThisMachineSendsOnTheDevice ) {
    AgentProcess watch( { "watch", "near0", "--ns", near_->name(), "--json", "--count", "4" } );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess hosts( { "run", scenario( "    tagged: true\n    vlanId: 7\n" ) } );
    EXPECT_EQ( watch.exitStatus(), 0 );
    std::istringstream lines( watch.written( AgentProcess::output ) );
    std::string text;
    std::size_t count = 0;
    for ( ; std::getline( lines, text ); ++count ) {
        Json const message = Json::parse( text );
        EXPECT_EQ( message["vlans"], Json::array( { 7 } ) );
        EXPECT_EQ( message["kind"], "report" );
    }
    EXPECT_EQ( count, 4U );
    EXPECT_THAT( watch.written( AgentProcess::errors ), HasSubstr( "igmphost: 4 messages\n" ) );
}

TEST_F( Watch, KeepsNoCapability ) {
    AgentProcess watch( atFarEnd( { "watch" } ) );
    ASSERT_TRUE( hasBegun( watch ) );
    EXPECT_THAT( watch.rights(), ::testing::ElementsAre( "0000000000000000 1 " ) );
}

TEST_F( Watch, DurationEndsIt ) {
    AgentProcess watch( atFarEnd( { "watch", "--duration", "0.05" } ) );
    EXPECT_EQ( watch.exitStatus(), 0 );
}

TEST_F( Watch, DeviceThatGoesEndsIt ) {
    AgentProcess watch( atFarEnd( { "watch" } ) );
    ASSERT_TRUE( hasBegun( watch ) );
    near_->ip( "link del near0" );
    EXPECT_EQ( watch.exitStatus(), 1 );
    EXPECT_THAT( watch.written( AgentProcess::errors ), HasSubstr( "igmphost: error: far0: " ) );
}

TEST_F( Watch, DeviceThatGoesDownIsToldAndWatchedOn ) {
    AgentProcess watch( atFarEnd( { "watch" } ) );
    ASSERT_TRUE( hasBegun( watch ) );
    far_->ip( "link set far0 down" );
    ASSERT_TRUE(
        watch.waitFor( AgentProcess::errors, "igmphost: far0: down; it is watched on when it comes up\n" )
    );
    far_->ip( "link set far0 up" );
    ASSERT_TRUE( watch.waitFor( AgentProcess::errors, "igmphost: far0: up again\n" ) );
    AgentProcess hosts( { "run", scenario() } );
    EXPECT_TRUE( watch.waitFor( AgentProcess::output, " v2 report 239.1.1.1\n" ) );
    watch.signal( SIGINT );
    EXPECT_EQ( watch.exitStatus(), 0 );
}

/// A reader of what it tells would wait for messages that have been seen.
TEST_F( Watch, StandardOutputThatCannotBeWrittenIsAFailure ) {
    std::vector<std::string> const toFull{ "sh", "-c", "exec \"$@\" >/dev/full", "sh" };
    AgentProcess watch( atFarEnd( { "watch", "--count", "1" } ), toFull );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess hosts( { "run", scenario(), "--control", folder_.file( "socket" ) } );
    ASSERT_TRUE( hasBegun( hosts ) );
    AgentProcess query( atFarEnd( { "query", "--once", "--response-time", "0.1" } ), toFull );
    AgentProcess shown( { "ctl", folder_.file( "socket" ), "show", "rx-1" }, toFull );
    for ( AgentProcess* const agent : { &watch, &query, &shown } ) {
        EXPECT_EQ( agent->exitStatus(), 1 );
        EXPECT_THAT(
            agent->written( AgentProcess::errors ),
            ::testing::EndsWith(
                "igmphost: error: cannot write the standard output: No space left on device\n"
            )
        );
    }
}

TEST_F( Watch, SignalEndsItAndOtherVerbsWhoseOutputNobodyReads ) {
    FullPipe const pipe( folder_.file( "pipe" ) );
    std::vector<std::string> const toPipe{ "sh", "-c", "exec \"$@\" >" + pipe.path(), "sh" };
    AgentProcess watch( atFarEnd( { "watch" } ), toPipe );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess hosts( { "run", scenario(), "--control", folder_.file( "socket" ) } );
    ASSERT_TRUE( hasBegun( hosts ) );
    AgentProcess query( atFarEnd( { "query", "--once", "--response-time", "0.1" } ), toPipe );
    AgentProcess shown( { "ctl", folder_.file( "socket" ), "show", "rx-1" }, toPipe );
    for ( AgentProcess* const agent : { &watch, &query, &shown } ) {
        EXPECT_TRUE( agent->waitUntilItWaitsToWrite( STDOUT_FILENO ) );
        agent->signal( SIGINT );
    }
    for ( AgentProcess* const agent : { &watch, &query, &shown } ) {
        EXPECT_EQ( agent->exitStatus(), -SIGINT );
    }
}

TEST_F( Watch, MissingDeviceIsNamed ) {
    AgentProcess watch( { "watch", "far9", "--ns", far_->name() } );
    EXPECT_EQ( watch.exitStatus(), 1 );
    EXPECT_EQ(
        watch.written( AgentProcess::errors ),
        "igmphost: error: no such device: far9 in " + far_->name() + "\n"
    );
}

} // namespace

} // namespace Agent
