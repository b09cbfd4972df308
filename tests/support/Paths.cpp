#include "tests/support/Paths.h"

namespace Support {

std::string
agentBinary() {
    return IGMPHOST_AGENT_BINARY;
}

std::string
sourceFolder() {
    return IGMPHOST_SOURCE_FOLDER;
}

} // namespace Support
