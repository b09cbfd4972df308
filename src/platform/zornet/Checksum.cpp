#include "platform/zornet/Checksum.h"

#include <arpa/inet.h>

#include <cstring>

namespace Zornet {

namespace {

U16
folded( U64 sum ) {
    while ( sum > 0xffff ) {
        sum = ( sum >> 16 ) + ( sum & 0xffff );
    }
    return static_cast<U16>( sum );
}

} // namespace

/// Adds up the words as they lie in memory, whatever the machine's byte order, and turns the folded sum
/// round once: RFC 1071 section 2(B).
IpChecksum
ipChecksumCalc( char const* data, unsigned short length, unsigned int seed ) {
    U64 sum = 0;
    U32 word = 0;
    for ( ; length >= sizeof word; length = static_cast<U16>( length - sizeof word ) ) {
        std::memcpy( &word, data, sizeof word );
        sum += word;
        data += sizeof word;
    }
    word = 0;
    if ( length != 0 ) { // of no bytes there may be no address
        std::memcpy( &word, data, length );
    }
    return static_cast<U16>( ~folded( seed + U64{ ntohs( folded( sum + word ) ) } ) );
}

} // namespace Zornet
