#include "agent/run/StartUp.h"

#include <utility>

#include "platform/kiv/Activity.h"
#include "platform/kiv/Clock.h"

namespace Agent {

StartUp::StartUp(
    Scenario const& scenario, Emulation& emulation, Tell tell, std::function<void()> lookAtSignals
)
    : scenario_( scenario ),
      hostDir_( emulation.hostDir() ),
      tell_( std::move( tell ) ),
      lookAtSignals_( std::move( lookAtSignals ) ) {
    scenario.forEachEntry( [this]( HostSpec const& spec, U32, U32 taken ) {
        if ( !spec.later ) {
            progress_.allHosts += taken;
            progress_.allGroups += taken * spec.groupCount();
        }
    } );
}

void
StartUp::load() {
    loadHosts( scenario_, hostDir_, [this]( DonePart part ) { return goOn( part ); } );
}

void
StartUp::start() {
    progress_.done = "started";
    progress_.hosts = progress_.groups = 0;
    if ( !stopped_ ) {
        startHosts( scenario_, hostDir_, [this]( DonePart part ) { return goOn( part ); } );
    }
}

bool
StartUp::goOn( DonePart part ) {
    constexpr U64 workPerTurn = 1000;
    constexpr U64 workOfHost = 10; // as much as that many groups
    bool const isHost = part == DonePart::host;
    ++( isHost ? progress_.hosts : progress_.groups );
    work_ += isHost ? workOfHost : 1;
    if ( work_ >= workPerTurn ) {
        work_ = 0;
        if ( Kiv::clock().isSimulated() ) {
            lookAtSignals_();
        } else {
            Kiv::defaultActivity()->activitySm().runOnce();
        }
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
        tell_( progress_ );
    }
}

} // namespace Agent
