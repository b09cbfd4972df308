#include "platform/zornet/Eth8021QTagControl.h"

#include <ostream>

#include "platform/zornet/FieldValue.h"

namespace Zornet {

Kiv::String8
valueToStrep( Eth8021QTagControl tag ) {
    return hexText( tag.value() );
}

std::ostream&
operator<<( std::ostream& out, Eth8021QTagControl tag ) {
    return out << valueToStrep( tag );
}

} // namespace Zornet
