#pragma once

#include "platform/zornet/Types.h"

namespace Zornet {

/// The value of a Max Resp Code or QQIC (RFC 3376 sections 4.1.1 and 4.1.7): up to 127 as it stands, above
/// that three bits of exponent and four of mantissa.
U32 igmpFloatDecode( U8 code );

/// The code of the greatest value not above `value`; 255, which stands for 31744, for anything greater.
U8 igmpFloatEncode( U32 value );

} // namespace Zornet
