/// Every command of igmphost that a document shows is run as it stands there, in a folder where the files are
/// that it names. What would go on for ever, or needs a device for minutes, is told to be short.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/TemporaryFolder.h"
#include "tests/agent/documentation/HelpPages.h"
#include "tests/support/Namespace.h"
#include "tests/support/Paths.h"

namespace Agent {

namespace {

using ::testing::IsSupersetOf;
using Commands = std::vector<std::string>;

/// What stands behind igmphost in the code blocks of a document, the code in its text, the displays of a
/// manual, the comments of an example.
Commands
commandsIn( std::string const& document ) {
    static std::regex const form( "(?:\n#? {4,}|\n\\.Dl )(?:\\S*/)?igmphost ([^\n#&]*[^\n#& ])"
                                  "|`(?:\\S*/)?igmphost ([^`]+)`" );
    std::string const text = "\n" + sourceFile( document );
    Commands found;
    for ( std::sregex_iterator at( text.begin(), text.end(), form ), end; at != end; ++at ) {
        found.push_back( ( *at )[1].str() + ( *at )[2].str() );
    }
    return found;
}

/// All documents but the history, which tells of what was.
Commands
documents() {
    std::filesystem::path const source = Support::sourceFolder();
    Commands found{ "README.md", "CONTRIBUTING.md" };
    for ( char const* const folder : { "docs", "examples", "packaging" } ) {
        for ( auto const& entry : std::filesystem::recursive_directory_iterator( source / folder ) ) {
            if ( entry.is_regular_file() ) {
                found.push_back( entry.path().lexically_relative( source ).string() );
            }
        }
    }
    return found;
}

/// The part of the README about a first scenario, with another name for its namespace.
std::string
firstSteps( std::string const& ns ) {
    std::string const text = sourceFile( "README.md" );
    std::size_t const begin = text.find( "\n## A first scenario" );
    return std::regex_replace(
        text.substr( begin, text.find( "\n## ", begin + 1 ) - begin ), std::regex( "\\bblue\\b" ), ns
    );
}

/// Its scenario.
std::string
firstScenario( std::string const& steps ) {
    std::size_t const begin = steps.find( "    hosts:\n" );
    return steps.substr( begin, steps.find( "\n\n", begin ) + 1 - begin );
}

class ShownCommands : public ::testing::Test {
  protected:
    void SetUp() override {
        if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
            GTEST_SKIP() << "needs network namespaces: " << reason;
        }
        blue_ = std::make_unique<Support::Namespace>( "blue" );
        std::string const steps = firstSteps( blue_->name() );
        static std::regex const line( "\n    (ip -n [^\n]*)" );
        for ( std::sregex_iterator at( steps.begin(), steps.end(), line ), end; at != end; ++at ) {
            Support::outputOf( ( *at )[1] );
        }
        folder_.fileWith( "scenario.yaml", firstScenario( steps ) );
        std::filesystem::create_directory( folder_.file( "docs" ) );
        std::filesystem::create_directory_symlink(
            Support::sourceFolder() + "/examples", folder_.file( "examples" )
        );
    }

    /// Where the test fails, the command's complaint is told.
    void run( std::string const& command ) const {
        try {
            Support::outputOf(
                "cd " + folder_.path().string() + " && " + Support::agentBinary() + " " + command
            );
        } catch ( std::runtime_error const& error ) {
            ADD_FAILURE() << error.what();
        }
    }
    /// The command, such that it ends soon.
    static std::string shortened( std::string const& command ) {
        if ( command.starts_with( "run " ) ) {
            bool const ends = command.find( "--duration" ) != std::string::npos;
            return command + " --simulate" + ( ends ? "" : " --duration 600" );
        }
        if ( command.starts_with( "demo" ) ) {
            return command + " --hosts 50";
        }
        return command == "watch" ? command + " --duration 0.1" : command;
    }

    TemporaryFolder folder_;
    std::unique_ptr<Support::Namespace> blue_;
};

std::regex const ctl( "ctl \\S+ (.*)" );

TEST_F( ShownCommands, RunOnAWireInMemory ) {
    std::set<std::string> verbs;
    for ( std::string const& document : documents() ) {
        for ( std::string const& command : commandsIn( document ) ) {
            if ( !std::regex_match( command, ctl ) ) {
                SCOPED_TRACE( document );
                run( shortened( command ) );
                verbs.insert( command.substr( 0, command.find( ' ' ) ) );
            }
        }
    }
    EXPECT_THAT( verbs, IsSupersetOf( { "run", "demo", "model" } ) );
}

TEST_F( ShownCommands, ControlTheFirstScenario ) {
    std::string const path = folder_.file( "control" );
    AgentProcess agent( { "run", folder_.file( "scenario.yaml" ), "--control", path } );
    ASSERT_TRUE( agent.waitFor( AgentProcess::errors, "until Ctrl-C\n" ) );
    std::set<std::string> verbs;
    for ( std::string const& document : documents() ) {
        for ( std::string const& command : commandsIn( document ) ) {
            if ( std::smatch found; std::regex_match( command, found, ctl ) ) {
                SCOPED_TRACE( document );
                std::string const words = found[1];
                run( "ctl " + path + " " + shortened( words ) );
                verbs.insert( words.substr( 0, words.find( ' ' ) ) );
            }
        }
    }
    EXPECT_THAT( verbs, IsSupersetOf( { "hosts", "join", "set", "watch" } ) );
}

TEST_F( ShownCommands, OfTheFirstScenarioMakeABridgeLearnItsGroups ) {
    Commands const shown = commandsIn( "README.md" );
    auto const run = std::find_if( shown.begin(), shown.end(), []( std::string const& command ) {
        return command.starts_with( "run " );
    } );
    ASSERT_NE( run, shown.end() );
    std::istringstream text( std::regex_replace( *run, std::regex( "(\\w+\\.\\w+)" ), folder_.file( "$1" ) )
    );
    AgentProcess agent( { std::istream_iterator<std::string>( text ), {} } );
    for ( char const* const group : { "239.1.1.1 ", "239.1.2.1 ", "239.1.2.10 " } ) {
        while ( Support::outputOf( "bridge -n " + blue_->name() + " mdb" ).find( group ) == std::string::npos
        ) {
        }
    }
    agent.signal( SIGINT );
    EXPECT_EQ( agent.exitStatus(), 0 ) << agent.written( AgentProcess::errors );
    nlohmann::json const status = nlohmann::json::parse( folder_.contents( "status.json" ), nullptr, false );
    ASSERT_TRUE( status.contains( "hosts" ) );
    for ( char const* const host : { "rx-1", "rx-2", "rx-3" } ) {
        EXPECT_GE( status["hosts"][host]["v2ReportsSent"], 11 ) << host;
    }
}

TEST_F( ShownCommands, OfTheManualOfScenariosAreScenarios ) {
    std::string const text = sourceFile( "docs/man/igmphost-scenario.5" );
    static std::regex const block( "\n\\.Bd -literal[^\n]*\n([^]*?)\\.Ed\n" );
    int number = 0;
    for ( std::sregex_iterator at( text.begin(), text.end(), block ), end; at != end; ++at, ++number ) {
        folder_.fileWith( "example.yaml", ( *at )[1] );
        run( "check --strict example.yaml" );
        run( "run --simulate --duration 700 example.yaml" );
    }
    EXPECT_EQ( number, 2 );
}

} // namespace

} // namespace Agent
