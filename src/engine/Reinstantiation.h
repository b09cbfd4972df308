#pragma once

#include <sstream>

#include "platform/kiv/Exception.h"

namespace Igmp {

/// Guards a get-or-make operation: raises NameInUseException where an existing member was made with another
/// value of a constructor parameter than the one given now.
template <class T>
void
checkSameParameter( char const* parameter, T const& given, T const& held ) {
    if ( given == held ) {
        return;
    }
    std::ostringstream text;
    text << "Reinstantiating the pointer interface where constructor parameter attribute _" << parameter
         << " has a different value of " << given << " than the current value of " << held << " not allowed";
    Kiv::throwNameInUseException( Kiv::String8( text.str() ) );
}

} // namespace Igmp
