#pragma once

#include <iosfwd>

#include "platform/zornet/FieldValue.h"
#include "platform/zornet/IpAddr.h"
#include "platform/zornet/NetInt.h"

namespace Zornet {

/// The first 20 bytes of an IPv4 header, over the frame's own bytes. Options follow it in the frame.
class IpHdr {
  public:
    /// Zero in every field.
    IpHdr() = default;

    IpVersion version() const { return static_cast<U8>( versionAndWords_.value() >> 4 ); }
    /// Length of the header with its options as the header states it: 0 to 60.
    U32 headerBytes() const { return ( versionAndWords_.value() & 0xfU ) * 4; }
    IpTotalLen totalLen() const { return totalLen_.value(); }
    IpTtl ttl() const { return ttl_.value(); }
    IpProto protocol() const { return protocol_.value(); }
    IpChecksum checksum() const { return checksum_.value(); }
    IpAddr const& src() const { return src_; }
    IpAddr const& dst() const { return dst_; }

    /// Takes the low four bits.
    void versionIs( IpVersion version );
    /// A multiple of 4 up to 60.
    void headerBytesIs( U32 bytes );
    void totalLenIs( IpTotalLen bytes ) { totalLen_.valueIs( bytes.value() ); }
    void ttlIs( IpTtl ttl ) { ttl_.valueIs( ttl.value() ); }
    void protocolIs( IpProto protocol ) { protocol_.valueIs( protocol.value() ); }
    void checksumIs( IpChecksum checksum ) { checksum_.valueIs( checksum.value() ); }
    void srcIs( IpAddr const& addr ) { src_ = addr; }
    void dstIs( IpAddr const& addr ) { dst_ = addr; }

    /// Over all `headerBytes()`, the checksum field as it stands: 0 for a good header, the value to store for
    /// one whose field is 0. The frame must hold that many bytes.
    IpChecksum computedChecksum() const;
    /// Total length less header. A total length below the header's gives a number above every frame's length.
    U32 payloadLen() const { return totalLen().value() - headerBytes(); }

  private:
    NetU8 versionAndWords_;
    NetU8 typeOfService_;
    NetU16 totalLen_;
    NetU16 identification_;
    NetU16 fragment_;
    NetU8 ttl_;
    NetU8 protocol_;
    NetU16 checksum_;
    IpAddr src_;
    IpAddr dst_;
};

static_assert( sizeof( IpHdr ) == 20 && alignof( IpHdr ) == 1 );

std::ostream& operator<<( std::ostream& out, IpHdr const& hdr );

} // namespace Zornet
