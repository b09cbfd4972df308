/// What contributors are told of scripts and presets is held against those that there are.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "tests/agent/documentation/HelpPages.h"
#include "tests/support/Namespace.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

using ::testing::HasSubstr;

/// Each match of the form in the text, its first group.
std::set<std::string>
allOf( std::string const& text, char const* form ) {
    std::regex const regex( form );
    std::set<std::string> found;
    for ( std::sregex_iterator at( text.begin(), text.end(), regex ), end; at != end; ++at ) {
        found.insert( ( *at )[1] );
    }
    return found;
}

TEST( ContributingPage, ListsEveryScriptWithOptionsThatItHas ) {
    std::string const page = sourceFile( "CONTRIBUTING.md" );
    for ( auto const& entry : std::filesystem::directory_iterator( Support::sourceFolder() + "/scripts" ) ) {
        if ( entry.path().has_extension() ) {
            continue; // what scripts read
        }
        std::string const name = entry.path().filename().string();
        std::string rows;
        for ( std::string const& row : allOf( page, ( "\n\\| `scripts/" + name + "([^|]*)\\|" ).c_str() ) ) {
            rows += row;
        }
        EXPECT_NE( rows, "" ) << name << " has no row";
        std::string const help = Support::outputOf( entry.path().string() + " --help" );
        for ( std::string const& option : allOf( rows, "(--[\\w-]+)" ) ) {
            EXPECT_THAT( help, HasSubstr( option ) ) << name;
        }
    }
}

TEST( ContributingPage, ListsEveryPreset ) {
    std::set<std::string> presets;
    nlohmann::json const file = nlohmann::json::parse( sourceFile( "CMakePresets.json" ) );
    for ( nlohmann::json const& preset : file["configurePresets"] ) {
        if ( !preset.value( "hidden", false ) ) {
            presets.insert( preset["name"] );
        }
    }
    std::string const page = sourceFile( "CONTRIBUTING.md" );
    std::string const table = page.substr( page.find( "| preset |" ) );
    EXPECT_EQ( allOf( table.substr( 0, table.find( "\n\n" ) ), "\n\\| `(\\w+)` \\|" ), presets );
}

TEST( Documents, NameNoScriptThatIsNot ) {
    std::set<std::string> named;
    for ( char const* const document : { "README.md", "CONTRIBUTING.md", "docs/performance.md" } ) {
        named.merge( allOf( sourceFile( document ), "\\bscripts/(\\w+)" ) );
    }
    EXPECT_TRUE( named.contains( "demo" ) );
    for ( std::string const& name : named ) {
        EXPECT_FALSE( sourceFile( "scripts/" + name + ( name == "packages" ? ".txt" : "" ) ).empty() );
    }
}

} // namespace

} // namespace Agent
