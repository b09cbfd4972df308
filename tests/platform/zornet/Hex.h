#pragma once

#include <cstdio>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/zornet/Types.h"

namespace Zornet {

/// The bytes as lower-case hexadecimal digits.
inline std::string
hex( std::span<U8 const> bytes ) {
    std::string text;
    for ( U8 byte : bytes ) {
        char pair[3];
        std::snprintf( pair, sizeof pair, "%02x", unsigned{ byte } );
        text += pair;
    }
    return text;
}

/// The digits without the blanks that group them for the eye.
inline std::string
ungrouped( std::string_view text ) {
    std::string digits( text );
    std::erase( digits, ' ' );
    return digits;
}

/// The bytes of a text of hexadecimal digits, which blanks may group.
inline std::vector<U8>
fromHex( std::string_view text ) {
    std::string const digits = ungrouped( text );
    if ( digits.size() % 2 != 0 ) {
        throw std::invalid_argument( "half a byte" );
    }
    std::vector<U8> bytes;
    for ( std::size_t i = 0; i < digits.size(); i += 2 ) {
        bytes.push_back( static_cast<U8>( std::stoul( digits.substr( i, 2 ), nullptr, 16 ) ) );
    }
    return bytes;
}

} // namespace Zornet
