/// The manual of the command is held against the command itself: what the one offers, the other explains.

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>

#include "tests/agent/documentation/HelpPages.h"

namespace Agent {

namespace {

std::set<std::string>
matches( std::string const& text, char const* form ) {
    std::set<std::string> found;
    std::regex const regex( form );
    for ( std::sregex_iterator at( text.begin(), text.end(), regex ), end; at != end; ++at ) {
        found.insert( ( *at )[1] );
    }
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

TEST_F( CommandManual, HasASectionForEveryVerb ) {
    for ( HelpPage const& page : pages_ ) {
        EXPECT_TRUE( sections_.contains( page.words ) ) << page.words;
    }
}

TEST_F( CommandManual, ExplainsEveryOptionUnderItsVerb ) {
    for ( HelpPage const& page : pages_ ) {
        std::set<std::string> missing = page.options;
        if ( page.words != "igmphost" ) {
            missing.erase( "--help" ); // told once for all
        }
        for ( std::string const& name :
              matches( sections_[page.words], "\\n\\.It (?:Fl \\w , )?Fl -([\\w-]+)" ) ) {
            missing.erase( "--" + name );
        }
        EXPECT_EQ( missing, std::set<std::string>() ) << page.words;
    }
}

} // namespace Agent
