#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

constexpr char hosts[] = "hosts: [ { name: rx, count: 3 } ]\nexpect:\n";

std::string
expectErrors( std::string const& entry ) {
    return errorsOf( hosts + ( "  - " + entry + "\n" ) );
}

TEST( ExpectationReader, ConditionsNameAttributesOfTheStatus ) {
    Scenario const scenario = scenarioOf(
        hosts + std::string( "  - { at: 5, hosts: rx-2, v2ReportsSent: '>= 2', igmpVersion: 2 }\n" )
    );
    Expectation const& expectation = scenario.expectations.at( 0 );
    EXPECT_EQ( expectation.time, 5.0 );
    EXPECT_EQ( expectation.selection.count(), 1U );
    ASSERT_EQ( expectation.status.size(), 2U );
    EXPECT_STREQ( expectation.status[0].attribute->name, "v2ReportsSent" );
    EXPECT_EQ( expectation.status[0].comparison.text(), ">= 2" );
}

TEST( ExpectationReader, WhatIsSaidOfOneVersionIsNotTakenForAnother ) {
    std::string const told = expectErrors( "{ v3ReportsSent: 2 }" );
    EXPECT_THAT( told, ::testing::HasSubstr( "v3CurrentStateReportSent" ) );
    EXPECT_THAT( told, ::testing::Not( ::testing::HasSubstr( "v1ReportsSent" ) ) );
}

TEST( ExpectationReader, EveryErrorIsTold ) {
    EXPECT_EQ(
        expectErrors( "{ at: soon, hosts: tx, v2ReportSent: 2, v2LeavesSent: '=> 2', igmpVersion: '> 2' }" ),
        ":3:11: error: at: expected a number of seconds, 0 or above, found 'soon'\n"
        ":3:24: error: hosts: expected the name of a host, found 'tx'; did you mean 'rx'?\n"
        ":3:28: error: unknown key 'v2ReportSent' in an expectation; did you mean 'v2ReportsSent'?\n"
        ":3:59: error: v2LeavesSent: expected a whole number from 0 to 4294967295, or one behind ==, !=, "
        "<, <=, > or >=, found '=> 2'\n"
        ":3:80: error: igmpVersion: expected a value, or == or != and a value, for what is no number, found "
        "'> 2'\n"
    );
    EXPECT_EQ(
        expectErrors( "{ v2LeavesSent: '>> 2' }" ),
        ":3:21: error: v2LeavesSent: expected a whole number from 0 to 4294967295, or one behind ==, !=, "
        "<, <=, > or >=, found '>> 2'\n"
    );
}

TEST( ExpectationReader, ExpectationHasACondition ) {
    EXPECT_EQ(
        expectErrors( "{ at: 1 }" ),
        ":3:5: error: missing condition in an expectation; expected an attribute of a "
        "host's status such as v2ReportsSent, or querier or bridge\n"
    );
    EXPECT_EQ(
        expectErrors( "{ at: 1, bridge: { device: br0 } }" ),
        ":3:22: error: bridge: expected one of joined, notJoined, groupCount, found none\n"
    );
    EXPECT_EQ(
        expectErrors( "{ at: 1, bridge: { joined: 239.1.1.1 } }" ),
        ":3:22: error: missing key 'device' in what a bridge is to know\n"
    );
}

TEST( ExpectationReader, KeysMustGoTogether ) {
    EXPECT_EQ(
        expectErrors( "{ within: 1, v2LeavesSent: 2 }" ),
        ":3:15: error: within: expected at beside it, found none\n"
    );
    EXPECT_EQ(
        expectErrors( "{ hosts: rx, bridge: { device: br0, groupCount: 3 } }" ),
        ":3:14: error: hosts: goes with attributes of a host's status\n"
    );
    EXPECT_EQ(
        expectErrors( "{ total: true, igmpVersion: 2 }" ), ":3:14: error: total: igmpVersion is no counter\n"
    );
    EXPECT_EQ(
        expectErrors( "{ querier: { groupCount: 3 }, within: soon }" ),
        ":3:16: error: querier: expected a querier in the scenario, found none\n"
        ":3:43: error: within: expected a number of seconds, 0 or above, found 'soon'\n"
        ":3:43: error: within: expected at beside it, found none\n"
    );
    EXPECT_EQ(
        expectErrors( "{ v2LeavesSent: many, totl: true, hosts: rx }" ),
        ":3:21: error: v2LeavesSent: expected a whole number from 0 to 4294967295, or one behind ==, !=, "
        "<, <=, > or >=, found 'many'\n"
        ":3:27: error: unknown key 'totl' in an expectation; did you mean 'total'?\n"
    );
}

TEST( ExpectationReader, QuerierHasItsVariables ) {
    std::string const text = hosts + std::string( "  - { querier: { groupCount: 3 } }\nquerier: " );
    Scenario const scenario = scenarioOf(
        text + "{ device: far0, ns: far, igmpVersion: 2, interval: 6, lastMember: 0.5, vlanId: 7 }\n"
    );
    ASSERT_TRUE( scenario.querier );
    EXPECT_EQ( scenario.querier->device, "far0" );
    EXPECT_EQ( scenario.querier->config.version, 2 );
    EXPECT_EQ( scenario.querier->config.queryInterval, 6.0 );
    EXPECT_EQ( scenario.querier->config.queryResponseInterval, 3.0 );
    EXPECT_EQ( scenario.querier->config.vlanId, Bridging::VlanId( 7 ) );
    EXPECT_EQ(
        errorsOf( text + "{ devise: x, igmpVersion: 4 }\n" ),
        ":4:10: error: missing key 'device' in a querier\n"
        ":4:12: error: unknown key 'devise' in a querier; did you mean 'device'?\n"
        ":4:36: error: igmpVersion: expected an IGMP version, 1 to 3, found '4'\n"
    );
    EXPECT_EQ(
        errorsOf( text + "{ device: x, ipAddr: 224.0.0.1, lastMember: 0.01 }\n" ),
        ":4:31: error: ipAddr: expected a unicast address, found 224.0.0.1\n"
        ":4:54: error: lastMember: expected what a query can tell, seconds from 0.1 to 3174.4, found 0.01\n"
    );
    EXPECT_EQ(
        errorsOf( text + "{ device: x, interval: 5, responseTime: 8 }\n" ),
        ":4:50: error: responseTime: expected less than the seconds from query to query, 5, found 8\n"
    );
}

} // namespace

} // namespace Agent
