#include "platform/kiv/Attribute.h"

namespace Kiv {

char const*
kindText( AttributeKind kind ) {
    switch ( kind ) {
    case AttributeKind::key: return "key";
    case AttributeKind::argument: return "argument";
    case AttributeKind::scalar: return "scalar";
    case AttributeKind::state: return "state";
    case AttributeKind::constant: return "constant";
    case AttributeKind::pointer: return "pointer";
    case AttributeKind::valueCollection: return "values by key";
    case AttributeKind::entityCollection: return "objects by key";
    case AttributeKind::containedEntity: return "child";
    case AttributeKind::operation: return "operation";
    }
    return "unknown";
}

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
