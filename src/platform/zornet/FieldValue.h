#pragma once

#include <ostream>
#include <string>

#include "platform/kiv/String8.h"
#include "platform/zornet/Types.h"

namespace Zornet {

/// The plain number of a header field in host order. The tag keeps numbers of different fields apart.
template <class Int, class Tag>
class FieldValue {
  public:
    constexpr FieldValue( Int value = 0 ) : value_( value ) {}

    constexpr Int value() const { return value_; }

    friend constexpr bool operator==( FieldValue a, FieldValue b ) = default;

  private:
    Int value_;
};

/// In decimal.
template <class Int, class Tag>
Kiv::String8
valueToStrep( FieldValue<Int, Tag> field ) {
    return std::to_string( field.value() );
}

template <class Int, class Tag>
std::ostream&
operator<<( std::ostream& out, FieldValue<Int, Tag> field ) {
    return out << +field.value();
}

using IpVersion = FieldValue<U8, struct IpVersionTag>;     ///< 4 bits
using IpTtl = FieldValue<U8, struct IpTtlTag>;             ///< hops
using IpProto = FieldValue<U8, struct IpProtoTag>;         ///< number of the protocol in the payload
using IpTotalLen = FieldValue<U16, struct IpTotalLenTag>;  ///< bytes, header included
using IpChecksum = FieldValue<U16, struct IpChecksumTag>;  ///< Internet checksum, RFC 1071
using MessageType = FieldValue<U8, struct MessageTypeTag>; ///< type byte of any IGMP message, known or not

/// Four hexadecimal digits, such as "0x2ad5".
Kiv::String8 hexText( U16 value );

/// A checksum is bits rather than a number and prints as hexText().
Kiv::String8 valueToStrep( IpChecksum checksum );
std::ostream& operator<<( std::ostream& out, IpChecksum checksum );

inline constexpr IpProto ipProtoIgmp = 2;

} // namespace Zornet
