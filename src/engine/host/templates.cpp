#include <new>

#include "engine/Trace.h"
#include "engine/host/Reactors.h"
#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpHdrRouterAlertOption.h"
#include "platform/zornet/IpMcastMacAddr.h"

namespace Igmp {

namespace {

/// Where version 3 reports go, RFC 3376 section 4.2.14: 224.0.0.22.
constexpr Zornet::IpAddr allV3Routers = Zornet::IpAddr::fromHost( 0xe0000016 );
constexpr U32 keptPkts = 10000;

constexpr Zornet::S16
step( std::size_t bytes ) {
    return static_cast<Zornet::S16>( bytes );
}

} // namespace

/// Makes both templates anew. Where no packet is to be had the old ones stay.
void
IgmpHostSm::pktInitialize() {
    if ( !initialized_ ) {
        return;
    }
    mtu_ = igmpHost()->mtu();
    if ( !igmpHost()->externalPam() ) {
        Zornet::globalPktManager()->pktLimitIs( keptPkts );
    }
    if ( renewTemplate( v3ReportPkt_ ) ) {
        renewTemplate( v2ReportPkt_ );
    }
}

/// The count moves once the new packet is in its place. Returns whether there was one; the text of the trace
/// names the version 3 packet for either.
bool
IgmpHostSm::renewTemplate( Ptr<Zornet::Pkt>& held ) {
    Ptr<Zornet::Pkt> const pkt = Zornet::globalPktManager()->newPkt();
    if ( !pkt ) {
        KIV_TRACE( igmpHostTrace, 1 ) << "Packet allocation failed in IgmpV3HostReportPkt ";
        return false;
    }
    pktBufferInitialize( pkt );
    held = pkt;
    if ( igmpHostStatus() ) {
        igmpHostStatus()->numPacketInitializedInc( 1 );
    }
    return true;
}

/// Fills a packet with everything that the host's reports have in common and notes where the headers lie. The
/// IP checksum is that of a header without length; every sender writes length and checksum.
void
IgmpHostSm::pktBufferInitialize( Ptr<Zornet::Pkt> const& pkt ) {
    if ( !initialized_ ) {
        return;
    }
    pkt->newSharedHeadData( mtu_ );
    KIV_TRACE( igmpHostTrace, 5 ) << "Packet buffer allocated, size " << pkt->sharedBuffer()->size()
                                  << ", mtu " << mtu_ << ", Pkt size: " << pkt->bytes();
    writeEthernetHeader( *pkt );
    U16 const ipBytes = writeIpHeader( *pkt );
    offsetIgmpReportHeader_ = static_cast<U16>( offsetIpHeader_ + ipBytes );
    auto* const report = pkt->offsetHeader<Zornet::IgmpV3ReportHdr>();
    report->messageTypeIs( Zornet::IgmpMessageType::v3MembershipReport );
    report->numGroupRecordsIs( 0 );
    report->unusedIs( 0 );
    report->reservedIs( 0 );
    pkt->beginOffsetInc( step( sizeof( Zornet::IgmpV3ReportHdr ) ) );
    offsetIgmpGroupRecStart_ =
        static_cast<U16>( offsetIgmpReportHeader_ + sizeof( Zornet::IgmpV3ReportHdr ) );
    pkt->delSharedTailData( mtu_ - pkt->beginOffset() );
}

void
IgmpHostSm::writeEthernetHeader( Zornet::Pkt& pkt ) {
    offsetEtherHeader_ = 0;
    auto* const eth = pkt.offsetHeader<Zornet::EthHdr>();
    eth->dstIs( Zornet::ipMcastMacAddr( allV3Routers ) );
    eth->srcIs( igmpHost()->macAddr() );
    bool const tagged = igmpHost()->tagged();
    eth->typeOrLenIs( tagged ? Zornet::ethType8021Q : Zornet::ethTypeIp );
    pkt.beginOffsetInc( step( sizeof( Zornet::EthHdr ) ) );
    if ( tagged ) {
        auto* const tag = pkt.offsetHeader<Zornet::Eth8021QHdr>();
        Zornet::Eth8021QTagControl control;
        control.vlanIdIs( igmpHost()->vlanId() );
        tag->tagControlIs( control );
        tag->typeOrLenIs( Zornet::ethTypeIp );
        pkt.beginOffsetInc( step( sizeof( Zornet::Eth8021QHdr ) ) );
    }
    offsetIpHeader_ = pkt.beginOffset();
}

/// Returns the header's length with its option.
U16
IgmpHostSm::writeIpHeader( Zornet::Pkt& pkt ) {
    auto* const ip = new ( pkt.offsetHeader<Zornet::IpHdr>() ) Zornet::IpHdr;
    ip->versionIs( 4 );
    ip->totalLenIs( 0 );
    ip->ttlIs( 1 );
    ip->protocolIs( Zornet::ipProtoIgmp );
    ip->srcIs( igmpHost()->ipAddr() );
    ip->dstIs( allV3Routers );
    pkt.beginOffsetInc( step( sizeof( Zornet::IpHdr ) ) );
    std::size_t bytes = sizeof( Zornet::IpHdr );
    if ( igmpHost()->enableRouterAlert() ) {
        new ( pkt.offsetHeader<Zornet::IpHdrRouterAlertOption>() ) Zornet::IpHdrRouterAlertOption;
        pkt.beginOffsetInc( step( sizeof( Zornet::IpHdrRouterAlertOption ) ) );
        bytes += sizeof( Zornet::IpHdrRouterAlertOption );
    }
    ip->headerBytesIs( static_cast<U32>( bytes ) );
    ip->checksumIs( ip->computedChecksum() );
    return static_cast<U16>( bytes );
}

} // namespace Igmp
