#include "agent/control/ctl/Ctl.h"

#include <iostream>
#include <stdexcept>

namespace Agent {

ExitStatus
ctl( void ( *verb )( CtlOptions const& ), CtlOptions const& options ) {
    try {
        verb( options );
    } catch ( std::invalid_argument const& fault ) {
        std::cerr << "igmphost: error: " << fault.what() << std::endl;
        return exitWrongUsage;
    }
    return exitDone;
}

} // namespace Agent
