#include "platform/zornet/IntfId.h"

#include <ostream>

namespace Zornet {

std::ostream&
operator<<( std::ostream& out, IntfId const& intf ) {
    return out << intf.name();
}

} // namespace Zornet
