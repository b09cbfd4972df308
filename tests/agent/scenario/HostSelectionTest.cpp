#include "agent/scenario/HostSelection.h"

#include <fnmatch.h>

#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

class HostSelectionTest : public ::testing::Test {
  protected:
    /// The names of the hosts that are meant, in order.
    std::string named( std::vector<std::string> const& texts ) {
        std::vector<HostName> names;
        for ( std::string const& text : texts ) {
            names.push_back( { text, { 0, 1, 1 } } );
        }
        HostSelection const selection = HostFinder( scenario_ ).find( names, errors_ );
        std::string all;
        for ( U64 i = 0; i < selection.count(); ++i ) {
            HostSelection::Host const host = selection.host( i );
            all += ( all.empty() ? "" : " " ) + scenario_.hosts[host.entry].hostName( host.index ) + "#" +
                   std::to_string( host.number );
        }
        return all;
    }

    Scenario const scenario_ = scenarioOf( "hosts:\n"
                                           "  - { name: rx, count: 12 }\n"
                                           "  - { name: solo }\n"
                                           "  - { name: 'a*b' }\n"
                                           "  - { name: rx-x, count: 2 }\n" );
    Diagnostics errors_;
};

/// How many hosts have a name that matches.
U64
matching( Scenario const& scenario, std::string const& pattern ) {
    U64 count = 0;
    scenario.forEachHost( [&]( HostSpec const& spec, U32 index ) {
        count += fnmatch( pattern.c_str(), spec.hostName( index ).c_str(), 0 ) == 0 ? 1 : 0;
    } );
    return count;
}

TEST_F( HostSelectionTest, NoNameMeansEveryHost ) {
    EXPECT_EQ( HostFinder( scenario_ ).find( {}, errors_ ).count(), 16U );
}

TEST_F( HostSelectionTest, SameNamesShareWhatTheyMean ) {
    HostFinder finder( scenario_ );
    std::vector<HostName> const names{ { "rx*", { 0, 1, 1 } }, { "solo", { 0, 1, 1 } } };
    HostSelection const first = finder.find( names, errors_ );
    EXPECT_EQ( &first.ranges(), &finder.find( names, errors_ ).ranges() );
    EXPECT_NE( &first.ranges(), &finder.find( {}, errors_ ).ranges() );
}

TEST_F( HostSelectionTest, NameIsAHostsOrAnEntrys ) {
    EXPECT_EQ( named( { "solo" } ), "solo#12" );
    EXPECT_EQ( named( { "rx-12" } ), "rx-12#11" );
    EXPECT_EQ( named( { "rx-x" } ), "rx-x-1#14 rx-x-2#15" );
}

TEST_F( HostSelectionTest, PatternsAreThoseOfShells ) {
    EXPECT_EQ( named( { "rx-1*" } ), "rx-1#0 rx-10#9 rx-11#10 rx-12#11" );
    EXPECT_EQ( named( { "rx-?" } ), named( { "rx-[1-9]" } ) );
    EXPECT_EQ( named( { "*o" } ), "solo#12" );
    EXPECT_EQ( named( { "rx-x*" } ), "rx-x-1#14 rx-x-2#15" );
    EXPECT_EQ( HostFinder( scenario_ ).find( { { "*", {} } }, errors_ ).count(), 16U );
}

/// Every short pattern of these letters means the hosts that fnmatch finds among all of them.
TEST_F( HostSelectionTest, PatternsMeanWhatMatchesThem ) {
    Scenario const scenario = scenarioOf( "hosts:\n"
                                          "  - { name: a, count: 12 }\n"
                                          "  - { name: a-1-1 }\n"
                                          "  - { name: 1-a }\n"
                                          "  - { name: 1, count: 101 }\n"
                                          "  - { name: '1]1a1', count: 3 }\n" );
    std::string const letters = "a1-*?[]\\";
    HostFinder finder( scenario );
    for ( U32 number = 0; number < 4096; ++number ) {
        std::string pattern;
        for ( U32 rest = number; pattern.size() < 4; rest /= 8 ) {
            pattern += letters[rest % 8];
        }
        Diagnostics errors;
        EXPECT_EQ( finder.find( { { pattern, {} } }, errors ).count(), matching( scenario, pattern ) )
            << pattern;
    }
}

TEST_F( HostSelectionTest, NameWithAWildcardIsANameFirst ) {
    EXPECT_EQ( named( { "a*b" } ), "a*b#13" );
}

TEST_F( HostSelectionTest, HostIsTakenOnceInTheOrderOfTheScenario ) {
    EXPECT_EQ( named( { "solo", "rx-2", "rx-[123]", "rx-3" } ), "rx-1#0 rx-2#1 rx-3#2 solo#12" );
}

TEST_F( HostSelectionTest, NamesOfNoHostAreTold ) {
    EXPECT_EQ( named( { "rx-13", "rx-0", "rx-01", "sol", "z*" } ), "" );
    EXPECT_EQ(
        linesOf( errors_ ),
        ":1:1: error: hosts: expected the name of a host, found 'rx-13'; did you mean 'rx-x'?\n"
        ":1:1: error: hosts: expected the name of a host, found 'rx-0'; did you mean 'rx-x'?\n"
        ":1:1: error: hosts: expected the name of a host, found 'rx-01'; did you mean 'rx-x'?\n"
        ":1:1: error: hosts: expected the name of a host, found 'sol'; did you mean 'solo'?\n"
        ":1:1: error: hosts: expected a pattern that the name of a host matches, found 'z*'\n"
    );
}

TEST_F( HostSelectionTest, PatternsAreHeldAgainstNamesThatBeginOrEndAsTheyDo ) {
    std::string text = "hosts:\n  - { name: s, count: 1000 }\n";
    for ( int i = 0; i < 1000; ++i ) {
        text += "  - { name: h" + std::to_string( i ) + "x }\n";
    }
    Scenario const scenario = scenarioOf( text );
    HostFinder finder( scenario, 600 );
    EXPECT_EQ( finder.find( { { "h99?x", {} } }, errors_ ).count(), 10U );
    EXPECT_EQ( finder.find( { { "s-99?", {} } }, errors_ ).count(), 10U );
    EXPECT_EQ( finder.find( { { "s-100*", {} } }, errors_ ).count(), 2U );
    EXPECT_EQ( finder.find( { { "*99x", {} } }, errors_ ).count(), 10U );
    EXPECT_EQ( finder.find( { { "*-?99", {} } }, errors_ ).count(), 9U );
    EXPECT_EQ( linesOf( errors_ ), "" );
}

TEST_F( HostSelectionTest, PatternsThatTakeTooLongAreToldOnce ) {
    HostFinder finder( scenario_, 14 );
    EXPECT_EQ( finder.find( { { "solo", {} } }, errors_ ).count(), 1U );
    for ( char const* const pattern : { "?x-1", "?x-2", "?x-3" } ) {
        EXPECT_EQ( finder.find( { { pattern, { 0, 2, 1 } } }, errors_ ).count(), 0U );
    }
    EXPECT_EQ( errors_.size(), 3U );
    EXPECT_EQ(
        linesOf( errors_ ), ":2:1: error: hosts: expected names, or patterns that begin or end as fewer "
                            "names do; those up to '?x-1' take too long to find\n"
    );
}

} // namespace

} // namespace Agent
