#pragma once

#include "engine/IgmpV3ReportProcessInfo.h"
#include "model/IgmpHost.h"
#include "platform/zornet/PktManager.h"

namespace Igmp {

class IgmpHostSm;

/// How the three senders of version 3 reports (RFC 3376 section 4.2) write into their host's one report
/// packet. Between opening and closing, the packet's window is the room that is left: nothing but the MTU
/// bounds a report.

/// The host's report packet, grown to the MTU, its window behind the report header.
Ptr<Zornet::Pkt> openReportPkt( IgmpHostSm const& sm );

/// Cuts the packet behind its last record and writes the record count, both lengths and both checksums.
void closeReportPkt(
    IgmpHostSm const& sm, Ptr<Zornet::Pkt> const& pkt, IgmpV3ReportProcessInfo const& reportInfo
);

/// Writes one record at the window's start, with as many of the sources as there is room for. Without room
/// for a header and one source it writes nothing, also where there are no sources. `sources` may be null.
void fillV3ReportGroupRecord(
    Ptr<Zornet::Pkt> const& pkt, U8 recordType, Zornet::IpAddr const& group,
    Ptr<IgmpV3HostGroupSourceList> const& sources, Ptr<IgmpV3ReportProcessInfo> const& reportInfo,
    Ptr<IgmpHost> const& igmpHost
);

/// Writes the current-state record of a group; nothing for an include record without sources, which has no
/// state to report.
void populateGroupRecord(
    Ptr<IgmpV3GroupRecord> const& record, Ptr<Zornet::Pkt> const& pkt,
    Ptr<IgmpV3ReportProcessInfo> const& reportInfo, Ptr<IgmpHost> const& igmpHost
);

/// The least room in which a record is begun: its header and one source.
inline constexpr U32 leastRecordRoom = 12;

} // namespace Igmp
