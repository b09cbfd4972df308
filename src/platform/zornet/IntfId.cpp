#include "platform/zornet/IntfId.h"

#include <ostream>

namespace Zornet {

std::ostream&
operator<<( std::ostream& out, IntfId const& intf ) {
    return out << intf.name();
}

Kiv::String8
valueToStrep( IntfId const& intf ) {
    return Kiv::valueToStrep( intf.name() );
}

void
sequenceToValue( Kiv::String8::IteratorConst& at, Kiv::String8::IteratorConst const& end, IntfId* intf ) {
    *intf = IntfId( Kiv::deserializeAttr<Kiv::String8>( at, end ) );
}

} // namespace Zornet
