#pragma once

#include "model/Types.h"
#include "platform/zornet/IgmpMessageType.h"
#include "platform/zornet/IpAddr.h"
#include "platform/zornet/Pkt.h"

namespace Igmp {

class IgmpHostSm;

/// Sends the host's version 1 or 2 report for a group (RFC 1112, RFC 2236) and then counts it, whether or not
/// it could go out. A host in version 3 sends and counts nothing.
void sendV12Report( IgmpHostSm* sm, Zornet::IpAddr group );

/// Counts the host's version 2 leave of a group and then sends it to all routers. A host in version 3 does
/// neither.
void sendV2Leave( IgmpHostSm* sm, Zornet::IpAddr group );

/// The step common to both: patches the host's ready-made packet and hands it to the wire. A host that is
/// blocked, is ingress-only or has no wire drops the packet untouched, with a trace.
void sendV12ReportLeaveCommon(
    IgmpHostSm* sm, Ptr<Zornet::Pkt> pkt, Zornet::IpAddr group, Zornet::IgmpMessageType type,
    Zornet::IpAddr dst
);

/// The host is at present brought down to version 1.
bool v1QuerierSeenRecently( IgmpHostSm const* sm );

} // namespace Igmp
