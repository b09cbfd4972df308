#include "agent/scenario/Scenario.h"

#include <algorithm>

namespace Agent {

Shard
shardOf( std::string_view text ) {
    constexpr U64 most = 1'000'000;
    try {
        std::size_t const slash = std::min( text.find( '/' ), text.size() );
        U64 const number = Kiv::parseUnsigned( text.substr( 0, slash ), most, "number" );
        U64 const shards =
            Kiv::parseUnsigned( text.substr( std::min( slash + 1, text.size() ) ), most, "number" );
        if ( number >= 1 && number <= shards ) {
            return { static_cast<U32>( number ), static_cast<U32>( shards ) };
        }
    } catch ( Kiv::RangeException const& ) {
    }
    Kiv::throwExpected( "K/N, the K-th of N shares, such as 1/4", text );
}

Kiv::Seconds
durationOf( std::string_view text ) {
    try {
        Kiv::Seconds const seconds = Kiv::ValueTraits<double>::parse( text );
        if ( seconds > 0.0 && Kiv::isFinite( seconds ) ) {
            return seconds;
        }
    } catch ( Kiv::RangeException const& ) {
    }
    Kiv::throwExpected( "a number of seconds above 0", text );
}

U64
wholeNumberOf( std::string_view text, U64 least, U64 greatest ) {
    constexpr U64 unbounded = std::numeric_limits<U64>::max();
    try {
        if ( U64 const number = Kiv::parseUnsigned( text, greatest, "number" ); number >= least ) {
            return number;
        }
    } catch ( Kiv::RangeException const& ) {
    }
    std::string const end = greatest == unbounded ? "" : " to " + std::to_string( greatest );
    Kiv::throwExpected( "a whole number from " + std::to_string( least ) + end, text );
}

Igmp::IgmpVersion
protocolOf( std::string_view text ) {
    try {
        auto const version = Kiv::ValueTraits<Igmp::IgmpVersion>::parse( text );
        if ( version != Igmp::igmpVersionUnknown ) {
            return version;
        }
    } catch ( Kiv::RangeException const& ) {
    }
    Kiv::throwExpected( "an IGMP version, 1 to 3", text );
}

U64
Scenario::hostCount() const {
    U64 count = 0;
    for ( HostSpec const& host : hosts ) {
        count += host.count;
    }
    return shard.share( count );
}

} // namespace Agent
