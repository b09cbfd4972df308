#include "tests/scenario/V3Losses.h"

#include <algorithm>
#include <vector>

#include "platform/zornet/IgmpReportGroupRecordHeader.h"

namespace Scenario {

namespace {

using Zornet::IgmpMessageType;
using Record = Zornet::IgmpReportGroupRecordHeader;

bool
tellsAChange( Record const& record ) {
    return record.recordType() >= Zornet::IgmpV3GroupRecordType::CHANGE_TO_INCLUDE_MODE;
}

std::vector<Record const*>
recordsOf( Lab::IgmpFrame const& frame ) {
    std::vector<Record const*> records;
    auto const* at = frame.igmp().data() + sizeof( Zornet::IgmpV3ReportHdr );
    for ( unsigned left = frame.v3Report().numGroupRecords(); left != 0; --left ) {
        records.push_back( reinterpret_cast<Record const*>( at ) );
        at += records.back()->recordBytes();
    }
    return records;
}

} // namespace

bool
V3Losses::isLost( Lab::WireFrame const& frame ) {
    Lab::IgmpFrame const igmp( frame.bytes, std::nullopt );
    bool const lost = igmp.verdict() == Lab::IgmpFrame::Verdict::good && decide( igmp, frame.time );
    lost_ += lost;
    return lost;
}

bool
V3Losses::decide( Lab::IgmpFrame const& frame, Seconds time ) {
    return frame.v12().messageType() == IgmpMessageType::membershipQuery
               ? decideQuery( frame.v3Query(), time )
               : decideReport( frame, time );
}

/// Begins a round, unless the query belongs to the one that began just now. Returns whether it is hit.
bool
V3Losses::hits( Round& round, U32 limit, Seconds time ) {
    if ( round.since != time ) {
        round.since = time;
        round.isHit = round.hitInARow < limit && random_() % 2 == 0;
        round.hitInARow = round.isHit ? round.hitInARow + 1 : 0;
    }
    return round.isHit;
}

bool
V3Losses::decideQuery( Zornet::IgmpV3QueryHdr const& query, Seconds time ) {
    IpAddr const group = query.groupAddress();
    if ( group.isZero() ) {
        return hits( generalRound_, limits_.generalRounds, time ) && chance();
    }
    Round& round = groupRounds_[{ group, query.numSources() != 0 }];
    if ( hits( round, limits_.robustness - 1, time ) ) {
        return chance();
    }
    sparedUntil_[group] = time + limits_.lastMemberQueryInterval + 1e-3;
    return false;
}

bool
V3Losses::decideReport( Lab::IgmpFrame const& frame, Seconds time ) {
    auto const records = recordsOf( frame );
    auto const mayBeLost = [&]( Record const* record ) {
        if ( tellsAChange( *record ) ) {
            return changesLost_[{ frame.src(), record->mcastAddr() }] + 1 < limits_.robustness;
        }
        return generalRound_.isHit && time > sparedUntil_[record->mcastAddr()];
    };
    bool const lost = std::all_of( records.begin(), records.end(), mayBeLost ) && chance();
    for ( Record const* record : records ) {
        if ( tellsAChange( *record ) ) {
            U32& inARow = changesLost_[{ frame.src(), record->mcastAddr() }];
            inARow = lost ? inARow + 1 : 0;
        }
    }
    return lost;
}

} // namespace Scenario
