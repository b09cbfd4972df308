#pragma once

#include "model/IgmpHostStatusDir.h"

namespace Agent {

/// What all hosts together have counted.
struct StatusTotals {
    explicit StatusTotals( Igmp::IgmpHostStatusDir const& dir );

    Kiv::U64 sent() const { return v1Reports + v2Reports + v2Leaves + v3Reports; }

    Kiv::U64 v1Reports = 0;
    Kiv::U64 v2Reports = 0;
    Kiv::U64 v2Leaves = 0;
    Kiv::U64 v3Reports = 0;
    Kiv::U64 queriesHeard = 0;
};

} // namespace Agent
