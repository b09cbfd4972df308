#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/agent/CableTest.h"

namespace Agent {

namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Json = nlohmann::json;

class Query : public CableTest {
  protected:
    /// Arguments of a query at the far end that is over soon.
    std::vector<std::string> scan( std::vector<std::string> const& more ) const {
        std::vector<std::string> arguments =
            atFarEnd( { "query", "--once", "--igmp-version", "2", "--response-time", "0.2" } );
        arguments.insert( arguments.end(), more.begin(), more.end() );
        return arguments;
    }
};

TEST_F( Query, OncePrintsWhoWantsWhatAsJson ) {
    AgentProcess hosts( { "run", scenario() } );
    ASSERT_TRUE( hasBegun( hosts ) );
    AgentProcess query( scan( { "--json", "--address", "10.0.0.7" } ) );
    EXPECT_EQ( query.exitStatus(), 0 );
    Json const found = Json::parse( query.written( AgentProcess::output ) );
    EXPECT_EQ( found["querier"], "10.0.0.7" );
    EXPECT_EQ( found["counters"]["generalQueriesSent"], 1 );
    ASSERT_EQ( found["groups"].size(), 2U );
    EXPECT_EQ( found["groups"][0]["group"], "239.1.1.1" );
    EXPECT_EQ( found["groups"][0]["filterMode"], "exclude" );
    EXPECT_EQ( found["groups"][0]["igmpVersion"], 2 );
    EXPECT_THAT( found["groups"][0]["lastReporter"], ::testing::StartsWith( "10.0.0.1" ) );
}

TEST_F( Query, OnceWithoutHostsIsAnEmptyTable ) {
    AgentProcess query( scan( {} ) );
    EXPECT_EQ( query.exitStatus(), 0 );
    EXPECT_EQ(
        query.written( AgentProcess::output ), "0 groups; asked 1 time, heard 0 reports and 0 leaves\n"
    );
}

TEST_F( Query, AsksFromTheAddressesOfTheDevice ) {
    far_->ip( "addr add 10.0.0.99/24 dev far0" );
    AgentProcess query( scan( { "--json" } ) );
    EXPECT_EQ( query.exitStatus(), 0 );
    EXPECT_EQ( Json::parse( query.written( AgentProcess::output ) )["querier"], "10.0.0.99" );
}

TEST_F( Query, TellsWhatItLearnsAndWhatEnds ) {
    AgentProcess query( atFarEnd( { "query", "--igmp-version", "2", "--interval", "1", "--response-time",
                                    "0.1", "--robustness", "1" } ) );
    ASSERT_TRUE( hasBegun( query ) );
    {
        AgentProcess hosts( { "run", scenario() } );
        ASSERT_TRUE( query.waitFor( AgentProcess::output, " + 239.1.1.2  EXCLUDE {}  version 2" ) );
    }
    EXPECT_TRUE( query.waitFor( AgentProcess::output, " - 239.1.1.2\n" ) );
    query.signal( SIGINT );
    EXPECT_EQ( query.exitStatus(), 0 );
    EXPECT_THAT(
        query.written( AgentProcess::output ), ContainsRegex( "group.*; asked [0-9]+ times, heard" )
    );
}

TEST_F( Query, AsksInItsVlan ) {
    AgentProcess hosts( { "run", scenario( "    tagged: true\n    vlanId: 7\n" ) } );
    ASSERT_TRUE( hasBegun( hosts ) );
    AgentProcess inVlan( scan( { "--json", "--vlan", "7" } ) );
    AgentProcess elsewhere( scan( { "--json" } ) );
    EXPECT_EQ( inVlan.exitStatus() + elsewhere.exitStatus(), 0 );
    EXPECT_EQ( Json::parse( inVlan.written( AgentProcess::output ) )["groups"].size(), 2U );
    EXPECT_EQ( Json::parse( elsewhere.written( AgentProcess::output ) )["groups"].size(), 0U );
}

TEST_F( Query, AsksFromTheEthernetAddressThatItIsGiven ) {
    AgentProcess watch( { "watch", "near0", "--ns", near_->name(), "--count", "1" } );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess query( scan( { "--mac", "02:00:00:00:00:99" } ) );
    EXPECT_EQ( query.exitStatus(), 0 );
    EXPECT_EQ( watch.exitStatus(), 0 );
    EXPECT_THAT(
        watch.written( AgentProcess::output ), HasSubstr( " 02:00:00:00:00:99 10.0.0.254 v2 general query" )
    );
}

TEST_F( Query, AsksAfterALeaveForAsLongAsItIsTold ) {
    AgentProcess watch( { "watch", "near0", "--ns", near_->name() } );
    ASSERT_TRUE( hasBegun( watch ) );
    AgentProcess query( atFarEnd( { "query", "--igmp-version", "2", "--last-member", "0.3" } ) );
    ASSERT_TRUE( query.waitFor( AgentProcess::errors, "until Ctrl-C\n" ) );
    AgentProcess hosts( { "run", scenario(), "--duration", "0.05", "--leave-on-exit" } );
    EXPECT_EQ( hosts.exitStatus(), 0 );
    EXPECT_TRUE( watch.waitFor( AgentProcess::output, " v2 group query 239.1.1.1 within 0.3 s\n" ) );
}

TEST_F( Query, YieldsToALowerAddressWhereItIsTold ) {
    AgentProcess lower( { "query", "near0", "--ns", near_->name(), "--address", "10.0.0.7", "--interval", "1",
                          "--response-time", "0.1" } );
    ASSERT_TRUE( hasBegun( lower ) );
    auto const higher = [this]( std::vector<std::string> arguments ) {
        arguments.insert( arguments.begin(), { "query", "--once", "--json", "--address", "10.0.0.9" } );
        return atFarEnd( arguments );
    };
    AgentProcess yielding( higher( { "--response-time", "1.5", "--elect" } ) );
    AgentProcess stubborn( higher( { "--response-time", "1.5" } ) );
    EXPECT_EQ( yielding.exitStatus() + stubborn.exitStatus(), 0 );
    EXPECT_EQ( Json::parse( yielding.written( AgentProcess::output ) )["isQuerier"], false );
    EXPECT_EQ( Json::parse( stubborn.written( AgentProcess::output ) )["isQuerier"], true );
}

TEST_F( Query, KeepsWhatOpeningADeviceThatIsMadeAnewTakes ) {
    AgentProcess query( atFarEnd( { "query", "--interval", "1", "--response-time", "0.1" } ) );
    ASSERT_TRUE( hasBegun( query ) );
    // CAP_NET_ADMIN, CAP_NET_RAW, CAP_SYS_ADMIN
    ASSERT_THAT( query.rights(), ElementsAre( "0000000000203000 1 " ) );
    far_->ip( "link del far0" );
    ASSERT_TRUE( query.waitFor( AgentProcess::errors, "no such device; waiting for it\n" ) );
    vethIs( *near_, "near0", *far_, "far0" );
    AgentProcess watch( { "watch", "near0", "--ns", near_->name(), "--count", "1" } );
    EXPECT_EQ( watch.exitStatus(), 0 );
    EXPECT_THAT( watch.written( AgentProcess::output ), HasSubstr( " v3 general query" ) );
}

TEST_F( Query, WithoutANamespaceThatCapabilityGoesToo ) {
    AgentProcess query( { "query", "lo" } );
    ASSERT_TRUE( hasBegun( query ) );
    EXPECT_THAT( query.rights(), ElementsAre( "0000000000003000 1 " ) );
}

TEST_F( Query, MissingDeviceOrNamespaceIsNamed ) {
    AgentProcess device( { "query", "far9", "--ns", far_->name() } );
    EXPECT_EQ( device.exitStatus(), 1 );
    EXPECT_EQ(
        device.written( AgentProcess::errors ),
        "igmphost: error: no such device: far9 in " + far_->name() + "\n"
    );
    AgentProcess ns( { "query", "far0", "--ns", "igmphost-none" } );
    EXPECT_EQ( ns.exitStatus(), 1 );
    EXPECT_EQ(
        ns.written( AgentProcess::errors ),
        "igmphost: error: cannot enter the network namespace 'igmphost-none': No such file or directory\n"
    );
}

TEST_F( Query, TimesWithWhichNobodyCanAskAreWrongUsage ) {
    AgentProcess query( { "query", "lo", "--interval", "5", "--response-time", "8" } );
    EXPECT_EQ( query.exitStatus(), 2 );
    EXPECT_EQ(
        query.written( AgentProcess::errors ),
        "igmphost: error: --response-time: expected less than the seconds from query to query, 5, found 8\n"
    );
}

} // namespace

} // namespace Agent
