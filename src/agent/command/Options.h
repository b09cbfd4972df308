#pragma once

#include <CLI/CLI.hpp>

#include <exception>
#include <string>
#include <vector>

#include "agent/output/TraceConsole.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

/// An option whose text becomes a value by `parse`, which raises an exception for what it does not take.
template <class T, class Parse>
CLI::Option*
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
    return command.add_option_function<std::string>( name, take, help )->type_name( form );
}

/// What addParsed() takes for `parse`: it raises std::exception that says what was expected.
Igmp::IgmpVersion igmpVersion( std::string const& text );

/// The argument DEVICE and the option --ns of the verbs that work on one device.
void addDevice( CLI::App& command, std::string& device, Zornet::NamespaceName& ns );

/// For CLI::Option::check(): what is wrong with the path of a socket; empty where nothing is.
std::string socketPath( std::string const& path );

/// The option --trace of every verb that runs hosts.
void addTraces( CLI::App& command, std::vector<TraceRequest>& traces );

} // namespace Agent
