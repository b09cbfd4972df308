#include "agent/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "agent/Demo.h"
#include "agent/Model.h"
#include "agent/Run.h"

namespace Agent {

namespace {

/// An option whose text becomes a value by `parse`, which raises an exception for what it does not take.
template <class T, class Parse>
void
addParsed(
    CLI::App& command, std::string const& name, T& target, Parse parse, char const* form, char const* help
) {
    auto const take = [&target, parse, name]( std::string const& text ) {
        try {
            target = parse( text );
        } catch ( std::exception const& fault ) {
            throw CLI::ValidationError( name, fault.what() );
        }
    };
    command.add_option_function<std::string>( name, take, help )->type_name( form );
}

Kiv::Seconds
duration( std::string const& text ) {
    Kiv::Seconds const seconds = Kiv::ValueTraits<double>::parse( text );
    if ( seconds <= 0.0 || !Kiv::isFinite( seconds ) ) {
        throw std::invalid_argument( "expected a number of seconds above 0, found '" + text + "'" );
    }
    return seconds;
}

Igmp::IgmpVersion
igmpVersion( std::string const& text ) {
    auto const version = Kiv::ValueTraits<Igmp::IgmpVersion>::parse( text );
    if ( version == Igmp::igmpVersionUnknown ) {
        throw std::invalid_argument( "expected an IGMP version, 1 to 3, found '" + text + "'" );
    }
    return version;
}

void
addTraces( CLI::App& command, std::vector<TraceRequest>& traces ) {
    auto const take = [&traces]( std::vector<std::string> const& texts ) {
        try {
            std::transform( texts.begin(), texts.end(), std::back_inserter( traces ), traceRequest );
        } catch ( std::invalid_argument const& fault ) {
            throw CLI::ValidationError( "--trace", fault.what() );
        }
    };
    command
        .add_option_function<std::vector<std::string>>(
            "--trace", take, "Show what a part of the engine does; more with a higher level; repeatable"
        )
        ->type_name( "HANDLE:LEVEL" )
        ->allow_extra_args( false );
}

CLI::App&
addDemo( CLI::App& app, DemoOptions& options ) {
    constexpr U32 mostHosts = 1'000'000;
    constexpr U32 mostGroups = 100'000;
    constexpr U32 mostVlans = 4094;
    CLI::App& command = *app.add_subcommand(
        "demo", "Run hosts on a wire in memory against a reference querier, and compare what both know"
    );
    command.add_option( "--hosts", options.hosts, "Number of hosts" )
        ->check( CLI::Range( 1U, mostHosts ) )
        ->capture_default_str();
    command.add_option( "--groups", options.groups, "Groups that each host joins" )
        ->check( CLI::Range( 0U, mostGroups ) )
        ->capture_default_str();
    addParsed(
        command, "--igmp-version", options.igmpVersion, igmpVersion, "V",
        "Protocol of hosts and querier, 1 to 3 [2]"
    );
    command
        .add_option(
            "--vlans", options.vlans, "Tag the hosts, spread over that many VLANs with a querier in each"
        )
        ->check( CLI::Range( 0U, mostVlans ) );
    addParsed( command, "--duration", options.duration, duration, "S", "Seconds of the hosts' time [600]" );
    command.add_flag( "--realtime", options.realtime, "Let the hosts' time pass as it does" );
    addTraces( command, options.traces );
    return command;
}

CLI::App&
addRun( CLI::App& app, RunOptions& options ) {
    CLI::App& command = *app.add_subcommand( "run", "Run the hosts of a scenario on this machine's devices" );
    command.add_option( "SCENARIO", options.scenarioFiles, "Files, YAML or JSON, that describe the hosts" )
        ->required()
        ->type_name( "FILE" );
    addParsed( command, "--duration", options.duration, duration, "S", "End after so many seconds" );
    command
        .add_option(
            "--status", options.statusFile,
            "Write what every host has counted, as JSON, at the end and on SIGUSR1; - for the standard output"
        )
        ->type_name( "FILE" );
    addTraces( command, options.traces );
    return command;
}

/// CLI11 has an exit status of its own for each mistake; here all of them are wrong usage.
int
parseAndDo( CLI::App& app, int argc, char** argv ) {
    DemoOptions demoOptions;
    RunOptions runOptions;
    CLI::App const& demoCommand = addDemo( app, demoOptions );
    addRun( app, runOptions );
    CLI::App const& modelCommand =
        *app.add_subcommand( "model", "Print every type of the library with its attributes" );
    try {
        app.parse( argc, argv );
    } catch ( CLI::ParseError const& fault ) {
        return app.exit( fault ) == 0 ? exitDone : exitWrongUsage;
    }
    if ( modelCommand.parsed() ) {
        return model();
    }
    return demoCommand.parsed() ? demo( demoOptions ) : run( runOptions );
}

} // namespace

int
commandLine( int argc, char** argv ) {
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
