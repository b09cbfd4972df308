#include "lab/QueryPackets.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpFloatCode.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpHdrRouterAlertOption.h"
#include "platform/zornet/IpMcastMacAddr.h"
#include "platform/zornet/PktManager.h"

namespace Lab {

using namespace Zornet;

namespace {

/// RFC 1112 leaves the byte 0, RFC 2236 counts tenths of a second in it, RFC 3376 section 4.1.1 a code above
/// 127.
U8
maxResponseCode( U8 version, Seconds maxResponse ) {
    auto const tenths = static_cast<U32>( std::lround( maxResponse * 10.0 ) );
    switch ( version ) {
    case 1: return 0;
    case 2: return static_cast<U8>( std::min( tenths, U32{ 255 } ) );
    default: return igmpFloatEncode( tenths );
    }
}

/// QRV has three bits; RFC 3376 section 4.1.6 sends 0 for a greater robustness.
U8
robustnessCode( U32 robustness ) {
    return robustness > 7 ? U8{ 0 } : static_cast<U8>( robustness );
}

template <class Header>
Header*
headerAt( U8* bytes ) {
    return reinterpret_cast<Header*>( bytes );
}

} // namespace

QueryPackets::QueryPackets( QuerierConfig const& config )
    : config_( config ),
      general_( makePacket( 0, config.queryResponseInterval ) ),
      group_( makePacket( 0, config.lastMemberQueryInterval ) ),
      groupAndSources_(
          makePacket( config.version == 3 ? sourcesPerQuery() : 0, config.lastMemberQueryInterval )
      ) {
    finish( *general_, allSystems );
}

U32
QueryPackets::ethBytes() const {
    return static_cast<U32>( sizeof( EthHdr ) + ( config_.vlanId ? sizeof( Eth8021QHdr ) : 0 ) );
}

U32
QueryPackets::ipHeaderBytes() const {
    return static_cast<U32>(
        sizeof( IpHdr ) + ( config_.routerAlert ? sizeof( IpHdrRouterAlertOption ) : 0 )
    );
}

/// Of a query without sources.
U32
QueryPackets::igmpBytes() const {
    return static_cast<U32>( config_.version == 3 ? sizeof( IgmpV3QueryHdr ) : sizeof( IgmpV12Hdr ) );
}

U32
QueryPackets::sourcesPerQuery() const {
    return ( config_.mtu - ipHeaderBytes() - igmpBytes() ) / static_cast<U32>( sizeof( IpAddr ) );
}

QueryPackets::PktPtr
QueryPackets::makePacket( U32 sourceRoom, Seconds maxResponse ) const {
    PktPtr pkt = validPtr( globalPktManager()->newPkt() );
    U32 const bytes = igmpOffset() + igmpBytes() + sourceRoom * static_cast<U32>( sizeof( IpAddr ) );
    pkt->newSharedHeadData( bytes );
    std::fill_n( pkt->front(), bytes, U8{ 0 } );
    writeEth( pkt->front() );
    writeIp( pkt->front() + ethBytes() );
    writeIgmp( pkt->front() + igmpOffset(), maxResponse );
    return pkt;
}

void
QueryPackets::writeEth( U8* frame ) const {
    auto* const eth = headerAt<EthHdr>( frame );
    eth->srcIs( config_.macAddr );
    eth->typeOrLenIs( config_.vlanId ? ethType8021Q : ethTypeIp );
    if ( config_.vlanId ) {
        auto* const tag = headerAt<Eth8021QHdr>( frame + sizeof( EthHdr ) );
        tag->tagControlIs( config_.vlanId->value() );
        tag->typeOrLenIs( ethTypeIp );
    }
}

void
QueryPackets::writeIp( U8* ip ) const {
    auto* const hdr = headerAt<IpHdr>( ip );
    hdr->versionIs( 4 );
    hdr->headerBytesIs( ipHeaderBytes() );
    hdr->ttlIs( 1 );
    hdr->protocolIs( ipProtoIgmp );
    hdr->srcIs( config_.ipAddr );
    if ( config_.routerAlert ) {
        new ( ip + sizeof( IpHdr ) ) IpHdrRouterAlertOption;
    }
}

void
QueryPackets::writeIgmp( U8* igmp, Seconds maxResponse ) const {
    auto* const hdr = headerAt<IgmpV12Hdr>( igmp );
    hdr->messageTypeIs( IgmpMessageType::membershipQuery );
    hdr->maxResponseCodeIs( maxResponseCode( config_.version, maxResponse ) );
    if ( config_.version == 3 ) {
        auto* const v3 = headerAt<IgmpV3QueryHdr>( igmp );
        v3->querierRobustnessIs( robustnessCode( config_.robustness ) );
        v3->queryIntervalCodeIs( igmpFloatEncode( static_cast<U32>( std::lround( config_.queryInterval ) ) )
        );
    }
}

QueryPackets::PktPtr const&
QueryPackets::group( IpAddr const& group, bool suppress ) {
    address( *group_, group, suppress );
    finish( *group_, group );
    return group_;
}

QueryPackets::PktPtr const&
QueryPackets::groupAndSources( IpAddr const& group, std::span<IpAddr const> sources, bool suppress ) {
    Kiv::invariant(
        config_.version == 3 && sources.size() <= sourcesPerQuery(), "sources fit a version 3 query"
    );
    sourceCountIs( *groupAndSources_, sources.size() );
    auto* const hdr = headerAt<IgmpV3QueryHdr>( groupAndSources_->front() + igmpOffset() );
    for ( std::size_t i = 0; i < sources.size(); ++i ) {
        hdr->sourceIs( static_cast<U16>( i ), sources[i] );
    }
    address( *groupAndSources_, group, suppress );
    finish( *groupAndSources_, group );
    return groupAndSources_;
}

void
QueryPackets::address( Pkt& pkt, IpAddr const& group, bool suppress ) const {
    auto* const hdr = headerAt<IgmpV3QueryHdr>( pkt.front() + igmpOffset() );
    hdr->groupAddressIs( group );
    if ( config_.version == 3 ) {
        hdr->suppressRouterProcessingIs( suppress );
    }
}

/// Makes the packet as long as that many sources need; the buffer keeps room for the most.
void
QueryPackets::sourceCountIs( Pkt& pkt, std::size_t sources ) const {
    U32 const wanted = igmpOffset() + igmpBytes() + static_cast<U32>( sources * sizeof( IpAddr ) );
    U32 const present = pkt.bytes();
    if ( wanted < present ) {
        pkt.delSharedTailData( present - wanted );
    } else if ( wanted > present ) {
        pkt.newSharedTailData( wanted - present );
    }
    headerAt<IgmpV3QueryHdr>( pkt.front() + igmpOffset() )->numSourcesIs( static_cast<U16>( sources ) );
}

/// What depends on all the rest: destinations, length and checksums.
void
QueryPackets::finish( Pkt& pkt, IpAddr const& destination ) const {
    U8* const frame = pkt.front();
    headerAt<EthHdr>( frame )->dstIs( ipMcastMacAddr( destination ) );
    auto* const ip = headerAt<IpHdr>( frame + ethBytes() );
    ip->dstIs( destination );
    ip->totalLenIs( static_cast<U16>( pkt.bytes() - ethBytes() ) );
    ip->checksumIs( 0 );
    ip->checksumIs( ip->computedChecksum() );
    auto* const igmp = headerAt<IgmpCommonHdr>( frame + igmpOffset() );
    igmp->checksumIs( 0 );
    igmp->checksumIs( igmp->computedChecksum( static_cast<U16>( pkt.bytes() - igmpOffset() ) ) );
}

} // namespace Lab
