#include "platform/zornet/EthAddr.h"

#include <charconv>
#include <optional>
#include <ostream>
#include <string>

namespace Zornet {

namespace {

constexpr std::size_t textBytes = 17;

std::optional<std::array<U8, 6>>
parseColons( std::string_view text ) {
    std::array<U8, 6> bytes{};
    if ( text.size() != textBytes ) {
        return {};
    }
    for ( std::size_t i = 0; i < bytes.size(); ++i ) {
        char const* pair = text.data() + 3 * i;
        auto const [end, error] = std::from_chars( pair, pair + 2, bytes[i], 16 );
        if ( error != std::errc() || end != pair + 2 || ( i > 0 && pair[-1] != ':' ) ) {
            return {};
        }
    }
    return bytes;
}

} // namespace

EthAddr::EthAddr( std::string_view text ) {
    auto const parsed = parseColons( text );
    if ( !parsed ) {
        Kiv::throwExpected( "an Ethernet address such as 02:00:00:00:00:01", text );
    }
    bytes_ = *parsed;
}

Kiv::String8
valueToStrep( EthAddr const& addr ) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text( textBytes, ':' );
    for ( std::size_t i = 0; i < addr.bytes().size(); ++i ) {
        text[3 * i] = digits[addr.bytes()[i] >> 4];
        text[3 * i + 1] = digits[addr.bytes()[i] & 0xf];
    }
    return text;
}

std::ostream&
operator<<( std::ostream& out, EthAddr const& addr ) {
    return out << valueToStrep( addr );
}

} // namespace Zornet
