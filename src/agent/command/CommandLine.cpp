#include "agent/command/CommandLine.h"

#include <iostream>

#include "agent/command/ExitStatus.h"
#include "agent/command/Verb.h"
#include "agent/run/Privileges.h"
#include "agent/scenario/Suggestion.h"

namespace Agent {

namespace {

/// What is to be said of a word that stands where a verb should; empty where there is none.
std::string
unknownVerb( CLI::App const& app ) {
    if ( !app.get_subcommands().empty() ) {
        return unknownVerb( *app.get_subcommands().front() );
    }
    std::vector<std::string> const words = app.remaining();
    std::vector<std::string> names;
    for ( CLI::App const* const verb : app.get_subcommands( {} ) ) {
        names.push_back( verb->get_name() );
    }
    if ( names.empty() || words.empty() || words.front().starts_with( '-' ) ) {
        return "";
    }
    std::vector<std::string_view> const known( names.begin(), names.end() );
    return "unknown verb '" + words.front() + "'" + suggestion( words.front(), known );
}

/// CLI11 has an exit status of its own for each mistake; here all of them are wrong usage.
int
parseAndDo( CLI::App& app, int argc, char** argv ) {
    Verb const verbs[] = { addCheck( app ), addDemo( app ),  addRun( app ), addModel( app ),
                           addQuery( app ), addWatch( app ), addCtl( app ), addSchema( app ) };
    try {
        app.parse( argc, argv );
    } catch ( CLI::RequiredError const& fault ) {
        std::string const verb = unknownVerb( app );
        app.exit( verb.empty() ? fault : CLI::RequiredError( verb, CLI::ExitCodes::RequiredError ) );
        return exitWrongUsage;
    } catch ( CLI::ParseError const& fault ) {
        return app.exit( fault ) == 0 ? exitDone : exitWrongUsage;
    }
    for ( Verb const& verb : verbs ) {
        if ( verb.command->parsed() ) {
            return verb.perform();
        }
    }
    return exitWrongUsage;
}

} // namespace

int
commandLine( int argc, char** argv ) {
    if ( isSetUid() ) {
        std::cerr << "igmphost: error: it does not run set-uid or set-gid; run it as root, or give its file "
                     "capabilities"
                  << std::endl;
        return exitFailed;
    }
    CLI::App app( "Emulates IGMP hosts", "igmphost" );
    app.set_version_flag( "--version", "igmphost " IGMPHOST_VERSION, "Print the version and exit" );
    app.require_subcommand( 1 );
    try {
        return parseAndDo( app, argc, argv );
    } catch ( std::exception const& fault ) {
        std::cerr << "igmphost: error: " << fault.what() << std::endl;
        return exitFailed;
    }
}

} // namespace Agent
