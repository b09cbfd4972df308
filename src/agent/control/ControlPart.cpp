#include "agent/control/ControlPart.h"

#include <iostream>

#include "agent/control/ControlMounts.h"

namespace Agent {

ControlPart::ControlPart( RunContext const& context )
    : server_(
          *context.options.controlPath,
          controlMounts( &context.emulation.hostDir(), &context.emulation.statusDir() )
      ) {
    if ( server_.hasReplaced() ) {
        std::cerr << "igmphost: replaced the socket that an agent which has ended left at "
                  << *context.options.controlPath << std::endl;
    }
}

} // namespace Agent
