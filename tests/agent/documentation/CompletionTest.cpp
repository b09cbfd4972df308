/// What a shell completes is what the command's help offers, for every verb. The shells are real; zsh's own
/// functions that would show the result are replaced by some that print it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "tests/agent/documentation/HelpPages.h"
#include "tests/support/Namespace.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

class Completion : public ::testing::Test {
  protected:
    /// What the shell offers behind the words of the page and a word begun.
    virtual std::set<std::string> offered( HelpPage const& page, std::string const& begun ) = 0;

    void checkAll() {
        for ( HelpPage const& page : helpPages() ) {
            EXPECT_EQ( offered( page, "--" ), page.options ) << page.words;
            if ( !page.verbs.empty() ) {
                EXPECT_EQ( offered( page, "" ), page.verbs ) << page.words;
            }
        }
    }
    /// The command line with the command by its path.
    static std::string commandLine( HelpPage const& page ) {
        return Support::agentBinary() + page.words.substr( std::string( "igmphost" ).size() );
    }
    static std::set<std::string> wordsOf( std::string const& output ) {
        std::istringstream words( output );
        return { std::istream_iterator<std::string>( words ), {} };
    }
};

class BashCompletion : public Completion {
  protected:
    std::set<std::string> offered( HelpPage const& page, std::string const& begun ) override {
        return wordsOf( Support::outputOf(
            "bash -c 'source " + Support::sourceFolder() + "/packaging/completions/igmphost; COMP_WORDS=( " +
            commandLine( page ) + " \"" + begun +
            "\" ); COMP_CWORD=$(( ${#COMP_WORDS[@]} - 1 )); _igmphost; echo \"${COMPREPLY[@]}\"'"
        ) );
    }
};

class ZshCompletion : public Completion {
  protected:
    void SetUp() override {
        try {
            Support::outputOf( "command -v zsh" );
        } catch ( std::runtime_error const& ) {
            GTEST_SKIP() << "zsh is not installed";
        }
    }
    std::set<std::string> offered( HelpPage const& page, std::string const& begun ) override {
        return wordsOf( Support::outputOf(
            "zsh -f -c '_describe() { print -l -- ${${(@P)@[-1]}%%:*} | grep -vx -- -. }; words=( " +
            commandLine( page ) + " \"" + begun + "\" ); CURRENT=$#words; source " + Support::sourceFolder() +
            "/packaging/completions/_igmphost'"
        ) );
    }
};

} // namespace

TEST_F( BashCompletion, OffersEveryVerbAndOption ) {
    checkAll();
}

TEST_F( ZshCompletion, OffersEveryVerbAndOption ) {
    checkAll();
}

} // namespace Agent
