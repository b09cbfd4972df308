#include <nlohmann/json.hpp>
#include <sstream>

#include "agent/watching/SeenMessage.h"

// Any bytes as a frame that was seen on a device: it is read, printed and written as JSON without harm.

extern "C" int
LLVMFuzzerTestOneInput( Kiv::U8 const* data, std::size_t size ) {
    Agent::SeenMessage const message( 1000.0, { data, size } );
    std::ostringstream line;
    line << message << message.json().dump();
    return 0;
}
