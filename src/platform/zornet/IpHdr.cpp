#include "platform/zornet/IpHdr.h"

#include <ostream>

#include "platform/zornet/Checksum.h"

namespace Zornet {

void
IpHdr::versionIs( IpVersion version ) {
    versionAndWords_.valueIs( static_cast<U8>( version.value() << 4 | ( versionAndWords_.value() & 0xf ) ) );
}

void
IpHdr::headerBytesIs( U32 bytes ) {
    versionAndWords_.valueIs( static_cast<U8>( ( versionAndWords_.value() & 0xf0 ) | ( bytes / 4 & 0xf ) ) );
}

IpChecksum
IpHdr::computedChecksum() const {
    return ipChecksumCalc( reinterpret_cast<char const*>( this ), static_cast<U16>( headerBytes() ), 0 );
}

std::ostream&
operator<<( std::ostream& out, IpHdr const& hdr ) {
    return out << "IPv" << hdr.version() << " " << hdr.src() << " > " << hdr.dst() << " protocol "
               << hdr.protocol() << " ttl " << hdr.ttl() << " header bytes " << hdr.headerBytes()
               << " total length " << hdr.totalLen() << " checksum " << hdr.checksum();
}

} // namespace Zornet
