#include "lab/PcapWriter.h"

#include <array>
#include <cmath>
#include <ostream>

namespace Lab {

using Zornet::U32;
using Zornet::U64;
using Zornet::U8;

namespace {

constexpr U32 microsecondMagic = 0xa1b2c3d4;
constexpr U32 nanosecondMagic = 0xa1b23c4d;
constexpr U32 version2Point4 = 4 << 16 | 2; // two fields of 16 bits
constexpr U32 longestFrame = 262144;
constexpr U32 ethernet = 1;

} // namespace

PcapWriter::PcapWriter( std::ostream& out, PcapResolution resolution )
    : out_( out ), fractionsPerSecond_( resolution == PcapResolution::microseconds ? 1e6 : 1e9 ) {
    write( resolution == PcapResolution::microseconds ? microsecondMagic : nanosecondMagic );
    write( version2Point4 );
    write( 0 ); // time zone
    write( 0 ); // accuracy
    write( longestFrame );
    write( ethernet );
}

void
PcapWriter::frameIs( Kiv::Seconds time, std::span<U8 const> frame ) {
    double seconds = std::floor( time );
    double fraction = std::round( ( time - seconds ) * fractionsPerSecond_ );
    if ( fraction >= fractionsPerSecond_ ) {
        seconds += 1.0;
        fraction = 0.0;
    }
    auto const bytes = static_cast<U32>( frame.size() );
    write( static_cast<U32>( static_cast<U64>( seconds ) ) );
    write( static_cast<U32>( fraction ) );
    write( bytes );
    write( bytes );
    out_.write( reinterpret_cast<char const*>( frame.data() ), static_cast<std::streamsize>( frame.size() ) );
}

/// Least byte first.
void
PcapWriter::write( U32 value ) {
    std::array<char, 4> bytes{};
    for ( char& byte : bytes ) {
        byte = static_cast<char>( value & 0xff );
        value >>= 8;
    }
    out_.write( bytes.data(), bytes.size() );
}

} // namespace Lab
