#include <gmock/gmock.h>

#include "agent/demo/Demo.h"
#include "tests/agent/AgentProcess.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;

std::string
row( char const* what, char const* left, char const* right ) {
    char text[128];
    std::snprintf( text, sizeof text, "%-20s%22s%22s\n", what, left, right );
    return text;
}

/// The real command with small numbers: what it prints as its table. It must agree with itself.
std::string
tableOf( std::vector<std::string> arguments ) {
    arguments.insert( arguments.begin(), "demo" );
    AgentProcess agent( arguments );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT(
        agent.written( AgentProcess::output ),
        HasSubstr( "The querier has learned exactly what is configured.\n" )
    );
    return agent.written( AgentProcess::output );
}

/// Two reports of every host for each of its groups at the start, and one after each of six queries but the
/// first, whose answer the second report of the start stands for.
TEST( Demo, HostsOfVersion1AreLearned ) {
    std::string const table = tableOf( { "--hosts", "20", "--groups", "3", "--igmp-version", "1" } );
    EXPECT_THAT( table, HasSubstr( row( "version 1 reports", "420", "420" ) ) );
    EXPECT_THAT( table, HasSubstr( row( "queries", "120", "6" ) ) );
    EXPECT_THAT( table, HasSubstr( row( "groups", "22", "22" ) ) );
}

TEST( Demo, HostsOfVersion2AreLearned ) {
    std::string const table =
        tableOf( { "--hosts", "20", "--groups", "3", "--igmp-version", "igmpVersion2" } );
    EXPECT_THAT( table, HasSubstr( row( "version 2 reports", "420", "420" ) ) );
    EXPECT_THAT( table, HasSubstr( row( "groups", "22", "22" ) ) );
}

TEST( Demo, HostsOfVersion3AreLearned ) {
    std::string const table = tableOf( { "--hosts", "20", "--groups", "3", "--igmp-version", "3" } );
    EXPECT_THAT( table, HasSubstr( row( "version 2 reports", "0", "0" ) ) );
    EXPECT_THAT( table, HasSubstr( row( "groups", "22", "22" ) ) );
}

TEST( Demo, TaggedHostsAreLearnedInTheirVlans ) {
    std::string const table = tableOf( { "--hosts", "20", "--groups", "1", "--vlans", "8" } );
    EXPECT_THAT( table, HasSubstr( row( "version 2 reports", "140", "140" ) ) );
    EXPECT_THAT( table, HasSubstr( row( "queries", "120", "48" ) ) );
    EXPECT_THAT( table, HasSubstr( row( "groups", "20", "20" ) ) );
}

TEST( Demo, TaggedHostsOfVersion3AreLearned ) {
    tableOf( { "--hosts", "20", "--groups", "4", "--vlans", "3", "--igmp-version", "3" } );
}

TEST( Demo, TwoRunsAreAlike ) {
    std::vector<std::string> const arguments{ "--hosts", "30", "--igmp-version", "3" };
    EXPECT_EQ( tableOf( arguments ), tableOf( arguments ) );
}

TEST( Demo, ProgressIsToldOnTheErrorStream ) {
    AgentProcess agent( { "demo", "--hosts", "1", "--duration", "60" } );
    agent.exitStatus();
    EXPECT_THAT( agent.written( AgentProcess::errors ), HasSubstr( "30 of 60 s simulated\n" ) );
    EXPECT_THAT( agent.written( AgentProcess::errors ), ::testing::EndsWith( "60 of 60 s simulated\n" ) );
}

TEST( Demo, RealTimePassesAsItDoes ) {
    AgentProcess agent( { "demo", "--hosts", "5", "--duration", "0.05", "--realtime" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT( agent.written( AgentProcess::errors ), ::testing::EndsWith( "0.05 of 0.05 s\n" ) );
}

TEST( Demo, TraceIsShownOnTheErrorStream ) {
    AgentProcess agent( { "demo", "--hosts", "1", "--groups", "1", "--duration", "1", "--trace",
                          "IgmpHost:4" } );
    EXPECT_EQ( agent.exitStatus(), 0 );
    EXPECT_THAT(
        agent.written( AgentProcess::errors ),
        HasSubstr( " IgmpHost:4 IgmpHost host-1 joining group 239.1.0.0\n" )
    );
}

} // namespace

} // namespace Agent
