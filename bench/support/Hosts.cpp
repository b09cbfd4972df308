#include "bench/support/Hosts.h"

#include <array>
#include <new>

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpV3QueryHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpMcastMacAddr.h"

namespace Bench {

using namespace Igmp;
using Zornet::IpAddr;

namespace {

Kiv::Name
nameOf( std::size_t i ) {
    return Kiv::Name( "host-" + std::to_string( i ) );
}

} // namespace

Hosts::Hosts( Plan const& plan )
    : wheel_( new Lumo::TimerWheel ),
      dir_( igmpHostDirFactory( "hosts" ) ),
      statusDir_( igmpHostStatusDirFactory( "status" ) ),
      dirSm_( igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel_ ) ) {
    for ( std::size_t i = 0; i < plan.hosts; ++i ) {
        Ptr<IgmpHost> const host = hosts_.emplace_back( dir_->igmpHostIs( nameOf( i ) ) );
        host->ipAddrIs( address( i ) );
        host->deviceNameIs( plan.device );
        host->nsIs( Zornet::NamespaceName( plan.ns ) );
        host->igmpVersionIs( plan.version );
        if ( plan.ownVlans ) {
            host->taggedIs( true );
            host->useMuxIs( true );
            host->vlanIdIs( static_cast<Zornet::U16>( i + 1 ) );
        }
        if ( plan.answersAtOnce ) {
            host->igmpVersionForcedIs( true );
            host->v1MaxResponseTimeIs( 0 );
        }
        host->intfConfigVersionIs( 1 );
        host->enabledIs( true );
        // Before that it would not reach a version 2 host.
        host->unsolicitedReportIntervalIs( plan.unsolicitedReportInterval );
        for ( std::size_t g = 0; g < plan.groups; ++g ) {
            join( *host, g, plan.sources );
        }
    }
}

Hosts::~Hosts() {
    dir_->igmpHostDelAll();
}

void
Hosts::join( IgmpHost& host, std::size_t number, std::size_t sources ) {
    Ptr<IgmpV3GroupRecord> const record = host.v3groupIs( group( number ) );
    record->filterModeIs( sources == 0 ? IgmpV3GroupRecord::exclude : IgmpV3GroupRecord::include );
    for ( std::size_t s = 0; s < sources; ++s ) {
        record->sourceIs()->sourceIpIs( IpAddr::fromHost( 0x0a090001U + static_cast<U32>( s ) ), 1 );
    }
    record->versionIs( 1 );
}

IgmpHostStatus&
Hosts::status( std::size_t i ) {
    return *statusDir_->igmpHostStatus( nameOf( i ) );
}

IgmpHostSm&
Hosts::machine( std::size_t i ) {
    return *dirSm_->igmpHostSm( nameOf( i ) );
}

std::vector<U8>
generalQuery( U8 code, bool asV3 ) {
    IpAddr const allHosts( "224.0.0.1" );
    std::size_t const igmpBytes = asV3 ? sizeof( Zornet::IgmpV3QueryHdr ) : sizeof( Zornet::IgmpV12Hdr );
    std::vector<U8> frame( sizeof( Zornet::EthHdr ) + sizeof( Zornet::IpHdr ) + igmpBytes );
    auto* const eth = reinterpret_cast<Zornet::EthHdr*>( frame.data() );
    eth->dstIs( Zornet::ipMcastMacAddr( allHosts ) );
    eth->typeOrLenIs( Zornet::ethTypeIp );
    auto* const ip = new ( eth + 1 ) Zornet::IpHdr;
    ip->versionIs( 4 );
    ip->headerBytesIs( sizeof( Zornet::IpHdr ) );
    ip->totalLenIs( static_cast<Zornet::U16>( sizeof( Zornet::IpHdr ) + igmpBytes ) );
    ip->ttlIs( 1 );
    ip->protocolIs( Zornet::ipProtoIgmp );
    ip->srcIs( IpAddr( "10.255.255.254" ) );
    ip->dstIs( allHosts );
    ip->checksumIs( ip->computedChecksum() );
    auto* const igmp = reinterpret_cast<Zornet::IgmpV12Hdr*>( ip + 1 );
    igmp->messageTypeIs( Zornet::IgmpMessageType::membershipQuery );
    igmp->maxResponseCodeIs( code );
    igmp->checksumIs( igmp->computedChecksum( static_cast<Zornet::U16>( igmpBytes ) ) );
    return frame;
}

std::vector<U8>
tagged( std::vector<U8> frame, Zornet::U16 vlanId ) {
    std::array<U8, 4> const tag{ 0x81, 0x00, static_cast<U8>( vlanId >> 8 ), static_cast<U8>( vlanId ) };
    frame.insert( frame.begin() + 12, tag.begin(), tag.end() );
    return frame;
}

} // namespace Bench
