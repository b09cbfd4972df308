/// Every command of igmphost that a document shows is run as it stands there, in a folder where the files are
/// that it names. What would go on for ever, or needs a device for minutes, is told to be short. Of the
/// commands of others each is run elsewhere, or has a reason why it is not: the list stands here.

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

/// The same for the commands of others: scripts of the tree, and programs of the system.
Commands
otherCommandsIn( std::string const& document ) {
    static std::string const programs =
        "((?:[A-Z_]+=\\S+ +)*(?:scripts/\\w+|build/\\S+/bin/\\w+"
        "|(?:cmake|ctest|ip|bridge|systemctl|podman|docker|containerlab|man)(?= ))"
        "(?: [^\n`#]*[^\n`# ])?|PATH=\\S+)";
    static std::regex const form( "(?:\n#? {4,}|\n\\.Dl )" + programs + "|`" + programs + "`" );
    std::string const text = "\n" + sourceFile( document );
    Commands found;
    for ( std::sregex_iterator at( text.begin(), text.end(), form ), end; at != end; ++at ) {
        found.push_back( ( *at )[1].str() + ( *at )[2].str() );
    }
    return found;
}

struct Elsewhere {
    char const* form;
    char const* where; ///< it is run, or why it is not
};

constexpr Elsewhere elsewhere[] = {
    { "ip netns (add|del) blue", "a namespace of its own stands for blue in every test of this file" },
    { "ip -n blue .*|bridge -n blue mdb", "run here, in that namespace" },
    { "PATH=.*", "concerns the terminal of a person; tests call the command by its path" },
    { "scripts/(demo|check|test.*|coverage.*|bench --budgets.*)",
      "continuous integration runs them; the tests are within" },
    { "scripts/build asan && ctest --preset asan", "a second build of everything; run by hand" },
    { "scripts/(build|bootstrap|format).*",
      "scripts/check and the other scripts call them, or what they call" },
    { "scripts/fuzz.*", "continuous integration runs each target for a moment, scripts/nightly for longer" },
    { "scripts/(bench|soak|memcheck).*",
      "take hours, or want the machine for themselves; scripts/nightly runs them" },
    { "scripts/nightly", "takes the night" },
    { "scripts/queriers", "installs routers that others wrote; scripts/nightly runs it" },
    { "scripts/mutate.*", "builds the tree anew for each error that it makes, for hours; run by hand" },
    { "scripts/package.*",
      "fetches an empty Debian from the network and wants root; scripts/nightly runs it" },
    { "scripts/screen.*", "makes a page of docs/; what it shows has a test of its own on a terminal" },
    { "IGMPHOST_HISTOGRAM=1 .*", "prints more of a test that always runs" },
    { "IGMPHOST_RECORD=1 .*", "writes into the tree, on purpose" },
    { "cmake --install build/release", "package.Install, with the build under test and a prefix of its own" },
    { "man (igmphost|igmphost-scenario|docs/man/.*)",
      "a pager; what the pages say is held against the command" },
    { "systemctl .*",
      "wants a system that systemd runs; scripts/package verifies the unit and runs its command" },
    { "podman .*|docker .*", "fetch images from the network; a test runs the command of the topology" },
    { "(\\w+=\\S+ )*containerlab .*",
      "wants images that are not free; a test runs the command of the topology" },
};

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

TEST( ShownCommandsOfOthers, AreRunElsewhereOrHaveAReason ) {
    std::set<std::string_view> used;
    for ( std::string const& document : documents() ) {
        for ( std::string const& command : otherCommandsIn( document ) ) {
            auto const row =
                std::find_if( std::begin( elsewhere ), std::end( elsewhere ), [&]( Elsewhere const& one ) {
                    return std::regex_match( command, std::regex( one.form ) );
                } );
            if ( row == std::end( elsewhere ) ) {
                ADD_FAILURE() << document << ": who runs '" << command << "'?";
            } else {
                used.insert( row->form );
            }
        }
    }
    for ( Elsewhere const& one : elsewhere ) {
        EXPECT_TRUE( used.contains( one.form ) ) << one.form << " is shown nowhere";
    }
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
