#pragma once

#include <iosfwd>
#include <string_view>

#include "platform/kiv/String8.h"
#include "platform/kiv/Value.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// The type of a group record in a version 3 report, RFC 3376 section 4.2.12. The first two double as the
/// filter mode of a group. Holds any byte: nothing checks a filter mode before it is used.
enum class IgmpV3GroupRecordType : U8 {
    MODE_IS_INCLUDE = 1,
    MODE_IS_EXCLUDE = 2,
    CHANGE_TO_INCLUDE_MODE = 3,
    CHANGE_TO_EXCLUDE_MODE = 4,
    ALLOW_NEW_SOURCES = 5,
    BLOCK_OLD_SOURCES = 6,
};

/// The enumerator's name; "IgmpV3GroupRecordType(%d)" with the number where there is none.
Kiv::String8 stringValue( IgmpV3GroupRecordType type );
/// What stringValue() gives, back to the type; "include" and "exclude" are taken for the two filter modes.
/// Raises RangeException for any other text.
IgmpV3GroupRecordType igmpV3GroupRecordType( std::string_view text );
/// The name between single quotes.
Kiv::String8 valueToStrep( IgmpV3GroupRecordType type );
std::ostream& operator<<( std::ostream& out, IgmpV3GroupRecordType type );

} // namespace Zornet

template <>
struct Kiv::ValueTraits<Zornet::IgmpV3GroupRecordType> {
    static constexpr char const* name = "Zornet::IgmpV3GroupRecordType";
    static constexpr ValueForm form = ValueForm::enumeration;
    static std::string format( Zornet::IgmpV3GroupRecordType const& value ) {
        return std::string( stringValue( value ).view() );
    }
    static Zornet::IgmpV3GroupRecordType parse( std::string_view text ) {
        return Zornet::igmpV3GroupRecordType( text );
    }
    static std::vector<std::string> texts();
};
