#include "agent/control/ControlTrace.h"

namespace Agent {

Kiv::TraceHandle controlTrace( "Control" );

} // namespace Agent
