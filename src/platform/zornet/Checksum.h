#pragma once

#include "platform/zornet/FieldValue.h"

namespace Zornet {

/// The Internet checksum (RFC 1071) of `length` bytes, with `seed` added to their sum. An odd last byte
/// counts as if a zero byte followed. Over bytes that hold their own right checksum the result is 0.
IpChecksum ipChecksumCalc( char const* data, unsigned short length, unsigned int seed );

} // namespace Zornet
