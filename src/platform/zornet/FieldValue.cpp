#include "platform/zornet/FieldValue.h"

#include <cstdio>

namespace Zornet {

Kiv::String8
hexText( U16 value ) {
    char text[sizeof "0x0000"];
    std::snprintf( text, sizeof text, "0x%04x", unsigned{ value } );
    return text;
}

Kiv::String8
valueToStrep( IpChecksum checksum ) {
    return hexText( checksum.value() );
}

std::ostream&
operator<<( std::ostream& out, IpChecksum checksum ) {
    return out << hexText( checksum.value() );
}

} // namespace Zornet
