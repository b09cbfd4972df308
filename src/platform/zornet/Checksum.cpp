#include "platform/zornet/Checksum.h"

namespace Zornet {

IpChecksum
ipChecksumCalc( char const* data, unsigned short length, unsigned int seed ) {
    auto const* bytes = reinterpret_cast<U8 const*>( data );
    U64 sum = seed;
    for ( U32 i = 0; i + 1 < length; i += 2 ) {
        sum += U32{ bytes[i] } << 8 | bytes[i + 1];
    }
    if ( length % 2 != 0 ) {
        sum += U32{ bytes[length - 1] } << 8;
    }
    while ( sum > 0xffff ) {
        sum = ( sum >> 16 ) + ( sum & 0xffff );
    }
    return static_cast<U16>( ~sum );
}

} // namespace Zornet
