#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace Support {

/// The generator behind drand48() steps x to a * x + c modulo 2^48 and gives x / 2^48.
inline constexpr std::uint64_t drawModulus = std::uint64_t{ 1 } << 48;

/// Sets the generator so that the next draw is number / 2^48.
inline void
nextDrawIs( std::uint64_t number ) {
    constexpr std::uint64_t mask = drawModulus - 1;
    constexpr std::uint64_t a = 0x5deece66d;
    constexpr std::uint64_t c = 0xb;
    std::uint64_t inverse = a; // doubling the number of right bits with each step
    for ( int bits = 3; bits < 48; bits *= 2 ) {
        inverse *= 2 - a * inverse;
    }
    std::uint64_t const x = ( number - c ) * inverse & mask;
    unsigned short state[3] = { static_cast<unsigned short>( x ), static_cast<unsigned short>( x >> 16 ),
                                static_cast<unsigned short>( x >> 32 ) };
    seed48( state );
}

/// The same to the nearest draw at or above `value`, which lies from 0 to below 1.
inline void
nextDrawIs( double value ) {
    nextDrawIs( static_cast<std::uint64_t>( std::ceil( value * static_cast<double>( drawModulus ) ) ) );
}

} // namespace Support
