#include "agent/scenario/schema/Schema.h"

#include <iostream>

#include "agent/command/ExitStatus.h"
#include "agent/command/Verb.h"

namespace Agent {

Verb
addSchema( CLI::App& app ) {
    CLI::App& command = *app.add_subcommand(
        "schema", "Print the JSON Schema of scenarios, with which editors complete and check them"
    );
    return { &command, [] {
                std::cout << scenarioSchema().dump( 2 ) << '\n';
                return exitDone;
            } };
}

} // namespace Agent
