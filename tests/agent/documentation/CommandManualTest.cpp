/// The manual of the command is held against the command itself: what the one offers, the other explains.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>

#include "tests/agent/documentation/HelpPages.h"

namespace Agent {

namespace {

/// The options that a section has entries for, sorted; one with two entries stands there twice.
std::vector<std::string>
optionsOf( std::string const& section ) {
    static std::regex const entry( "\\n\\.It (?:Fl \\w , )?Fl -([\\w-]+)" );
    std::vector<std::string> found;
    for ( std::sregex_iterator at( section.begin(), section.end(), entry ), end; at != end; ++at ) {
        found.push_back( "--" + ( *at )[1].str() );
    }
    std::sort( found.begin(), found.end() );
    return found;
}

/// The manual of the command by the headings that its verbs have there; "igmphost" for what is above them.
class CommandManual : public ::testing::Test {
  protected:
    CommandManual() {
        std::istringstream text( sourceFile( "docs/man/igmphost.1" ) );
        std::string heading = "igmphost";
        for ( std::string line; std::getline( text, line ); ) {
            if ( line.starts_with( ".Ss " ) ) {
                heading = line.substr( 4 );
            }
            sections_[heading] += line + "\n";
        }
    }

    std::vector<HelpPage> const pages_ = helpPages();
    std::map<std::string, std::string> sections_;
};

} // namespace

TEST_F( CommandManual, HasASectionForEveryVerbAndNoOther ) {
    std::set<std::string> verbs;
    for ( HelpPage const& page : pages_ ) {
        verbs.insert( page.words );
    }
    std::set<std::string> sections;
    for ( auto const& [heading, text] : sections_ ) {
        sections.insert( heading );
    }
    EXPECT_EQ( sections, verbs );
}

TEST_F( CommandManual, DemandsNoScenarioBesideAControlSocket ) {
    EXPECT_NE(
        sections_["igmphost"].find( ".Cm run\n.Fl -control Ar PATH\n.Op Ar options\n.Op Ar SCENARIO ...\n" ),
        std::string::npos
    );
}

TEST_F( CommandManual, ExplainsEveryOptionOnceUnderItsVerbAndNoOther ) {
    for ( HelpPage const& page : pages_ ) {
        std::set<std::string> options = page.options;
        if ( page.words != "igmphost" ) {
            options.erase( "--help" ); // told once for all
        }
        EXPECT_EQ( optionsOf( sections_[page.words] ), std::vector( options.begin(), options.end() ) )
            << page.words;
    }
}

} // namespace Agent
