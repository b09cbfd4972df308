#include "engine/Trace.h"
#include "engine/host/Reactors.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpMcastMacAddr.h"

namespace Igmp {

namespace {

constexpr int traceDrop = 3;
constexpr U32 ethBytes = sizeof( Zornet::EthHdr );
constexpr U32 leastIpBytes = sizeof( Zornet::IpHdr );
constexpr U32 leastIgmpBytes = sizeof( Zornet::IgmpCommonHdr );
constexpr U32 leastV12Bytes = sizeof( Zornet::IgmpV12Hdr );

bool
isIpMulticastFrame( Zornet::EthHdr const& eth ) {
    return Zornet::isIpMcastMacAddr( eth.dst() ) && eth.typeOrLen() == Zornet::ethTypeIp;
}

/// What is wrong with an IP header of `ipBytes` received bytes; null for a good one.
char const*
ipFault( Zornet::IpHdr const& ip, U32 ipBytes ) {
    if ( ip.protocol() != Zornet::ipProtoIgmp ) {
        return " dropping ip packet (not igmp):";
    }
    if ( ipBytes < ip.headerBytes() ) {
        return " dropping ip packet (bad header bytes):";
    }
    return ip.computedChecksum() != Zornet::IpChecksum( 0 ) ? " dropping ip packet (bad checksum):" : nullptr;
}

} // namespace

/// Reads at most one packet: each signal stands for one. A blocked or egress-only host leaves it where it is,
/// a disabled one throws it away. One without a status is as good as disabled: its machine waits to die, or
/// has not been told yet that it is enabled.
void
IgmpHostSm::handlePamReadable() {
    if ( !initialized_ ) {
        return;
    }
    if ( igmpHost()->blocked() ) {
        KIV_TRACE( igmpHostTrace, traceDrop ) << "IgmpHost " << name_ << " blocked. dropping packet ";
        return;
    }
    if ( igmpHost()->direction() == Bridging::AllowedTrafficDirection::egress ) {
        KIV_TRACE( igmpHostTrace, traceDrop ) << "IgmpHost " << name_ << " direction is egress ";
        return;
    }
    if ( !rxPam() ) {
        return;
    }
    Ptr<Zornet::Pkt> const pkt = rxPam()->rxPkt();
    if ( !pkt ) {
        return;
    }
    if ( !igmpHost()->enabled() || !igmpHostStatus() ) {
        KIV_TRACE( igmpHostTrace, traceDrop ) << "IgmpHost " << name_ << " disabled. dropping packet ";
        return;
    }
    Zornet::withFrame( *pkt, [this]( std::span<U8> frame ) { handleFrame( frame ); } );
}

/// The tests run from cheap to dear, the checksums last.
void
IgmpHostSm::handleFrame( std::span<U8> frame ) {
    if ( frame.size() < ethBytes ) {
        return;
    }
    auto* const eth = reinterpret_cast<Zornet::EthHdr*>( frame.data() );
    if ( !isIpMulticastFrame( *eth ) ) {
        KIV_TRACE( igmpHostTrace, traceDrop ) << "IgmpHost " << name_ << " dropping eth packet ";
        return;
    }
    U32 const ipBytes = static_cast<U32>( frame.size() ) - ethBytes;
    if ( ipBytes < leastIpBytes ) {
        return;
    }
    auto* const ip = reinterpret_cast<Zornet::IpHdr*>( eth + 1 );
    if ( char const* const fault = ipFault( *ip, ipBytes ) ) {
        KIV_TRACE( igmpHostTrace, traceDrop ) << "IgmpHost " << name_ << fault << *ip;
        return;
    }
    U32 const igmpBytes = ipBytes - ip->headerBytes();
    if ( igmpBytes < leastIgmpBytes || igmpBytes < ip->payloadLen() ) {
        return;
    }
    handleIgmp( reinterpret_cast<U8*>( ip ) + ip->headerBytes(), igmpBytes, ip->payloadLen() );
}

/// `igmpBytes` may exceed `payloadLen` by the padding of a short frame.
void
IgmpHostSm::handleIgmp( U8* igmp, U32 igmpBytes, U32 payloadLen ) {
    using Zornet::IgmpMessageType;
    auto* const hdr = reinterpret_cast<Zornet::IgmpV12Hdr*>( igmp );
    if ( hdr->computedChecksum( static_cast<U16>( payloadLen ) ) != Zornet::IpChecksum( 0 ) ) {
        KIV_TRACE( igmpHostTrace, traceDrop )
            << "IgmpHost " << name_
            << " dropping igmp packet (bad checksum):" << static_cast<Zornet::IgmpCommonHdr&>( *hdr );
        return;
    }
    IgmpMessageType const type = hdr->messageType();
    switch ( type ) {
    case IgmpMessageType::membershipQuery:
        if ( igmpBytes >= leastV12Bytes ) {
            handleV12Query( hdr, payloadLen );
        }
        break;
    case IgmpMessageType::v1MembershipReport:
    case IgmpMessageType::v2MembershipReport:
        if ( igmpBytes >= leastV12Bytes ) {
            igmpHostStatus()->v12ReportReceivedInc( 1 );
            if ( igmpHostStatus() ) {
                handleV12Report( hdr );
            }
        }
        break;
    case IgmpMessageType::v2LeaveGroup: // another host's leave is the querier's business
        break;
    case IgmpMessageType::v3MembershipReport: // version 3 hosts do not suppress, RFC 3376 section 5
        igmpHostStatus()->v3ReportReceivedInc( 1 );
        break;
    default:
        KIV_TRACE( igmpHostTrace, traceDrop ) << "IgmpHost " << name_ << " dropping igmp packet by type "
                                              << static_cast<Zornet::IgmpCommonHdr&>( *hdr );
    }
}

} // namespace Igmp
