#include "platform/zornet/device/IgmpFilter.h"

#include <linux/if_ether.h>
#include <netinet/in.h>

#include <array>
#include <cstdint>

namespace Zornet {

namespace {

constexpr sock_filter
load( unsigned size, std::uint32_t offset ) {
    return { static_cast<std::uint16_t>( BPF_LD | BPF_ABS | size ), 0, 0, offset };
}

/// Skips `ifEqual` or `otherwise` instructions. A load beyond the end of the frame refuses it by itself.
constexpr sock_filter
compare( std::uint32_t value, std::uint8_t ifEqual, std::uint8_t otherwise ) {
    return { BPF_JMP | BPF_JEQ | BPF_K, ifEqual, otherwise, value };
}

constexpr sock_filter
pass( std::uint32_t bytes ) {
    return { BPF_RET | BPF_K, 0, 0, bytes };
}

constexpr std::uint32_t typeOffset = 12;
constexpr std::uint32_t ipProtocolOffset = 14 + 9;
constexpr std::uint32_t tagBytes = 4;
constexpr std::uint32_t wholeFrame = 0x40000;

constexpr std::array filter{
    load( BPF_H, typeOffset ),                  // 0
    compare( ETH_P_IP, 6, 0 ),                  // 1: to 8
    compare( ETH_P_8021Q, 1, 0 ),               // 2: to 4
    compare( ETH_P_8021AD, 0, 7 ),              // 3: to 11
    load( BPF_H, typeOffset + tagBytes ),       // 4
    compare( ETH_P_IP, 0, 5 ),                  // 5: to 11
    load( BPF_B, ipProtocolOffset + tagBytes ), // 6
    compare( IPPROTO_IGMP, 2, 3 ),              // 7: to 10 or 11
    load( BPF_B, ipProtocolOffset ),            // 8
    compare( IPPROTO_IGMP, 0, 1 ),              // 9: to 11
    pass( wholeFrame ),                         // 10
    pass( 0 ),                                  // 11
};

} // namespace

std::span<sock_filter const>
igmpFilter() {
    return filter;
}

} // namespace Zornet
