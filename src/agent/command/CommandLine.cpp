#include "agent/command/CommandLine.h"

#include <cstring>
#include <iostream>

#include "agent/command/ExitStatus.h"
#include "agent/command/Verb.h"
#include "agent/output/StandardOutput.h"
#include "agent/run/Privileges.h"
#include "agent/scenario/Suggestion.h"

namespace Agent {

namespace {

/// What is to be said where a verb should stand and none does.
std::string
missingVerb( CLI::App const& app ) {
    if ( !app.get_subcommands().empty() ) {
        return missingVerb( *app.get_subcommands().front() );
    }
    std::vector<std::string> names;
    for ( CLI::App const* const verb : app.get_subcommands( {} ) ) {
        names.push_back( verb->get_name() );
    }
    std::vector<std::string_view> const known( names.begin(), names.end() );
    std::vector<std::string> const words = app.remaining();
    if ( !words.empty() && words.front().starts_with( '-' ) ) {
        return "unknown option '" + words.front() + "', and a verb is missing" + suggestion( "", known );
    }
    return words.empty() ? "a verb is missing" + suggestion( "", known )
                         : "unknown verb '" + words.front() + "'" + suggestion( words.front(), known );
}

std::string
usageError( CLI::App const* app, CLI::Error const& fault ) {
    return "igmphost: error: " + CLI::FailureMessage::simple( app, fault );
}

/// CLI11 has an exit status of its own for each mistake; here all of them are wrong usage.
int
parseAndDo( CLI::App& app, int argc, char** argv ) {
    Verb const verbs[] = { addCheck( app ), addDemo( app ),  addRun( app ), addModel( app ),
                           addQuery( app ), addWatch( app ), addCtl( app ), addSchema( app ) };
    try {
        app.parse( argc, argv );
    } catch ( CLI::RequiredError const& fault ) {
        bool const isVerb = std::string_view( fault.what() ) == CLI::RequiredError::Subcommand( 1 ).what();
        app.exit( isVerb ? CLI::RequiredError( missingVerb( app ), CLI::ExitCodes::RequiredError ) : fault );
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

/// The status, where all that went to the standard output has arrived there. Where the command has failed it
/// has said why, and it may have been this.
int
statusWithOutput( int status, StandardOutput& output ) {
    int const error = output.finish();
    if ( error == 0 || status == exitFailed ) {
        return status;
    }
    std::cerr << "igmphost: error: cannot write the standard output: " << std::strerror( error ) << std::endl;
    return status == exitDone ? exitFailed : status;
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
    app.failure_message( usageError );
    StandardOutput output;
    int status = exitFailed;
    try {
        status = parseAndDo( app, argc, argv );
    } catch ( std::exception const& fault ) {
        std::cerr << "igmphost: error: " << fault.what() << std::endl;
    }
    return statusWithOutput( status, output );
}

} // namespace Agent
