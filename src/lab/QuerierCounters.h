#pragma once

#include <array>

#include "platform/zornet/IgmpV3GroupRecordType.h"
#include "platform/zornet/Types.h"

namespace Lab {

/// What a querier has heard and said since it was made. A message is counted by its version when it is well
/// formed, also where the querier's own version does not know it.
struct QuerierCounters {
    using Count = Zornet::U64;

    Count framesHeard = 0;
    /// Not IPv4, not IGMP or not of the querier's VLAN.
    Count framesForeign = 0;

    Count v1Reports = 0;
    Count v2Reports = 0;
    Count v3Reports = 0;
    Count v2Leaves = 0;
    Count v1Queries = 0;
    Count v2Queries = 0;
    Count v3Queries = 0;
    /// Records of version 3 reports by type; index 0 counts the types that do not exist, which are passed
    /// over.
    std::array<Count, 7> groupRecords{};

    /// Messages of a later version than the querier's, without effect.
    Count messagesNotUnderstood = 0;
    /// Types that no version knows, without effect.
    Count unknownTypes = 0;

    // Malformed, without effect.
    Count truncatedFrames = 0; ///< shorter than a header in it says
    Count badIpHeaders = 0;    ///< version, header length or total length
    Count badIpChecksums = 0;
    Count fragments = 0;
    Count badIgmpLengths = 0; ///< shorter than its type needs, or a count that lies
    Count badIgmpChecksums = 0;
    Count badGroups = 0; ///< messages and records for an address that nobody can join

    // Understood and obeyed, but not as the RFCs have it sent.
    Count misaddressed = 0;       ///< the wrong IP or Ethernet destination
    Count wrongTtls = 0;          ///< other than 1
    Count withoutRouterAlert = 0; ///< reports of version 2 and 3, and leaves

    Count generalQueriesSent = 0;
    Count groupQueriesSent = 0;
    Count groupSourceQueriesSent = 0;

    Count& records( Zornet::IgmpV3GroupRecordType type ) {
        auto const index = static_cast<std::size_t>( type );
        return groupRecords[index < groupRecords.size() ? index : 0];
    }
    Count malformed() const {
        return truncatedFrames + badIpHeaders + badIpChecksums + fragments + badIgmpLengths +
               badIgmpChecksums + badGroups;
    }
};

} // namespace Lab
