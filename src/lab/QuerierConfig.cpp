#include "lab/QuerierConfig.h"

#include "platform/kiv/Exception.h"

namespace Lab {

namespace {

constexpr Seconds tenth = 0.1;

/// The greatest time that a Max Resp Code can tell, in seconds.
Seconds
greatestResponseTime( U8 version ) {
    return version == 3 ? 3174.4 : 25.5;
}

} // namespace

std::vector<char const*>
QuerierConfig::faults() const {
    Seconds const greatest = greatestResponseTime( version );
    std::vector<char const*> found;
    auto const require = [&]( bool holds, char const* text ) {
        if ( !holds ) {
            found.push_back( text );
        }
    };
    require( version >= 1 && version <= 3, "QuerierConfig::version < 1 or > 3 not allowed" );
    require( !ipAddr.isZero() && !ipAddr.isMulticast(), "QuerierConfig::ipAddr must be a unicast address" );
    require( mtu >= 68 && mtu <= 65535, "QuerierConfig::mtu < 68 or > 65535 not allowed" );
    require( robustness >= 1, "QuerierConfig::robustness < 1 not allowed" );
    require(
        queryInterval > 0.0 && Kiv::isFinite( queryInterval ), "QuerierConfig::queryInterval must be above 0"
    );
    require(
        queryResponseInterval >= ( version == 3 ? 0.0 : tenth ) && queryResponseInterval <= greatest,
        "QuerierConfig::queryResponseInterval outside what a query can tell"
    );
    require(
        queryResponseInterval < queryInterval,
        "QuerierConfig::queryResponseInterval must be below the query interval"
    );
    require(
        lastMemberQueryInterval >= tenth && lastMemberQueryInterval <= greatest,
        "QuerierConfig::lastMemberQueryInterval outside what a query can tell"
    );
    require( startupQueryInterval() > 0.0, "QuerierConfig::startupQueryInterval must be above 0" );
    require( startupQueryCount() >= 1, "QuerierConfig::startupQueryCount < 1 not allowed" );
    require( lastMemberQueryCount() >= 1, "QuerierConfig::lastMemberQueryCount < 1 not allowed" );
    return found;
}

void
QuerierConfig::check() const {
    if ( std::vector<char const*> const found = faults(); !found.empty() ) {
        Kiv::throwRangeException( found.front() );
    }
}

} // namespace Lab
