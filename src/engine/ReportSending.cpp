#include "engine/ReportSending.h"

#include "engine/IgmpHostSm.h"
#include "engine/Trace.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpV12Hdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpMcastMacAddr.h"

namespace Igmp {

namespace {

using Zornet::IgmpMessageType;

constexpr Zornet::IpAddr allRouters = Zornet::IpAddr::fromHost( 0xe0000002 ); // 224.0.0.2
constexpr U16 igmpBytes = sizeof( Zornet::IgmpV12Hdr );
constexpr U16 totalLenPlain = sizeof( Zornet::IpHdr ) + igmpBytes;
constexpr U16 routerAlertBytes = 4;

bool
mayTransmit( IgmpHostSm const& sm ) {
    if ( sm.igmpHost()->blocked() ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << sm.name() << " blocked. dropping packet ";
        return false;
    }
    if ( sm.igmpHost()->direction() == Bridging::AllowedTrafficDirection::ingress ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << sm.name() << " direction is ingress ";
        return false;
    }
    if ( !sm.txPam() ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << sm.name() << " no pam to send report";
        return false;
    }
    return true;
}

template <class Header>
Header*
headerAt( Zornet::Pkt& pkt, U16 offset ) {
    pkt.beginOffsetIs( static_cast<Zornet::S16>( offset ) );
    return pkt.offsetHeader<Header>();
}

void
patchIpHeader( Zornet::IpHdr& hdr, bool routerAlert, Zornet::IpAddr const& dst ) {
    hdr.totalLenIs( static_cast<U16>( totalLenPlain + ( routerAlert ? routerAlertBytes : 0 ) ) );
    hdr.dstIs( dst );
    hdr.checksumIs( 0 );
    hdr.checksumIs( hdr.computedChecksum() );
}

void
patchIgmpHeader( Zornet::IgmpV12Hdr& hdr, IgmpMessageType type, Zornet::IpAddr const& group ) {
    hdr.messageTypeIs( type );
    hdr.unusedIs( 0 );
    hdr.groupAddressIs( group );
    hdr.checksumIs( 0 );
    hdr.checksumIs( hdr.computedChecksum( igmpBytes ) );
}

} // namespace

void
sendV12Report( IgmpHostSm* sm, Zornet::IpAddr group ) {
    Ptr<IgmpHostStatus> const status = sm->igmpHostStatus(); // it may go while the report is sent
    if ( !status || status->igmpVersion() == igmpVersion3 ) {
        return;
    }
    bool const asV1 = v1QuerierSeenRecently( sm ) || sm->igmpHost()->igmpVersion() == igmpVersion1;
    auto const type = asV1 ? IgmpMessageType::v1MembershipReport : IgmpMessageType::v2MembershipReport;
    sendV12ReportLeaveCommon( sm, sm->v2ReportPkt(), group, type, group );
    if ( asV1 ) {
        status->v1ReportsSentInc( 1 );
    } else {
        status->v2ReportsSentInc( 1 );
    }
}

void
sendV2Leave( IgmpHostSm* sm, Zornet::IpAddr group ) {
    if ( sm->igmpHostStatus()->igmpVersion() == igmpVersion3 ) {
        return;
    }
    sm->igmpHostStatus()->v2LeavesSentInc( 1 );
    sendV12ReportLeaveCommon( sm, sm->v2ReportPkt(), group, IgmpMessageType::v2LeaveGroup, allRouters );
}

void
sendV12ReportLeaveCommon(
    IgmpHostSm* sm, Ptr<Zornet::Pkt> pkt, Zornet::IpAddr group, IgmpMessageType type, Zornet::IpAddr dst
) {
    if ( !mayTransmit( *sm ) ) {
        return;
    }
    headerAt<Zornet::EthHdr>( *pkt, sm->offsetEtherHeader() )->dstIs( Zornet::ipMcastMacAddr( dst ) );
    auto* const ip = headerAt<Zornet::IpHdr>( *pkt, sm->offsetIpHeader() );
    patchIpHeader( *ip, sm->igmpHost()->enableRouterAlert(), dst );
    auto* const igmp = headerAt<Zornet::IgmpV12Hdr>( *pkt, sm->offsetIgmpReportHeader() );
    patchIgmpHeader( *igmp, type, group );
    KIV_TRACE( igmpHostTrace, traceAction ) << "IgmpHost " << sm->name() << " sending " << *igmp;
    Ptr<Zornet::EthDevPam> const pam = sm->txPam();
    pam->txPktIs( pkt );
}

bool
v1QuerierSeenRecently( IgmpHostSm const* sm ) {
    return sm->igmpHostStatus()->igmpVersion() == igmpVersion1;
}

} // namespace Igmp
