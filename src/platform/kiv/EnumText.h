#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kiv/Value.h"

namespace Kiv {

/// One enumerator and its text.
template <class E>
struct EnumName {
    E value;
    char const* text;
};

/// The enumerator's text, or `typeName` with the number in parentheses where the table does not have it.
template <class E, std::size_t count>
std::string
enumText( EnumName<E> const ( &names )[count], char const* typeName, E value ) {
    for ( EnumName<E> const& name : names ) {
        if ( name.value == value ) {
            return name.text;
        }
    }
    return std::string( typeName ) + "(" + std::to_string( static_cast<S32>( value ) ) + ")";
}

/// The texts of the table, behind others that are taken.
template <class E, std::size_t count>
std::vector<std::string>
enumTexts( EnumName<E> const ( &names )[count], std::vector<std::string> texts = {} ) {
    for ( EnumName<E> const& name : names ) {
        texts.emplace_back( name.text );
    }
    return texts;
}

/// The enumerator of that text. Raises RangeException naming the texts of the table for any other.
template <class E, std::size_t count>
E
enumParse( EnumName<E> const ( &names )[count], char const* typeName, std::string_view text ) {
    std::string known;
    for ( EnumName<E> const& name : names ) {
        if ( text == name.text ) {
            return name.value;
        }
        known += known.empty() ? " " : ", ";
        known += name.text;
    }
    throwExpected( std::string( typeName ) + ", one of" + known, text );
}

} // namespace Kiv
