#include <algorithm>
#include <ctime>

#include "agent/run/Simulation.h"
#include "agent/timeline/EventCursor.h"
#include "agent/timeline/HostActions.h"
#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

/// Of the processor, so that others on the machine do not count.
double
secondsToJoin( Scenario const& scenario ) {
    Simulation const simulation( scenario );
    Emulation emulation( simulation.wheel() );
    emulation.hostDir().igmpHostIs( "rx" );
    HostActions actions( scenario, emulation );
    EventCursor cursor( scenario.events.at( 0 ), scenario.shard, 0 );
    std::clock_t const begin = std::clock();
    while ( Kiv::isFinite( cursor.time() ) ) {
        actions.perform( cursor.event(), cursor.take() );
    }
    return static_cast<double>( std::clock() - begin ) / CLOCKS_PER_SEC;
}

/// To join that many groups, each listed for itself.
double
leastSecondsToJoin( int groups ) {
    std::string list;
    for ( int i = 0; i < groups; ++i ) {
        list +=
            ( i == 0 ? "239.0." : ", 239.0." ) + std::to_string( i / 256 ) + "." + std::to_string( i % 256 );
    }
    Scenario const scenario =
        scenarioOf( "hosts: [ { name: rx } ]\nevents: [ { at: 1, join: [ " + list + " ] } ]" );
    double least = secondsToJoin( scenario );
    for ( int i = 0; i < 2; ++i ) {
        least = std::min( least, secondsToJoin( scenario ) );
    }
    return least;
}

/// Four times as much would take 16 times as long if it grew with the square.
TEST( TimelineGrowth, FollowsTheGroupsThatAnEventLists ) {
    EXPECT_LT( leastSecondsToJoin( 20'000 ), 8 * leastSecondsToJoin( 5000 ) );
}

} // namespace

} // namespace Agent
