#include "platform/zornet/IpAddr.h"

#include <charconv>
#include <optional>
#include <ostream>
#include <string>

namespace Zornet {

namespace {

/// The decimal number of 0 to 255 that `text` begins with, taken off it; none where there is no such number.
std::optional<U8>
takeOctet( std::string_view& text ) {
    U8 octet = 0;
    auto const [end, error] = std::from_chars( text.data(), text.data() + text.size(), octet );
    auto const digits = static_cast<std::size_t>( end - text.data() );
    if ( error != std::errc() || ( digits > 1 && text.front() == '0' ) ) {
        return {};
    }
    text.remove_prefix( digits );
    return octet;
}

std::optional<std::array<U8, 4>>
parseDotted( std::string_view text ) {
    std::array<U8, 4> bytes{};
    for ( std::size_t i = 0; i < bytes.size(); ++i ) {
        if ( i > 0 ) {
            if ( !text.starts_with( '.' ) ) {
                return {};
            }
            text.remove_prefix( 1 );
        }
        auto const octet = takeOctet( text );
        if ( !octet ) {
            return {};
        }
        bytes[i] = *octet;
    }
    return text.empty() ? std::optional( bytes ) : std::nullopt;
}

} // namespace

IpAddr::IpAddr( std::string_view text ) {
    auto const parsed = parseDotted( text );
    if ( !parsed ) {
        Kiv::throwExpected( "an IPv4 address such as 10.0.0.1", text );
    }
    bytes_ = *parsed;
}

Kiv::String8
valueToStrep( IpAddr const& addr ) {
    auto const& bytes = addr.bytes();
    std::string text = std::to_string( bytes[0] );
    for ( std::size_t i = 1; i < bytes.size(); ++i ) {
        text += '.';
        text += std::to_string( bytes[i] );
    }
    return text;
}

std::ostream&
operator<<( std::ostream& out, IpAddr const& addr ) {
    return out << valueToStrep( addr );
}

} // namespace Zornet
