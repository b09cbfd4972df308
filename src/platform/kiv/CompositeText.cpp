#include "platform/kiv/CompositeText.h"

namespace Kiv {

namespace {

using Place = String8::IteratorConst;

/// The type's name without its namespace.
String8
shortName( std::string_view typeName ) {
    std::size_t const colons = typeName.rfind( "::" );
    return String8( colons == std::string_view::npos ? typeName : typeName.substr( colons + 2 ) );
}

std::any
fieldValue( Attribute const& row, Place& at, Place const& end ) {
    try {
        return row.type->read( at, end );
    } catch ( RangeException const& fault ) {
        String8 field( row.name );
        rethrowFromDeserializeAttr( fault, field );
    }
}

void
readField(
    char const* typeName, std::span<Attribute const> table, Place& at, Place const& end,
    std::vector<std::any>& values
) {
    String8 const key = deserializeAttr<String8>( at, end );
    needString( at, end, " : " );
    Attribute const* const row = findAttribute( table, key.view() );
    if ( !row ) {
        throwRangeException( shortName( typeName ) + " has no such attribute: " + key );
    }
    values[static_cast<std::size_t>( row - table.data() )] = fieldValue( *row, at, end );
}

std::vector<std::any>
defaults( std::span<Attribute const> table ) {
    std::vector<std::any> values;
    for ( Attribute const& row : table ) {
        values.push_back( row.type->parse( row.defaultText ) );
    }
    return values;
}

} // namespace

String8
compositeText( char const* typeName, std::span<Attribute const> table, PtrInterface const& holder ) {
    std::string text = "Value('" + std::string( typeName ) + "', ** {";
    char const* separator = "";
    for ( Attribute const& row : table ) {
        text += separator + ( "'" + std::string( row.name ) ) + "': ";
        text += row.type->strep( row.read( holder ) ).view();
        separator = ", ";
    }
    return text + "})";
}

std::vector<std::any>
compositeArguments( char const* typeName, std::span<Attribute const> table, Place& at, Place const& end ) {
    std::vector<std::any> values = defaults( table );
    std::string const quotedName = " '" + std::string( typeName ) + "'";
    for ( char const* part : { " Value", " (", quotedName.c_str(), " ,", " **", " {" } ) {
        needString( at, end, part );
    }
    for ( bool isFirst = true;; isFirst = false ) {
        needString( at, end, " " );
        if ( at == end ) {
            throwRangeException( String8( "premature end of value type " ) + shortName( typeName ) );
        }
        if ( *at == '}' ) {
            break;
        }
        if ( !isFirst ) {
            needString( at, end, ", " );
        }
        readField( typeName, table, at, end, values );
    }
    needString( at, end, "} " );
    needString( at, end, ") " );
    return values;
}

} // namespace Kiv
