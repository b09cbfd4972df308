#include <ctime>

#include <algorithm>

#include "agent/checking/ScenarioSummary.h"
#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

/// So many entries of hosts and as many events, all of which name all of them, in three ways.
std::string
manyEvents( int count ) {
    std::string text = "defaults: { deviceName: eth0 }\nhosts:\n";
    for ( int i = 0; i < count; ++i ) {
        std::string const high = std::to_string( i / 250 );
        std::string const low = std::to_string( i % 250 + 1 );
        text += "  - { name: h" + std::to_string( i ) + ", ipAddr: 10.0." + high + "." + low +
                ", macAddr: 02:00:00:00:" + std::to_string( 10 + i / 90 ) + ":" +
                std::to_string( 10 + i % 90 ) + ", groups: 239." + std::to_string( i % 250 ) + ".1.0/24 }\n";
    }
    text += "events:\n";
    char const* const named[] = { "hosts: 'h*', ", "hosts: '*', ", "" };
    for ( int i = 0; i < count; ++i ) {
        text += "  - { at: " + std::to_string( i * 3 / count ) + ", " + named[i * 3 / count] +
                "set: { robustness: " + std::to_string( 2 + i % 3 ) + " } }\n";
    }
    return text;
}

/// Of the processor, so that others on the machine do not count.
double
secondsToCheck( std::string const& text ) {
    std::clock_t const begin = std::clock();
    EXPECT_EQ( errorsOf( text ), "" );
    Scenario const scenario = scenarioOf( text );
    EXPECT_EQ( linesOf( scenarioWarnings( scenario ) ), "" );
    EXPECT_NE( summaryOf( scenario ).hosts, 0U );
    return static_cast<double>( std::clock() - begin ) / CLOCKS_PER_SEC;
}

double
leastSecondsToCheck( int count ) {
    std::string const text = manyEvents( count );
    double least = secondsToCheck( text );
    for ( int i = 0; i < 2; ++i ) {
        least = std::min( least, secondsToCheck( text ) );
    }
    return least;
}

/// Eight times as much would take 64 times as long if it grew with the square.
TEST( CheckGrowth, EntriesAndEventsGrowTogether ) {
    EXPECT_LT( leastSecondsToCheck( 4000 ), 24 * leastSecondsToCheck( 500 ) );
}

} // namespace

} // namespace Agent
