#pragma once

#include <optional>
#include <vector>

#include "lab/QueryPackets.h"
#include "lab/SourceSet.h"
#include "platform/zornet/IgmpMessageType.h"
#include "platform/zornet/IgmpV3GroupRecordType.h"

namespace Lab {

using Bytes = std::vector<U8>;
using Record = Zornet::IgmpV3GroupRecordType;

/// How a frame is sent, where it is not as the RFCs have it.
struct Manner {
    bool routerAlert = true;
    U8 ttl = 1;
    std::optional<U16> tag{};
    std::optional<EthAddr> ethDst{};
};

/// A group record: type, group, sources.
struct GroupRecord {
    Record type;
    IpAddr group;
    std::vector<IpAddr> sources{};
    U8 auxWords = 0;
};

/// Appends `value` in network order.
void append( Bytes& bytes, U16 value );
void append( Bytes& bytes, IpAddr const& addr );
void append( Bytes& bytes, EthAddr const& addr );
void append( Bytes& bytes, Bytes const& more );
/// Puts the checksum of the message into its third and fourth byte.
void checksum( Bytes& message );
/// Puts the checksum of the IP header of an untagged frame right. The header is that many bytes long.
void fixIpChecksum( Bytes& frame, std::size_t headerBytes );

Bytes igmpMessage( Zornet::IgmpMessageType type, U8 code, IpAddr const& group );
Bytes v3ReportMessage( std::vector<GroupRecord> const& records );
Bytes v3QueryMessage(
    IpAddr const& group, std::vector<IpAddr> const& sources, U8 code, bool suppress, U8 qrv, U8 qqic
);

/// The message in a frame from `src` to `dst`, checksums of the header right.
Bytes igmpFrame( IpAddr const& src, IpAddr const& dst, Bytes const& message, Manner const& manner = {} );

// Frames as hosts send them.
Bytes v1Report( IpAddr const& src, IpAddr const& group );
Bytes v2Report( IpAddr const& src, IpAddr const& group );
Bytes v2Leave( IpAddr const& src, IpAddr const& group );
Bytes v3Report( IpAddr const& src, std::vector<GroupRecord> const& records );

/// A datagram of the least length to a group, as a sender of multicast data puts it onto the wire.
Bytes dataFrame( IpAddr const& src, IpAddr const& group );

} // namespace Lab
