#include "agent/run/Run.h"

#include "agent/command/Options.h"
#include "agent/command/Verb.h"

namespace Agent {

Verb
addRun( CLI::App& app ) {
    auto const options = std::make_shared<RunOptions>();
    CLI::App& command = *app.add_subcommand( "run", "Run the hosts of a scenario on this machine's devices" );
    command.add_option( "SCENARIO", options->scenarioFiles, "Files, YAML or JSON, that describe the hosts" )
        ->required()
        ->type_name( "FILE" );
    addParsed( command, "--duration", options->duration, durationOf, "S", "End after so many seconds" );
    command
        .add_option(
            "--status", options->statusFile,
            "Write what every host has counted, as JSON, at the end and on SIGUSR1; - for the standard output"
        )
        ->type_name( "FILE" );
    addParsed(
        command, "--shard", options->shard, shardOf, "K/N",
        "Run every N-th host alone, from the K-th on; N processes run the scenario between them"
    );
    command
        .add_option(
            "--seed", options->seed,
            "Draw what the timeline leaves to chance from this number; the same number, the same run"
        )
        ->type_name( "N" );
    command.add_flag(
        "--leave-on-exit", options->leaveOnExit,
        "Leave every group at the end, and wait until the network has been told; a second Ctrl-C ends at once"
    );
    addTraces( command, options->traces );
    return { &command, [options] { return run( *options ); } };
}

} // namespace Agent
