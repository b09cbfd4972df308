#include "agent/command/Model.h"

#include "agent/command/Verb.h"

namespace Agent {

Verb
addModel( CLI::App& app ) {
    return { app.add_subcommand( "model", "Print every type of the library with its attributes" ), model };
}

} // namespace Agent
