#include "platform/zornet/NamespaceName.h"

#include <ostream>

#include "platform/kiv/Exception.h"

namespace Zornet {

NamespaceName::NamespaceName( Kiv::String8 const& name ) : name_( name ) {
    if ( name.bytes() > maxBytes ) {
        Kiv::throwRangeException( "NamespaceName::bytes > 150 not allowed" );
    }
}

std::ostream&
operator<<( std::ostream& out, NamespaceName const& ns ) {
    return out << ns.name();
}

} // namespace Zornet
