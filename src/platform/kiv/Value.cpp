#include "platform/kiv/Value.h"

#include <charconv>

namespace Kiv {

String8
ValueType::strep( std::any const& value ) const {
    bool const isQuoted = form == ValueForm::enumeration || form == ValueForm::text;
    String8 const text = format( value );
    return isQuoted ? valueToStrep( text ) : text;
}

void
throwExpected( std::string_view what, std::string_view text ) {
    throwRangeException(
        String8( "expected " + std::string( what ) + ", found '" + std::string( text ) + "'" )
    );
}

U64
parseUnsigned( std::string_view text, U64 max, char const* typeName ) {
    U64 value = 0;
    auto const [end, error] = std::from_chars( text.data(), text.data() + text.size(), value );
    if ( error != std::errc() || end != text.data() + text.size() || value > max ) {
        throwExpected(
            std::string( typeName ) + ", a whole number from 0 to " + std::to_string( max ), text
        );
    }
    return value;
}

bool
ValueTraits<bool>::parse( std::string_view text ) {
    if ( text != "true" && text != "false" ) {
        throwExpected( "true or false", text );
    }
    return text == "true";
}

std::string
ValueTraits<double>::format( double value ) {
    char buffer[32];
    auto const [end, error] = std::to_chars( buffer, buffer + sizeof( buffer ), value );
    return std::string( buffer, end );
}

double
ValueTraits<double>::parse( std::string_view text ) {
    double value = 0.0;
    auto const [end, error] = std::from_chars( text.data(), text.data() + text.size(), value );
    if ( text.empty() || error != std::errc() || end != text.data() + text.size() || value != value ) {
        throwExpected( "a number", text );
    }
    return value;
}

} // namespace Kiv
