#pragma once

#include <iosfwd>

#include "platform/zornet/FieldValue.h"
#include "platform/zornet/IgmpMessageType.h"
#include "platform/zornet/NetInt.h"

namespace Zornet {

/// The 4 bytes that every IGMP message begins with, over the frame's own bytes.
class IgmpCommonHdr {
  public:
    IgmpMessageType messageType() const { return IgmpMessageType{ type_.value() }; }
    MessageType mType() const { return type_.value(); }
    /// The second byte; in a query it is the maximum response time.
    U8 unused() const { return unused_.value(); }
    IpChecksum checksum() const { return checksum_.value(); }

    void messageTypeIs( IgmpMessageType type ) { type_.valueIs( static_cast<U8>( type ) ); }
    void mTypeIs( MessageType type ) { type_.valueIs( type.value() ); }
    void unusedIs( U8 value ) { unused_.valueIs( value ); }
    void checksumIs( IpChecksum checksum ) { checksum_.valueIs( checksum.value() ); }

    /// Over the message's `length` bytes, the checksum field as it stands: 0 for a good message, the value to
    /// store for one whose field is 0. The frame must hold that many bytes.
    IpChecksum computedChecksum( U16 length ) const;

  private:
    NetU8 type_;
    NetU8 unused_;
    NetU16 checksum_;
};

static_assert( sizeof( IgmpCommonHdr ) == 4 && alignof( IgmpCommonHdr ) == 1 );

/// Prints these 4 bytes only, whatever the message's length.
std::ostream& operator<<( std::ostream& out, IgmpCommonHdr const& hdr );

} // namespace Zornet
