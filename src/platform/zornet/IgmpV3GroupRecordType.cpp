#include "platform/zornet/IgmpV3GroupRecordType.h"

#include <ostream>

#include "platform/kiv/EnumText.h"

namespace Zornet {

namespace {

using Type = IgmpV3GroupRecordType;

constexpr char typeName[] = "IgmpV3GroupRecordType";

constexpr Kiv::EnumName<Type> names[] = {
    { Type::MODE_IS_INCLUDE, "MODE_IS_INCLUDE" },
    { Type::MODE_IS_EXCLUDE, "MODE_IS_EXCLUDE" },
    { Type::CHANGE_TO_INCLUDE_MODE, "CHANGE_TO_INCLUDE_MODE" },
    { Type::CHANGE_TO_EXCLUDE_MODE, "CHANGE_TO_EXCLUDE_MODE" },
    { Type::ALLOW_NEW_SOURCES, "ALLOW_NEW_SOURCES" },
    { Type::BLOCK_OLD_SOURCES, "BLOCK_OLD_SOURCES" },
};

/// What a person may write instead.
constexpr Kiv::EnumName<Type> shortNames[] = {
    { Type::MODE_IS_INCLUDE, "include" },
    { Type::MODE_IS_EXCLUDE, "exclude" },
};

} // namespace

Kiv::String8
stringValue( IgmpV3GroupRecordType type ) {
    return enumText( names, typeName, type );
}

IgmpV3GroupRecordType
igmpV3GroupRecordType( std::string_view text ) {
    std::string const unlisted = std::string( typeName ) + "(";
    if ( text.starts_with( unlisted ) && text.ends_with( ')' ) ) {
        text.remove_prefix( unlisted.size() );
        text.remove_suffix( 1 );
        return Type{ Kiv::ValueTraits<U8>::parse( text ) };
    }
    return enumParse<Type>( names, typeName, text, shortNames );
}

Kiv::String8
valueToStrep( IgmpV3GroupRecordType type ) {
    return "'" + stringValue( type ) + "'";
}

std::ostream&
operator<<( std::ostream& out, IgmpV3GroupRecordType type ) {
    return out << stringValue( type );
}

} // namespace Zornet

std::vector<std::string>
Kiv::ValueTraits<Zornet::IgmpV3GroupRecordType>::texts() {
    return enumTexts( Zornet::names, enumTexts( Zornet::shortNames ) );
}
