#include "agent/run/StartUp.h"

#include <iostream>

#include "agent/output/Grouped.h"
#include "agent/scenario/ScenarioLoader.h"
#include "platform/kiv/Activity.h"
#include "platform/kiv/Clock.h"

namespace Agent {

void
StartUp::load() {
    done_ = "made";
    hosts_ = 0;
    loadHosts( scenario_, hostDir_, [this] { return goOn(); } );
}

void
StartUp::start() {
    done_ = "started";
    hosts_ = 0;
    if ( !stopped_ ) {
        startHosts( scenario_, hostDir_, [this] { return goOn(); } );
    }
}

bool
StartUp::goOn() {
    constexpr U64 hostsPerTurn = 100;
    if ( ++hosts_ % hostsPerTurn == 0 && !Kiv::clock().isSimulated() ) {
        Kiv::defaultActivity()->activitySm().runOnce();
        tell();
    }
    return !stopped_;
}

void
StartUp::tell() {
    constexpr std::chrono::seconds interval( 1 );
    auto const now = std::chrono::steady_clock::now();
    if ( now - told_ >= interval ) {
        told_ = now;
        std::cerr << "igmphost: " << grouped( hosts_ ) << " of " << grouped( scenario_.hostCount() )
                  << " hosts " << done_ << std::endl;
    }
}

} // namespace Agent
