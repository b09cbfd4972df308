#include "platform/zornet/Eth8021QTagControl.h"

#include <cstdio>
#include <ostream>

namespace Zornet {

Kiv::String8
valueToStrep( Eth8021QTagControl tag ) {
    char text[sizeof "0x0000"];
    std::snprintf( text, sizeof text, "0x%04x", unsigned{ tag.value() } );
    return text;
}

std::ostream&
operator<<( std::ostream& out, Eth8021QTagControl tag ) {
    return out << valueToStrep( tag );
}

} // namespace Zornet
