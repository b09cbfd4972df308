#include "platform/bridging/VlanId.h"

#include <ostream>
#include <string>

namespace Bridging {

VlanId::VlanId( Kiv::U16 value ) : value_( value ) {
    if ( value < min || value > max ) {
        Kiv::throwRangeException( "VlanId::value < 1 or > 4094 not allowed" );
    }
}

VlanId::VlanId( std::string_view text ) : VlanId( Kiv::ValueTraits<Kiv::U16>::parse( text ) ) {}

Kiv::String8
valueToStrep( VlanId vlan ) {
    return std::to_string( vlan.value() );
}

std::ostream&
operator<<( std::ostream& out, VlanId vlan ) {
    return out << vlan.value();
}

} // namespace Bridging
