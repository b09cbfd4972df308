#pragma once

#include <any>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiv/TextForm.h"
#include "platform/kiv/Types.h"
#include "platform/kiv/nboattrlog/WireForm.h"

namespace Kiv {

/// How values of a type look to a reader who does not know the type: a JSON writer, a schema, a help text.
enum class ValueForm { boolean, unsignedInteger, real, enumeration, text };

/// Specialised for each type that an attribute may have:
///     static constexpr char const* name;      the type's full name
///     static constexpr ValueForm form;
///     static std::string format( T const& );  canonical text
///     static T parse( std::string_view );     raises RangeException naming what was expected
/// and, for an enumeration that not every number belongs to,
///     static T fromNumber( U32 );             raises RangeException
///     static std::vector<std::string> texts();  of an enumeration: all that parse() takes, shortest first
template <class T>
struct ValueTraits;

/// A type of attribute values, for code that works on any attribute.
struct ValueType {
    char const* name;
    ValueForm form;
    std::string ( *format )( std::any const& value );
    std::any ( *parse )( std::string_view text );
    /// The value at a place within a longer text, in the form that strep() gives.
    std::any ( *read )( String8::IteratorConst& at, String8::IteratorConst const& end );
    /// The value on a stream. Reading raises RangeException or AttrLogRecordException.
    void ( *out )( NboAttrLog::Out& out, std::any const& value );
    std::any ( *in )( NboAttrLog::In& in );
    /// Of an enumeration: every text that parse() takes, for a help text or a schema. Else none.
    std::vector<std::string> ( *texts )();

    /// The text form: canonical text, between quotes unless the value is a number or a truth value.
    String8 strep( std::any const& value ) const;
};

/// Numbers are cut to their width, on purpose: the text form knows no ranges.
template <class T>
std::any
readValue( String8::IteratorConst& at, String8::IteratorConst const& end ) {
    if constexpr ( std::is_same_v<T, bool> || std::is_same_v<T, double> ) {
        return deserializeAttr<T>( at, end );
    } else if constexpr ( std::is_unsigned_v<T> ) {
        return static_cast<T>( deserializeAttr<long long>( at, end ) );
    } else if constexpr ( ValueTraits<T>::form == ValueForm::unsignedInteger ) {
        return ValueTraits<T>::parse( std::to_string( deserializeAttr<long long>( at, end ) ) );
    } else {
        return ValueTraits<T>::parse( deserializeAttr<String8>( at, end ).view() );
    }
}

template <class T>
std::vector<std::string>
valueTexts() {
    if constexpr ( ValueTraits<T>::form == ValueForm::enumeration ) {
        return ValueTraits<T>::texts();
    } else {
        return {};
    }
}

template <class T>
inline constexpr ValueType valueType{
    ValueTraits<T>::name,
    ValueTraits<T>::form,
    []( std::any const& value ) { return ValueTraits<T>::format( std::any_cast<T const&>( value ) ); },
    []( std::string_view text ) { return std::any( ValueTraits<T>::parse( text ) ); },
    &readValue<T>,
    []( NboAttrLog::Out& out, std::any const& value ) {
        NboAttrLog::valueOut( out, std::any_cast<T const&>( value ) );
    },
    []( NboAttrLog::In& in ) { return std::any( NboAttrLog::valueIn<T>( in ) ); },
    &valueTexts<T>,
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
