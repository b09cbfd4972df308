#pragma once

#include <map>
#include <random>

#include "lab/IgmpFrame.h"
#include "lab/WireFrame.h"
#include "platform/zornet/IgmpV3GroupRecordType.h"

namespace Scenario {

using Kiv::Seconds;
using Zornet::IpAddr;
using Zornet::U32;
using Zornet::U64;

using Random = std::mt19937_64;

/// Loses version 3 frames at random, but never `robustness` in a row of what the protocol sends so often to
/// survive it:
///
/// - of the reports in which a host tells a change of one group;
/// - of the rounds in which a querier asks about all groups, with the answers. A round is hit or spared as a
///   whole; one that is hit loses what chance takes;
/// - of the rounds in which it asks about one group, and of those in which it asks about sources of it, with
///   the answers.
class V3Losses {
  public:
    struct Limits {
        U32 robustness = 2;
        /// Rounds of general queries that may be hit in a row.
        U32 generalRounds = 1;
        /// Within which a query for one group is answered.
        Seconds lastMemberQueryInterval = 1.0;
        /// How many of the frames that may be lost are.
        double share = 0.3;
    };

    V3Losses( Limits const& limits, U64 seed ) : limits_( limits ), random_( seed ) {}

    bool isLost( Lab::WireFrame const& frame );
    /// Loses nothing from now on.
    void stop() { limits_.share = 0.0; }
    U64 lost() const { return lost_; }

  private:
    /// Rounds that have been hit in a row, and whether the present one is.
    struct Round {
        U32 hitInARow = 0;
        bool isHit = false;
        Seconds since = -Kiv::never;
    };

    bool chance() { return static_cast<double>( random_() >> 11 ) * 0x1p-53 < limits_.share; }
    bool decide( Lab::IgmpFrame const& frame, Seconds time );
    bool decideQuery( Zornet::IgmpV3QueryHdr const& query, Seconds time );
    bool decideReport( Lab::IgmpFrame const& frame, Seconds time );
    bool hits( Round& round, U32 limit, Seconds time );

    Limits limits_;
    Random random_;
    U64 lost_ = 0;
    Round generalRound_;
    std::map<std::pair<IpAddr, bool>, Round> groupRounds_; ///< by group, and whether it asks about sources
    std::map<IpAddr, Seconds> sparedUntil_;                ///< answers for a group, by a round of it
    std::map<std::pair<IpAddr, IpAddr>, U32> changesLost_; ///< in a row, by host and group
};

} // namespace Scenario
