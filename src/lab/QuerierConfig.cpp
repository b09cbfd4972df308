#include "lab/QuerierConfig.h"

#include <utility>

#include "platform/kiv/Value.h"

namespace Lab {

namespace {

constexpr Seconds tenth = 0.1;

/// The greatest time that a Max Resp Code can tell, in seconds.
Seconds
greatestResponseTime( U8 version ) {
    return version == 3 ? 3174.4 : 25.5;
}

std::string
textOf( double number ) {
    return Kiv::ValueTraits<double>::format( number );
}

/// Collects what is out of range.
struct Inspection {
    void require( bool holds, char const* variable, std::string const& expected, std::string const& found ) {
        if ( !holds ) {
            faults.push_back( { variable, "expected " + expected + ", found " + found } );
        }
    }
    void range( double value, double least, double greatest, char const* variable, char const* what ) {
        require(
            value >= least && value <= greatest, variable,
            what + std::string( " from " ) + textOf( least ) + " to " + textOf( greatest ), textOf( value )
        );
    }
    void positive( Seconds value, char const* variable ) {
        require(
            value > 0.0 && Kiv::isFinite( value ), variable, "a number of seconds above 0", textOf( value )
        );
    }
    void atLeastOne( U32 value, char const* variable ) {
        require( value >= 1, variable, "a whole number from 1", std::to_string( value ) );
    }

    std::vector<QuerierConfig::Fault> faults{};
};

} // namespace

std::vector<QuerierConfig::Fault>
QuerierConfig::faults() const {
    constexpr double leastMtu = 68; // RFC 791
    Seconds const greatest = greatestResponseTime( version );
    Inspection inspection;
    inspection.range( version, 1, 3, "version", "an IGMP version" );
    inspection.require(
        !ipAddr.isZero() && !ipAddr.isMulticast(), "ipAddr", "a unicast address",
        std::string( valueToStrep( ipAddr ).view() )
    );
    inspection.range( mtu, leastMtu, 65535, "mtu", "a number of bytes" );
    inspection.atLeastOne( robustness, "robustness" );
    inspection.positive( queryInterval, "queryInterval" );
    inspection.range(
        queryResponseInterval, version == 3 ? 0.0 : tenth, greatest, "queryResponseInterval",
        "what a query can tell, seconds"
    );
    inspection.require(
        queryResponseInterval < queryInterval, "queryResponseInterval",
        "less than the seconds from query to query, " + textOf( queryInterval ),
        textOf( queryResponseInterval )
    );
    inspection.range(
        lastMemberQueryInterval, tenth, greatest, "lastMemberQueryInterval", "what a query can tell, seconds"
    );
    inspection.positive( startupQueryInterval(), "startupQueryInterval" );
    inspection.atLeastOne( startupQueryCount(), "startupQueryCount" );
    inspection.atLeastOne( lastMemberQueryCount(), "lastMemberQueryCount" );
    return std::move( inspection.faults );
}

void
QuerierConfig::check() const {
    if ( std::vector<Fault> const found = faults(); !found.empty() ) {
        Kiv::throwRangeException(
            ( "QuerierConfig::" + found.front().variable + ": " + found.front().text ).c_str()
        );
    }
}

} // namespace Lab
