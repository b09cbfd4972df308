#include "agent/watching/Watch.h"

#include "agent/command/Options.h"
#include "agent/command/Verb.h"

namespace Agent {

Verb
addWatch( CLI::App& app ) {
    auto const options = std::make_shared<WatchOptions>();
    CLI::App& command = *app.add_subcommand( "watch", "Print every IGMP message that passes a device" );
    addDevice( command, options->device, options->ns );
    addWhole<U64>( command, "--count", options->count, "End after so many messages", 1 );
    addParsed( command, "--duration", options->duration, durationOf, "S", "End after so many seconds" );
    command.add_flag( "--json", options->json, "Print a JSON object for each message" );
    return { &command, [options] { return watch( *options ); } };
}

} // namespace Agent
