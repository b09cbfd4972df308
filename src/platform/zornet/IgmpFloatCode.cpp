#include "platform/zornet/IgmpFloatCode.h"

#include <bit>

namespace Zornet {

namespace {

constexpr U32 exponentBias = 3;
constexpr U32 greatest = 0x1f << ( 7 + exponentBias );

} // namespace

U32
igmpFloatDecode( U8 code ) {
    if ( code < 128 ) {
        return code;
    }
    U32 const exponent = ( code >> 4 ) & 0x7;
    U32 const mantissa = ( code & 0xf ) | 0x10;
    return mantissa << ( exponent + exponentBias );
}

U8
igmpFloatEncode( U32 value ) {
    if ( value < 128 ) {
        return static_cast<U8>( value );
    }
    if ( value >= greatest ) {
        return 0xff;
    }
    U32 const shift = static_cast<U32>( std::bit_width( value ) ) - 5;
    return static_cast<U8>( 0x80 | ( shift - exponentBias ) << 4 | ( ( value >> shift ) & 0xf ) );
}

} // namespace Zornet
