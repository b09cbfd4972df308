/// The records that a group owes to a report: which one, with which type and sources, and the running down of
/// what is owed. Nothing runs down but by a record that was written whole.

#include "engine/IgmpV3HostAggregatedSenderSm.h"
#include "engine/IgmpV3HostGroupSm.h"
#include "engine/Trace.h"

namespace Igmp {

namespace {

using RecordType = Zornet::IgmpV3GroupRecordType;

/// `forInclude` or `forExclude` by the wanted record's filter mode; there is no third.
U8
recordTypeFor( IgmpV3GroupRecord const& record, RecordType forInclude, RecordType forExclude ) {
    if ( record.filterMode() == IgmpV3GroupRecord::include ) {
        return static_cast<U8>( forInclude );
    }
    Kiv::invariant( record.filterMode() == IgmpV3GroupRecord::exclude, "0" );
    return static_cast<U8>( forExclude );
}

} // namespace

void
IgmpV3HostGroupSm::doGroupRecordPktConstruct(
    Ptr<Zornet::Pkt> const& pkt, Ptr<IgmpV3ReportProcessInfo> const& reportInfo
) {
    if ( !initialized_ ) {
        return;
    }
    if ( filterModeTransCount_ != 0 ) {
        constructModeChangeRecord( wantedRecord(), pkt, reportInfo );
    } else if ( addedSourceTransCount_->sourceIps() != 0 || deletedSourceTransCount_->sourceIps() != 0 ) {
        constructSourceChangeRecord( wantedRecord(), pkt, reportInfo );
    } else if ( reportsGoOn() ) {
        constructCurrentRecord( wantedRecord(), pkt, reportInfo );
    }
    KIV_TRACE( igmpHostTrace, traceDetail ) << "Added sourceIps=" << addedSourceTransCount_->sourceIps()
                                            << " Deleted sourceIps=" << deletedSourceTransCount_->sourceIps()
                                            << " FilterModeTransCount=" << filterModeTransCount_;
    decideOnLaterReport( *reportInfo );
}

void
IgmpV3HostGroupSm::decideOnLaterReport( IgmpV3ReportProcessInfo& reportInfo ) {
    if ( isStateChanged() || reportsGoOn() ) {
        reportInfo.scheduleTimerIs( true );
    } else if ( aggregatedSenderSm_ && !igmpHost_->v3group( group_ ) ) {
        KIV_TRACE( igmpHostTrace, traceAction ) << "v3GroupSm " << group_ << " is now removed";
        aggregatedSenderSm_->v3GroupSmDel( group_ );
    }
}

void
IgmpV3HostGroupSm::constructModeChangeRecord(
    Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
    Ptr<IgmpV3ReportProcessInfo> const& reportInfo
) {
    if ( !initialized_ ) {
        return;
    }
    std::size_t const sources = record->source() ? record->source()->sourceIps() : 0;
    std::size_t const needed = sizeof( U32 ) * ( 2 + sources );
    std::size_t const room = pkt->offsetBytes();
    // A record that is too long for a still empty packet is not begun, while behind others it goes out cut:
    // on purpose.
    if ( room < leastRecordRoom || ( room < needed && reportInfo->numGroups() == 0 ) ) {
        reportInfo->recordCompleteIs( false );
        return;
    }
    U8 const type =
        recordTypeFor( *record, RecordType::CHANGE_TO_INCLUDE_MODE, RecordType::CHANGE_TO_EXCLUDE_MODE );
    fillV3ReportGroupRecord( pkt, type, group_, record->source(), reportInfo, igmpHost_ );
    if ( reportInfo->recordComplete() ) {
        Kiv::invariant( filterModeTransCount_ > 0, "filterModeTransCount() > 0" );
        --filterModeTransCount_;
        decrementAllCounter( addedSourceTransCount_ );
        decrementAllCounter( deletedSourceTransCount_ );
    }
}

void
IgmpV3HostGroupSm::constructSourceChangeRecord(
    Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
    Ptr<IgmpV3ReportProcessInfo> const& reportInfo
) {
    if ( !initialized_ ) {
        return;
    }
    auto const fill = [&]( Ptr<IgmpV3HostGroupSourceList> const& sources, RecordType include,
                           RecordType exclude ) {
        if ( sources->sourceIps() == 0 ) {
            return;
        }
        fillV3ReportGroupRecord(
            pkt, recordTypeFor( *record, include, exclude ), group_, sources, reportInfo, igmpHost_
        );
        if ( reportInfo->recordComplete() ) {
            decrementAllCounter( sources );
        }
    };
    fill( addedSourceTransCount_, RecordType::ALLOW_NEW_SOURCES, RecordType::BLOCK_OLD_SOURCES );
    fill( deletedSourceTransCount_, RecordType::BLOCK_OLD_SOURCES, RecordType::ALLOW_NEW_SOURCES );
}

void
IgmpV3HostGroupSm::constructCurrentRecord(
    Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
    Ptr<IgmpV3ReportProcessInfo> const& reportInfo
) {
    populateGroupRecord( record, pkt, reportInfo, igmpHost_ );
}

} // namespace Igmp
