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

/// So many entries of hosts, one of as many hosts, and an event for each of all of them, by a pattern.
std::string
manyPatterns( int count ) {
    std::string text = "hosts:\n  - { name: s, count: " + std::to_string( count ) +
                       ", ipAddr: 11.0.0.1, macAddr: 02:01:00:00:00:01, deviceName: eth0 }\n";
    std::string events = "events:\n";
    for ( int i = 0; i < count; ++i ) {
        std::string const number = std::to_string( 100000 + i );
        text += "  - { name: h" + number + ", ipAddr: 10.0." + std::to_string( i / 250 ) + "." +
                std::to_string( i % 250 + 1 ) + ", macAddr: 02:00:00:" + number.substr( 0, 2 ) + ":" +
                number.substr( 2, 2 ) + ":" + number.substr( 4 ) + ", deviceName: eth0 }\n";
        std::string const patterns[] = { "h" + number + "*", "h*" + number,
                                         "s-" + std::to_string( i + 1 ) + "*" };
        for ( std::string const& pattern : patterns ) {
            events += "  - { at: 1, hosts: '" + pattern + "', disable: }\n";
        }
    }
    return text + events;
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
leastSecondsToCheck( std::string const& text ) {
    double least = secondsToCheck( text );
    for ( int i = 0; i < 2; ++i ) {
        least = std::min( least, secondsToCheck( text ) );
    }
    return least;
}

/// Eight times as much would take 64 times as long if it grew with the square.
TEST( CheckGrowth, EntriesAndEventsGrowTogether ) {
    EXPECT_LT( leastSecondsToCheck( manyEvents( 4000 ) ), 24 * leastSecondsToCheck( manyEvents( 500 ) ) );
}

TEST( CheckGrowth, EntriesAndPatternsGrowTogether ) {
    EXPECT_LT( leastSecondsToCheck( manyPatterns( 2000 ) ), 24 * leastSecondsToCheck( manyPatterns( 250 ) ) );
}

/// A scenario whose entry stands for that many hosts of as many groups as that, the VLANs with them.
std::string
oneEntry( int hosts, int groups ) {
    return "hosts: [ { name: rx, count: " + std::to_string( hosts ) +
           ", ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, groups: { multicastAddr: "
           "239.0.0.1, count: " +
           std::to_string( groups ) + " } } ]\nevents: [ { at: 1, hosts: 'rx-*', leave: all } ]\n";
}

/// What takes no time at all may take a little more at times.
constexpr double noise = 0.01;

TEST( CheckGrowth, TheNumberOfHostsOfAnEntryTakesInProportionAtMost ) {
    EXPECT_LT(
        leastSecondsToCheck( oneEntry( 200'000, 2 ) ),
        6 * leastSecondsToCheck( oneEntry( 50'000, 2 ) ) + noise
    );
}

TEST( CheckGrowth, TheNumberOfGroupsOfAHostTakesInProportionAtMost ) {
    EXPECT_LT(
        leastSecondsToCheck( oneEntry( 2, 1'000'000 ) ),
        6 * leastSecondsToCheck( oneEntry( 2, 250'000 ) ) + noise
    );
}

} // namespace

} // namespace Agent
