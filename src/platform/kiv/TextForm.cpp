#include "platform/kiv/TextForm.h"

#include <charconv>
#include <cstring>

namespace Kiv {

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

bool
isBlank( char c ) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool
isPlain( char c ) {
    return c >= ' ' && c <= '~' && c != '\'' && c != '\\';
}

void
skipBlanks( String8::IteratorConst& at, String8::IteratorConst const& end ) {
    while ( at != end && isBlank( *at ) ) {
        ++at;
    }
}

[[noreturn]] void
throwNotFound( std::string const& expected, String8::IteratorConst const& at ) {
    throwRangeException( String8( "expected " + expected + " at column " + std::to_string( at.column() ) ) );
}

/// The byte that two hexadecimal digits stand for.
char
hexByte( String8::IteratorConst& at, String8::IteratorConst const& end ) {
    U8 byte = 0;
    for ( int i = 0; i < 2; ++i ) {
        char const* const digit = at == end || *at == '\0' ? nullptr : std::strchr( hexDigits, *at );
        if ( !digit ) {
            throwNotFound( "a hexadecimal digit", at );
        }
        byte = static_cast<U8>( byte * 16 + ( digit - hexDigits ) );
        ++at;
    }
    return static_cast<char>( byte );
}

/// What follows a backslash.
char
escapedByte( String8::IteratorConst& at, String8::IteratorConst const& end ) {
    if ( at != end && ( *at == '\'' || *at == '\\' ) ) {
        char const byte = *at;
        ++at;
        return byte;
    }
    if ( at == end || *at != 'x' ) {
        throwNotFound( "', \\ or x", at );
    }
    ++at;
    return hexByte( at, end );
}

template <class T>
void
readNumber( String8::IteratorConst& at, String8::IteratorConst const& end, T* number, char const* what ) {
    skipBlanks( at, end );
    auto const [stop, error] = std::from_chars( at.position(), end.position(), *number );
    if ( error != std::errc() ) {
        throwNotFound( what, at );
    }
    while ( at.position() != stop ) {
        ++at;
    }
}

} // namespace

String8
valueToStrep( String8 const& text ) {
    std::string form = "'";
    for ( char c : text.view() ) {
        if ( isPlain( c ) ) {
            form += c;
        } else if ( c == '\'' || c == '\\' ) {
            form += { '\\', c };
        } else {
            form +=
                { '\\', 'x', hexDigits[static_cast<U8>( c ) >> 4], hexDigits[static_cast<U8>( c ) & 0xf] };
        }
    }
    return form + "'";
}

void
sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, String8* text ) {
    needString( at, end, " '" );
    std::string bytes;
    while ( at != end && *at != '\'' ) {
        char const byte = *at;
        ++at;
        bytes += byte == '\\' ? escapedByte( at, end ) : byte;
    }
    needString( at, end, "'" );
    *text = String8( bytes );
}

void
sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, long long* number ) {
    readNumber( at, end, number, "a whole number" );
}

void
sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, double* number ) {
    readNumber( at, end, number, "a number" );
}

void
sequenceToValue( String8::IteratorConst& at, String8::IteratorConst const& end, bool* truth ) {
    skipBlanks( at, end );
    *truth = at != end && *at == 't';
    needString( at, end, *truth ? "true" : "false" );
}

void
needString( String8::IteratorConst& at, String8::IteratorConst const& end, char const* pattern ) {
    for ( char const* expected = pattern; *expected; ++expected ) {
        if ( *expected == ' ' ) {
            skipBlanks( at, end );
        } else if ( at != end && *at == *expected ) {
            ++at;
        } else {
            throwNotFound( "\"" + std::string( pattern ) + "\"", at );
        }
    }
}

void
needEnd( String8::IteratorConst const& at, String8 const& text ) {
    if ( at != text.end() ) {
        throwRangeException( String8(
            "junk at column " + std::to_string( at.column() ) + " deserializing " + std::string( text.view() )
        ) );
    }
}

void
rethrowFromDeserializeAttr( RangeException const& fault, String8& attribute ) {
    throwRangeException( attribute + ": " + fault.message() );
}

} // namespace Kiv
