#include "engine/Trace.h"

namespace Igmp {

Kiv::TraceHandle igmpHostTrace( "IgmpHost" );

} // namespace Igmp
