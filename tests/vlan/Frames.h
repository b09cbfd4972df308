#pragma once

#include <string>

#include "platform/zornet/PktManager.h"
#include "tests/platform/zornet/Hex.h"

namespace Zornet {

// Frames as texts of hexadecimal digits: addresses, tags, type and payload.

inline std::string const addresses = "01005e000001 020000000009 ";
inline std::string const payload = "4600002000000000 0102 0000 0a000009 e0000001 94040000 1164ee9b 00000000";
inline std::string const untaggedFrame = addresses + "0800" + payload;

/// The frame with a tag control field of these four digits.
inline std::string
taggedFrame( std::string const& tagControl ) {
    return addresses + "8100" + tagControl + "0800" + payload;
}

/// The frame with two tags, the outer one first.
inline std::string
doublyTaggedFrame( std::string const& outer, std::string const& inner ) {
    return addresses + "8100" + outer + "8100" + inner + "0800" + payload;
}

inline Kiv::Ptr<Pkt>
pktOf( std::string const& frame ) {
    return pktWithBytes( fromHex( frame ) );
}

/// The packet's frame from its first byte to its last.
inline std::string
frameOf( Kiv::Ptr<Pkt> const& pkt ) {
    std::vector<U8> bytes( pkt->bytes() );
    pkt->copyTo( bytes.data() );
    return hex( bytes );
}

} // namespace Zornet
