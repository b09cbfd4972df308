#include "agent/command/CommandLine.h"

#include <iostream>

#include "agent/command/ExitStatus.h"
#include "agent/command/Verb.h"
#include "agent/run/Privileges.h"

namespace Agent {

namespace {

/// CLI11 has an exit status of its own for each mistake; here all of them are wrong usage.
int
parseAndDo( CLI::App& app, int argc, char** argv ) {
    Verb const verbs[] = { addCheck( app ), addDemo( app ),  addRun( app ), addModel( app ),
                           addQuery( app ), addWatch( app ), addCtl( app ), addSchema( app ) };
    try {
        app.parse( argc, argv );
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
