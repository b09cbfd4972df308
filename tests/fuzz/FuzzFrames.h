#pragma once

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpCommonHdr.h"
#include "platform/zornet/IpHdr.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/support/Frames.h"

namespace Fuzz {

using Lab::Bytes;

inline constexpr std::size_t ipAt = sizeof( Zornet::EthHdr );

/// The message as a querier sends it, with Router Alert, checksums right where there is room for them.
inline Bytes
frameOf( Bytes message ) {
    if ( message.size() >= sizeof( Zornet::IgmpCommonHdr ) ) {
        Lab::checksum( message );
    }
    return Lab::igmpFrame( Zornet::IpAddr( "10.0.0.254" ), Zornet::IpAddr( "224.0.0.1" ), message );
}

/// Sets both checksums right wherever the headers say that they are.
inline void
mendChecksums( Bytes& frame ) {
    if ( frame.size() < ipAt + sizeof( Zornet::IpHdr ) ) {
        return;
    }
    auto const* const ip = reinterpret_cast<Zornet::IpHdr const*>( frame.data() + ipAt );
    std::size_t const header = ip->headerBytes();
    std::size_t const payload = ip->payloadLen();
    if ( header >= sizeof( Zornet::IpHdr ) && ipAt + header <= frame.size() ) {
        Lab::fixIpChecksum( frame, header );
    }
    if ( payload >= 4 && ipAt + header + payload <= frame.size() ) {
        auto const at = frame.begin() + static_cast<std::ptrdiff_t>( ipAt + header );
        Bytes message( at, at + static_cast<std::ptrdiff_t>( payload ) );
        Lab::checksum( message );
        std::copy( message.begin(), message.end(), at );
    }
}

/// The frame with a tag of that control field.
inline Bytes
tagged( Bytes frame, Kiv::U16 control ) {
    constexpr std::size_t tagAt = 12;
    if ( frame.size() >= tagAt ) {
        frame.insert(
            frame.begin() + tagAt,
            { 0x81, 0, static_cast<Kiv::U8>( control >> 8 ), static_cast<Kiv::U8>( control ) }
        );
    }
    return frame;
}

} // namespace Fuzz
