#include "agent/metrics/MetricsAddress.h"

#include <charconv>

#include "platform/kiv/Exception.h"

namespace Agent {

std::string
MetricsAddress::text() const {
    return std::string( valueToStrep( ipAddr ).view() ) + ":" + std::to_string( port );
}

MetricsAddress
metricsAddressOf( std::string_view text ) {
    MetricsAddress address;
    std::size_t const colon = text.rfind( ':' );
    std::string_view const port = colon == std::string_view::npos ? "" : text.substr( colon + 1 );
    auto const [end, error] = std::from_chars( port.data(), port.data() + port.size(), address.port );
    if ( port.empty() || error != std::errc() || end != port.data() + port.size() ) {
        std::string const found( text );
        Kiv::throwRangeException(
            ( "expected ADDRESS:PORT such as 127.0.0.1:9464 or :9464, found '" + found + "'" ).c_str()
        );
    }
    if ( colon != 0 ) {
        address.ipAddr = Zornet::IpAddr( text.substr( 0, colon ) );
    }
    return address;
}

} // namespace Agent
