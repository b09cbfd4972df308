#include "engine/V3Report.h"

#include "engine/IgmpHostSm.h"
#include "engine/Trace.h"
#include "platform/zornet/Checksum.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"

namespace Igmp {

namespace {

constexpr U32 recordHeaderBytes = sizeof( Zornet::IgmpReportGroupRecordHeader );
constexpr U32 sourceBytes = sizeof( Zornet::IpAddr );

void
writeReportHeader( IgmpHostSm const& sm, Zornet::Pkt& pkt, U32 numGroups ) {
    pkt.beginOffsetIs( static_cast<Zornet::S16>( sm.offsetIgmpReportHeader() ) );
    auto* const hdr = pkt.offsetHeader<Zornet::IgmpV3ReportHdr>();
    hdr->numGroupRecordsIs( static_cast<U16>( numGroups ) );
    hdr->checksumIs( 0 );
    auto const length = static_cast<U16>( pkt.bytes() - sm.offsetIgmpReportHeader() );
    hdr->checksumIs( Zornet::ipChecksumCalc( reinterpret_cast<char const*>( hdr ), length, 0 ) );
}

void
writeIpHeader( IgmpHostSm const& sm, Zornet::Pkt& pkt ) {
    pkt.beginOffsetIs( static_cast<Zornet::S16>( sm.offsetIpHeader() ) );
    auto* const hdr = pkt.offsetHeader<Zornet::IpHdr>();
    hdr->totalLenIs( static_cast<U16>( pkt.bytes() - sm.offsetIpHeader() ) );
    hdr->checksumIs( 0 );
    hdr->checksumIs( hdr->computedChecksum() );
}

/// Writes the sources behind a record header at the window's start and returns their number.
U16
writeSources(
    Zornet::Pkt const& pkt, U32 room, IgmpV3HostGroupSourceList const& sources,
    IgmpV3ReportProcessInfo& reportInfo
) {
    auto* const hdr = pkt.offsetHeader<Zornet::IgmpReportGroupRecordHeader>();
    U16 count = 0;
    auto const& list = sources.sourceIp();
    auto source = reportInfo.useBookMark() ? list.startAtHash( reportInfo.bookMarkSourceIp() ) : list.begin();
    for ( ; source; ++source ) {
        if ( room < recordHeaderBytes + ( count + 1U ) * sourceBytes ) {
            reportInfo.recordCompleteIs( false );
            reportInfo.bookMarkSourceIpIs( source->key );
            reportInfo.useBookMarkIs( true );
            break;
        }
        hdr->sourceIs( count, source->key );
        ++count;
        KIV_TRACE( igmpHostTrace, traceDetail ) << "Adding " << source->key << " to the packet";
    }
    return count;
}

} // namespace

Ptr<Zornet::Pkt>
openReportPkt( IgmpHostSm const& sm ) {
    Ptr<Zornet::Pkt> const& pkt = sm.v3ReportPkt();
    pkt->newSharedTailData( sm.mtu() - pkt->bytes() );
    Kiv::invariant(
        pkt->beginOffset() + pkt->offsetBytes() + pkt->endOffset() == sm.mtu(),
        "pkt->beginOffset() + pkt->offsetBytes() + pkt->endOffset() == igmpHostSm()->mtu()"
    );
    pkt->beginOffsetIs( static_cast<Zornet::S16>( sm.offsetIgmpGroupRecStart() ) );
    return pkt;
}

void
closeReportPkt(
    IgmpHostSm const& sm, Ptr<Zornet::Pkt> const& pkt, IgmpV3ReportProcessInfo const& reportInfo
) {
    pkt->delSharedTailData( sm.mtu() - pkt->beginOffset() );
    writeReportHeader( sm, *pkt, reportInfo.numGroups() );
    writeIpHeader( sm, *pkt );
}

void
fillV3ReportGroupRecord(
    Ptr<Zornet::Pkt> const& pkt, U8 recordType, Zornet::IpAddr const& group,
    Ptr<IgmpV3HostGroupSourceList> const& sources, Ptr<IgmpV3ReportProcessInfo> const& reportInfo,
    Ptr<IgmpHost> const& /*igmpHost*/
) {
    U32 const room = pkt->offsetBytes();
    if ( room < leastRecordRoom ) {
        reportInfo->recordCompleteIs( false );
        return;
    }
    auto* const hdr = pkt->offsetHeader<Zornet::IgmpReportGroupRecordHeader>();
    hdr->recordTypeIs( Zornet::IgmpV3GroupRecordType{ recordType } );
    hdr->auxDataLenIs( 0 );
    hdr->mcastAddrIs( group );
    U16 const count = sources ? writeSources( *pkt, room, *sources, *reportInfo ) : U16{ 0 };
    hdr->numSourcesIs( count );
    pkt->beginOffsetInc( static_cast<Zornet::S16>( recordHeaderBytes + count * sourceBytes ) );
    reportInfo->numGroupsInc( 1 );
}

void
populateGroupRecord(
    Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
    Ptr<IgmpV3ReportProcessInfo> const& reportInfo, Ptr<IgmpHost> const& igmpHost
) {
    auto const mode = record->filterMode();
    bool const hasSources = record->source() && record->source()->sourceIps() != 0;
    if ( mode == IgmpV3GroupRecord::exclude || ( mode == IgmpV3GroupRecord::include && hasSources ) ) {
        fillV3ReportGroupRecord(
            pkt, static_cast<U8>( mode ), record->multicastAddr(), record->source(), reportInfo, igmpHost
        );
    }
}

} // namespace Igmp
