#include "agent/control/ctl/Ctl.h"

#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace Agent {

ExitStatus
ctl( void ( *verb )( CtlOptions const& ), CtlOptions const& options ) {
    try {
        verb( options );
    } catch ( std::invalid_argument const& fault ) {
        std::cerr << "igmphost: error: " << fault.what() << std::endl;
        return exitWrongUsage;
    }
    if ( !std::cout.flush() ) {
        throw std::system_error( errno, std::generic_category(), "standard output" );
    }
    return exitDone;
}

} // namespace Agent
