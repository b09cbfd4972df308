#pragma once

#include "bench/support/Hosts.h"

namespace Bench {

/// A simulated clock and a device that only counts, for the length of one measurement.
struct Rig {
    Kiv::SimulatedClock clock;
    Kiv::ClockScope clockScope{ clock };
    CountingProvider provider;
    Zornet::DeviceProviderScope providerScope{ provider };

    CountingDevice& device() { return provider.counting( "bench0" ); }
    static void runFor( Kiv::Seconds span ) { Kiv::defaultActivity()->activitySm().runFor( span ); }
};

} // namespace Bench
