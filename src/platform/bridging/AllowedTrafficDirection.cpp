#include "platform/bridging/AllowedTrafficDirection.h"

#include <iterator>
#include <ostream>

#include "platform/kiv/EnumText.h"

namespace Bridging {

namespace {

constexpr char typeName[] = "AllowedTrafficDirection";

constexpr Kiv::EnumName<AllowedTrafficDirection> names[] = {
    { AllowedTrafficDirection::both, "both" },
    { AllowedTrafficDirection::ingress, "ingress" },
    { AllowedTrafficDirection::egress, "egress" },
};

} // namespace

Kiv::String8
stringValue( AllowedTrafficDirection direction ) {
    return enumText( names, typeName, direction );
}

AllowedTrafficDirection
allowedTrafficDirection( std::string_view text ) {
    return enumParse<AllowedTrafficDirection>( names, typeName, text );
}

AllowedTrafficDirection
allowedTrafficDirection( Kiv::U32 number ) {
    if ( number >= std::size( names ) ) {
        Kiv::throwRangeException( typeName );
    }
    return names[number].value;
}

Kiv::String8
valueToStrep( AllowedTrafficDirection direction ) {
    return "'" + stringValue( direction ) + "'";
}

std::ostream&
operator<<( std::ostream& out, AllowedTrafficDirection direction ) {
    return out << stringValue( direction );
}

} // namespace Bridging

std::vector<std::string>
Kiv::ValueTraits<Bridging::AllowedTrafficDirection>::texts() {
    return enumTexts( Bridging::names );
}
