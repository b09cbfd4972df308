#include "agent/command/Options.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "agent/control/SocketPath.h"

namespace Agent {

void
addDevice( CLI::App& command, std::string& device, Zornet::NamespaceName& ns ) {
    command.add_option( "DEVICE", device, "A network device of this machine" )
        ->required()
        ->type_name( "NAME" );
    auto const parse = []( std::string const& text ) { return Zornet::NamespaceName( text ); };
    addParsed( command, "--ns", ns, parse, "NAME", "The network namespace that the device is in" );
}

std::string
socketPath( std::string const& path ) {
    try {
        socketAddress( path );
        return {};
    } catch ( std::invalid_argument const& fault ) {
        return fault.what();
    }
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

} // namespace Agent
