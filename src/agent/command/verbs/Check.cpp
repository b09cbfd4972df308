#include "agent/checking/Check.h"

#include "agent/command/Options.h"
#include "agent/command/Verb.h"

namespace Agent {

Verb
addCheck( CLI::App& app ) {
    auto const options = std::make_shared<CheckOptions>();
    CLI::App& command = *app.add_subcommand(
        "check", "Tell errors and warnings of a scenario and what would exist, without touching a device"
    );
    command.add_option( "SCENARIO", options->scenarioFiles, "Files, YAML or JSON, that describe the hosts" )
        ->required()
        ->type_name( "FILE" );
    addParsed(
        command, "--shard", options->shard, shardOf, "K/N", "Look at every N-th host alone, from the K-th on"
    );
    command.add_flag( "--json", options->json, "Print JSON, errors and warnings included" );
    command.add_flag( "--strict", options->strict, "Let warnings end it with status 2, as errors do" );
    return { &command, [options] { return check( *options ); } };
}

} // namespace Agent
