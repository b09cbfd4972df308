#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

/// The names of this share's hosts.
std::string
namesOf( Scenario const& scenario ) {
    std::string names;
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) { names += spec.hostName( index ) + " "; } );
    return names;
}

constexpr char fiveHosts[] = "hosts: [ { name: a, count: 3 }, { name: b }, { name: c } ]\nshard: ";

TEST( Shard, TakesEveryNthHostOverAllEntries ) {
    EXPECT_EQ( namesOf( scenarioOf( std::string( fiveHosts ) + "1/2" ) ), "a-1 a-3 c " );
    EXPECT_EQ( namesOf( scenarioOf( std::string( fiveHosts ) + "2/2" ) ), "a-2 b " );
    EXPECT_EQ( namesOf( scenarioOf( std::string( fiveHosts ) + "1/1" ) ), "a-1 a-2 a-3 b c " );
}

TEST( Shard, BeyondTheHostsIsEmpty ) {
    EXPECT_EQ( namesOf( scenarioOf( std::string( fiveHosts ) + "6/7" ) ), "" );
}

TEST( Shard, CountsItsHosts ) {
    for ( U32 shards = 1; shards <= 7; ++shards ) {
        U64 all = 0;
        for ( U32 number = 1; number <= shards; ++number ) {
            Scenario scenario = scenarioOf( std::string( fiveHosts ) + "1/1" );
            scenario.shard = { number, shards };
            U64 walked = 0;
            scenario.forEachHost( [&]( HostSpec const&, U32 ) { ++walked; } );
            EXPECT_EQ( scenario.hostCount(), walked ) << number << "/" << shards;
            all += walked;
        }
        EXPECT_EQ( all, 5U );
    }
}

TEST( Shard, TextIsTwoNumbersInOrder ) {
    EXPECT_EQ( shardOf( "2/3" ).number, 2U );
    for ( char const* const text :
          { "", "1", "/", "1/", "/2", "0/2", "3/2", "1/2/3", "-1/2", "a/b", "1/9999999999" } ) {
        EXPECT_THROW( shardOf( text ), Kiv::RangeException ) << text;
    }
}

} // namespace

} // namespace Agent
