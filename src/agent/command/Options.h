#pragma once

#include <CLI/CLI.hpp>

#include <exception>
#include <limits>
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

/// An option whose text is a whole number between the two, which becomes a Number.
template <class Number, class T>
CLI::Option*
addWhole(
    CLI::App& command, std::string const& name, T& target, char const* help, U64 least,
    U64 greatest = std::numeric_limits<U64>::max()
) {
    auto const parse = [least, greatest]( std::string const& text ) {
        return static_cast<Number>( wholeNumberOf( text, least, greatest ) );
    };
    return addParsed( command, name, target, parse, "N", help );
}

/// The argument DEVICE and the option --ns of the verbs that work on one device.
void addDevice( CLI::App& command, std::string& device, Zornet::NamespaceName& ns );

/// For CLI::Option::check(): what is wrong with the path of a socket; empty where nothing is.
std::string socketPath( std::string const& path );

/// The option --trace of every verb that runs hosts.
void addTraces( CLI::App& command, std::vector<TraceRequest>& traces );

} // namespace Agent
