#pragma once

#include <iosfwd>
#include <string_view>

#include "platform/kiv/String8.h"
#include "platform/kiv/Types.h"
#include "platform/kiv/Value.h"

namespace Bridging {

/// Which way traffic may flow, seen from the host.
enum class AllowedTrafficDirection : Kiv::U32 {
    both = 0,
    ingress = 1, ///< nothing is sent
    egress = 2,  ///< nothing is received
};

/// The enumerator's name; "AllowedTrafficDirection(%d)" with the number where there is none.
Kiv::String8 stringValue( AllowedTrafficDirection direction );
/// The direction of that name. Raises RangeException for any other text.
AllowedTrafficDirection allowedTrafficDirection( std::string_view text );
/// The direction of that number. Raises RangeException "AllowedTrafficDirection" where there is none.
AllowedTrafficDirection allowedTrafficDirection( Kiv::U32 number );
/// The name between single quotes.
Kiv::String8 valueToStrep( AllowedTrafficDirection direction );
std::ostream& operator<<( std::ostream& out, AllowedTrafficDirection direction );

} // namespace Bridging

template <>
struct Kiv::ValueTraits<Bridging::AllowedTrafficDirection> {
    static constexpr char const* name = "Bridging::AllowedTrafficDirection";
    static constexpr ValueForm form = ValueForm::enumeration;
    static std::string format( Bridging::AllowedTrafficDirection const& value ) {
        return std::string( stringValue( value ).view() );
    }
    static Bridging::AllowedTrafficDirection parse( std::string_view text ) {
        return Bridging::allowedTrafficDirection( text );
    }
    static Bridging::AllowedTrafficDirection fromNumber( U32 number ) {
        return Bridging::allowedTrafficDirection( number );
    }
    static std::vector<std::string> texts();
};
