/// The manual of scenarios is held against the model: what can be set is explained, with its true default.

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>

#include "agent/expecting/ExpectationReader.h"
#include "agent/querying/QuerierReader.h"
#include "agent/scenario/ScenarioReader.h"
#include "agent/scenario/reading/SettingReader.h"
#include "agent/timeline/EventReader.h"
#include "tests/agent/documentation/HelpPages.h"
#include "tests/support/Namespace.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

/// The manual of scenarios by its sections.
class ScenarioManual : public ::testing::Test {
  protected:
    /// Every key that the section explains, with its default where it names one.
    static std::map<std::string, std::string> keys( std::string const& section ) {
        std::string const text = sourceFile( "docs/man/igmphost-scenario.5" );
        std::size_t const begin = text.find( ".Sh " + section + "\n" );
        std::istringstream lines( text.substr( begin, text.find( "\n.Sh ", begin ) - begin ) );
        std::map<std::string, std::string> found;
        std::regex const form( "\\.It Cm (\\w+)(?: Pq (\\S+))?" );
        std::smatch match;
        for ( std::string line; std::getline( lines, line ); ) {
            if ( std::regex_match( line, match, form ) ) {
                found[match[1]] = match[2];
            }
        }
        return found;
    }
};

/// The attributes that a scenario sets, with their defaults.
std::map<std::string, std::string>
defaults( std::span<Kiv::Attribute const* const> attributes ) {
    std::map<std::string, std::string> found;
    for ( Kiv::Attribute const* row : attributes ) {
        found[row->name] = row->defaultText;
    }
    return found;
}

std::map<std::string, std::string>
withoutDefaults( std::span<KeyRow const> rows ) {
    std::map<std::string, std::string> found;
    for ( KeyRow const& row : rows ) {
        found[std::string( row.name )];
    }
    return found;
}

} // namespace

TEST_F( ScenarioManual, ExplainsTheSettingsOfAHostWithTheirDefaults ) {
    std::map<std::string, std::string> expected = defaults( settableHostAttributes() );
    expected["enabled"] = "true"; // a scenario names hosts in order to run them
    for ( char const* own : { "name", "count", "vlanStep", "groups" } ) {
        expected[own] = "";
    }
    EXPECT_EQ( keys( "HOSTS" ), expected );
}

TEST_F( ScenarioManual, ExplainsTheSettingsOfAGroupWithTheirDefaults ) {
    std::map<std::string, std::string> expected = defaults( settableGroupAttributes() );
    expected["filterMode"] = ""; // depends on the sources
    for ( char const* own : { "multicastAddr", "count", "step", "file", "sources" } ) {
        expected[own] = "";
    }
    EXPECT_EQ( keys( "GROUPS" ), expected );
}

TEST_F( ScenarioManual, ExplainsTheKeysOfEvents ) {
    EXPECT_EQ( keys( "EVENTS" ), withoutDefaults( eventKeys() ) );
    EXPECT_EQ( keys( "ZAP" ), withoutDefaults( zapKeys() ) );
    EXPECT_EQ( keys( "FLAP" ), withoutDefaults( flapKeys() ) );
}

TEST_F( ScenarioManual, ExplainsTheKeysOfExpectationsAndOfTheQuerier ) {
    EXPECT_EQ( keys( "EXPECTATIONS" ), withoutDefaults( expectationKeys() ) );
    EXPECT_EQ( keys( "QUERIER" ), withoutDefaults( querierKeys() ) );
}

/// Its keys are known by what the reader says of one that it does not know.
TEST_F( ScenarioManual, ExplainsTheKeysOfAFile ) {
    for ( auto const& [key, none] : keys( "DESCRIPTION" ) ) {
        Diagnostics errors;
        readScenarioText( "file", key + ": {}", errors );
        std::ostringstream told;
        errors.print( told, { "file" }, "error" );
        EXPECT_EQ( told.str().find( "unknown key" ), std::string::npos ) << key;
    }
}

TEST( Manual, HasNothingForTheLinterToSay ) {
    try {
        Support::outputOf( "command -v mandoc" );
    } catch ( std::runtime_error const& ) {
        GTEST_SKIP() << "mandoc is not installed";
    }
    for ( char const* page : { "igmphost.1", "igmphost-scenario.5" } ) {
        std::string const path = Support::sourceFolder() + "/docs/man/" + page;
        EXPECT_EQ( Support::outputOf( "mandoc -Tlint -W warning " + path ), "" );
    }
}

} // namespace Agent
