#pragma once

#include <CLI/CLI.hpp>

#include <functional>

namespace Agent {

/// A verb of the command: its subcommand with its options, and what it does once they are read. Returns the
/// exit status.
struct Verb {
    CLI::App* command;
    std::function<int()> perform;
};

// Each adds its subcommand; one source file each.
Verb addCheck( CLI::App& app );
Verb addCtl( CLI::App& app );
Verb addDemo( CLI::App& app );
Verb addModel( CLI::App& app );
Verb addQuery( CLI::App& app );
Verb addWatch( CLI::App& app );
Verb addRun( CLI::App& app );
Verb addSchema( CLI::App& app );

} // namespace Agent
