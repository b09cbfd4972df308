#include <algorithm>
#include <ctime>

#include "agent/run/Simulation.h"
#include "agent/run/StartUp.h"
#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

std::string
hostsWith( int hosts, int groups ) {
    return "hosts: [ { name: rx, count: " + std::to_string( hosts ) +
           ", ipAddr: 10.0.0.1, deviceName: eth0, groups: { multicastAddr: 239.0.0.1, count: " +
           std::to_string( groups ) + " } } ]";
}

/// Of the processor, so that others on the machine do not count. A turn sends what the start brought.
double
secondsToStart( Scenario const& scenario ) {
    std::clock_t const begin = std::clock();
    Simulation const simulation( scenario );
    Emulation emulation( simulation.wheel() );
    StartUp startUp( scenario, emulation, []( StartUpProgress const& ) {} );
    startUp.load();
    startUp.start();
    Kiv::defaultActivity()->activitySm().runOnce();
    return static_cast<double>( std::clock() - begin ) / CLOCKS_PER_SEC;
}

double
leastSecondsToStart( std::string const& text ) {
    Scenario const scenario = scenarioOf( text );
    double least = secondsToStart( scenario );
    for ( int i = 0; i < 2; ++i ) {
        least = std::min( least, secondsToStart( scenario ) );
    }
    return least;
}

// Four times as much would take 16 times as long if it grew with the square.

TEST( StartUpGrowth, FollowsTheHosts ) {
    EXPECT_LT( leastSecondsToStart( hostsWith( 4000, 1 ) ), 6 * leastSecondsToStart( hostsWith( 1000, 1 ) ) );
}

TEST( StartUpGrowth, FollowsTheGroupsOfAHost ) {
    EXPECT_LT(
        leastSecondsToStart( hostsWith( 1, 16'000 ) ), 6 * leastSecondsToStart( hostsWith( 1, 4000 ) )
    );
}

} // namespace

} // namespace Agent
