#include "agent/scenario/warnings/FrameSizes.h"

#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/IpHdrRouterAlertOption.h"

namespace Agent {

using Igmp::IgmpHost;

U32
headerBytes( HostSpec const& spec ) {
    std::size_t bytes =
        sizeof( Zornet::EthHdr ) + sizeof( Zornet::IpHdr ) + sizeof( Zornet::IgmpV3ReportHdr );
    if ( spec.settings.value<bool>( IgmpHost::attrTagged ) ) {
        bytes += sizeof( Zornet::Eth8021QHdr );
    }
    if ( spec.settings.value<bool>( IgmpHost::attrEnableRouterAlert ) ) {
        bytes += sizeof( Zornet::IpHdrRouterAlertOption );
    }
    return static_cast<U32>( bytes );
}

U64
recordBytes( U64 sources ) {
    return sizeof( Zornet::IgmpReportGroupRecordHeader ) + sources * sizeof( Zornet::IpAddr );
}

} // namespace Agent
