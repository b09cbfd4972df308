#pragma once

#include <cstddef>
#include <span>
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

/// The enumerator of that text, which may stand in either table. Raises RangeException naming the texts of
/// both for any other.
template <class E>
E
enumParse(
    std::span<EnumName<E> const> names, char const* typeName, std::string_view text,
    std::span<EnumName<E> const> shortNames = {}
) {
    std::string known;
    for ( std::span<EnumName<E> const> const table : { shortNames, names } ) {
        for ( EnumName<E> const& name : table ) {
            if ( text == name.text ) {
                return name.value;
            }
            known += known.empty() ? " " : ", ";
            known += name.text;
        }
    }
    throwExpected( std::string( typeName ) + ", one of" + known, text );
}

} // namespace Kiv
