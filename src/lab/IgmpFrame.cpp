#include "lab/IgmpFrame.h"

#include <algorithm>
#include <array>

#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IpHdr.h"

namespace Lab {

using namespace Zornet;

namespace {

constexpr U16 noVlan = 0; ///< a tag with it carries a priority and no VLAN
constexpr std::array<U8, 4> routerAlert{ 0x94, 0x04, 0x00, 0x00 };
constexpr U32 fragmentOffset = 6; ///< of the flags and the fragment offset in an IP header

template <class Header>
Header const&
headerAt( std::span<U8 const> bytes ) {
    return *reinterpret_cast<Header const*>( bytes.data() );
}

/// More fragments, or an offset other than 0.
bool
isFragment( std::span<U8 const> packet ) {
    return ( packet[fragmentOffset] & 0x3f ) != 0 || packet[fragmentOffset + 1] != 0;
}

/// Router Alert as one of the options; options other than the two of one byte tell their length in the
/// second.
bool
findRouterAlert( std::span<U8 const> options ) {
    while ( options.size() >= routerAlert.size() && options[0] != 0 ) {
        if ( std::equal( routerAlert.begin(), routerAlert.end(), options.begin() ) ) {
            return true;
        }
        std::size_t const bytes = options[0] == 1 ? 1 : std::max<std::size_t>( options[1], 2 );
        options = options.subspan( std::min( bytes, options.size() ) );
    }
    return false;
}

} // namespace

IgmpFrame::IgmpFrame( std::span<U8 const> frame, std::optional<Bridging::VlanId> const& vlanId )
    : verdict_( read( frame, vlanId ) ) {}

IgmpFrame::Verdict
IgmpFrame::read( std::span<U8 const> frame, std::optional<Bridging::VlanId> const& vlanId ) {
    if ( frame.size() < sizeof( EthHdr ) ) {
        return Verdict::truncated;
    }
    ethDst_ = headerAt<EthHdr>( frame ).dst();
    U16 type = headerAt<EthHdr>( frame ).typeOrLen();
    U16 vlan = noVlan;
    frame = frame.subspan( sizeof( EthHdr ) );
    if ( type == ethType8021Q ) {
        if ( frame.size() < sizeof( Eth8021QHdr ) ) {
            return Verdict::truncated;
        }
        vlan = headerAt<Eth8021QHdr>( frame ).tagControl().vlanId();
        type = headerAt<Eth8021QHdr>( frame ).typeOrLen();
        frame = frame.subspan( sizeof( Eth8021QHdr ) );
    }
    if ( type != ethTypeIp || vlan != ( vlanId ? vlanId->value() : noVlan ) ) {
        return Verdict::foreign;
    }
    return readIp( frame );
}

IgmpFrame::Verdict
IgmpFrame::readIp( std::span<U8 const> packet ) {
    if ( packet.size() < sizeof( IpHdr ) ) {
        return Verdict::truncated;
    }
    auto const& ip = headerAt<IpHdr>( packet );
    U32 const headerBytes = ip.headerBytes();
    U32 const totalLen = ip.totalLen().value();
    if ( ip.version() != IpVersion( 4 ) || headerBytes < sizeof( IpHdr ) || totalLen < headerBytes ) {
        return Verdict::badIpHeader;
    }
    if ( totalLen > packet.size() ) {
        return Verdict::truncated;
    }
    if ( ip.computedChecksum() != IpChecksum( 0 ) ) {
        return Verdict::badIpChecksum;
    }
    if ( ip.protocol() != ipProtoIgmp ) {
        return Verdict::foreign;
    }
    if ( isFragment( packet ) ) {
        return Verdict::fragment;
    }
    src_ = ip.src();
    dst_ = ip.dst();
    ttl_ = ip.ttl().value();
    hasRouterAlert_ = findRouterAlert( packet.subspan( sizeof( IpHdr ), headerBytes - sizeof( IpHdr ) ) );
    igmp_ = packet.subspan( headerBytes, totalLen - headerBytes );
    return readIgmp();
}

IgmpFrame::Verdict
IgmpFrame::readIgmp() {
    if ( igmp_.size() < sizeof( IgmpV12Hdr ) ) {
        return Verdict::badIgmpLength;
    }
    bool const good = v12().computedChecksum( static_cast<U16>( igmp_.size() ) ) == IpChecksum( 0 );
    return good ? Verdict::good : Verdict::badIgmpChecksum;
}

} // namespace Lab
