#include "platform/kiv/Attribute.h"

namespace Kiv {

Attribute const*
findAttribute( std::span<Attribute const> table, std::string_view name ) {
    for ( Attribute const& row : table ) {
        if ( name == row.name ) {
            return &row;
        }
    }
    return nullptr;
}

std::string
attributeText( Attribute const& row, PtrInterface const& object ) {
    return row.type->format( row.read( object ) );
}

void
attributeTextIs( Attribute const& row, PtrInterface& object, std::string_view text ) {
    row.write( object, row.type->parse( text ) );
}

} // namespace Kiv
