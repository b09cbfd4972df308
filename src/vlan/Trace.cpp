#include "vlan/Trace.h"

namespace Zornet {

Kiv::TraceHandle igmpTrace( "Igmp" );
Kiv::TraceHandle linkLocalTrace( "LinkLocalTrace" );

} // namespace Zornet
