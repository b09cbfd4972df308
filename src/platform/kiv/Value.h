#pragma once

#include <any>
#include <string>
#include <string_view>

#include "platform/kiv/Exception.h"
#include "platform/kiv/Types.h"

namespace Kiv {

/// How values of a type look to a reader who does not know the type: a JSON writer, a schema, a help text.
enum class ValueForm { boolean, unsignedInteger, real, enumeration, text };

/// Specialised for each type that an attribute may have:
///     static constexpr char const* name;      the type's full name
///     static constexpr ValueForm form;
///     static std::string format( T const& );  canonical text
///     static T parse( std::string_view );     raises RangeException naming what was expected
template <class T>
struct ValueTraits;

/// A type of attribute values, for code that works on any attribute.
struct ValueType {
    char const* name;
    ValueForm form;
    std::string ( *format )( std::any const& value );
    std::any ( *parse )( std::string_view text );
};

template <class T>
inline constexpr ValueType valueType{
    ValueTraits<T>::name,
    ValueTraits<T>::form,
    []( std::any const& value ) { return ValueTraits<T>::format( std::any_cast<T const&>( value ) ); },
    []( std::string_view text ) { return std::any( ValueTraits<T>::parse( text ) ); },
};

/// Parses a whole unsigned number of at most `max`. Raises RangeException naming the type and the range.
U64 parseUnsigned( std::string_view text, U64 max, char const* typeName );
/// Raises RangeException "expected <what>, found '<text>'".
[[noreturn]] void throwExpected( std::string_view what, std::string_view text );

template <>
struct ValueTraits<bool> {
    static constexpr char const* name = "bool";
    static constexpr ValueForm form = ValueForm::boolean;
    static std::string format( bool value ) { return value ? "true" : "false"; }
    static bool parse( std::string_view text );
};

template <class T>
requires std::is_unsigned_v<T>
struct ValueTraits<T> {
    static constexpr char const* name = sizeof( T ) == 1 ? "U8" : sizeof( T ) == 2 ? "U16" : "U32";
    static constexpr ValueForm form = ValueForm::unsignedInteger;
    static std::string format( T value ) { return std::to_string( value ); }
    static T parse( std::string_view text ) {
        return static_cast<T>( parseUnsigned( text, std::numeric_limits<T>::max(), name ) );
    }
};

/// Seconds and other real numbers. The format gives back the same number when parsed; infinity is "inf".
template <>
struct ValueTraits<double> {
    static constexpr char const* name = "double";
    static constexpr ValueForm form = ValueForm::real;
    static std::string format( double value );
    static double parse( std::string_view text );
};

template <>
struct ValueTraits<String8> {
    static constexpr char const* name = "Kiv::String";
    static constexpr ValueForm form = ValueForm::text;
    static std::string format( String8 const& value ) { return std::string( value.view() ); }
    static String8 parse( std::string_view text ) { return String8( text ); }
};

template <>
struct ValueTraits<Name> {
    static constexpr char const* name = "Kiv::Name";
    static constexpr ValueForm form = ValueForm::text;
    static std::string format( Name const& value ) { return std::string( value.view() ); }
    static Name parse( std::string_view text ) { return Name( String8( text ) ); }
};

} // namespace Kiv
