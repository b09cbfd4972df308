#include "agent/watching/Watch.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "agent/devices/DeviceFacts.h"
#include "agent/output/Grouped.h"
#include "agent/run/EndSignals.h"
#include "agent/run/Privileges.h"
#include "agent/watching/LiveCapture.h"
#include "agent/watching/SeenMessage.h"
#include "platform/zornet/device/LinkMonitor.h"

namespace Agent {

namespace {

class Watcher : private Zornet::LinkHandler {
  public:
    explicit Watcher( WatchOptions const& options ) : options_( options ) {}

    ExitStatus run();

  private:
    void handleFrame( Kiv::Seconds time, std::span<Zornet::U8 const> frame );
    void handleEnded( std::string const& why );
    void handleLink( Zornet::LinkState const& state ) override;
    bool isComplete() const { return options_.count && seen_ >= *options_.count; }

    WatchOptions const& options_;
    Kiv::ActivitySm& activity_ = Kiv::defaultActivity()->activitySm();
    EndSignals const signals_{ [this] { activity_.stop(); } };
    Zornet::U64 seen_ = 0;
    bool isUp_ = true;
    ExitStatus status_ = exitDone;
};

ExitStatus
Watcher::run() {
    LiveCapture const capture(
        options_.device, options_.ns,
        [this]( Kiv::Seconds time, std::span<Zornet::U8 const> frame ) { handleFrame( time, frame ); },
        [this]( std::string const& why ) { handleEnded( why ); }
    );
    Kiv::Ptr<Zornet::LinkMonitor> const monitor(
        new Zornet::LinkMonitor( options_.ns, Kiv::defaultActivity() )
    );
    Kiv::String8 const link( options_.device );
    handleLink( monitor->watchIs( link, this ) );
    keepCapabilities( {} ); // a device that has been opened is not opened again
    std::cerr << "igmphost: watching " << options_.device << ( options_.duration ? "" : " until Ctrl-C" )
              << std::endl;
    activity_.runFor( options_.duration.value_or( Kiv::never ) );
    monitor->watchDel( link );
    std::cerr << "igmphost: " << counted( seen_, "message" );
    if ( Zornet::U64 const lost = capture.lost() ) {
        std::cerr << "; " << lost << " lost, which came too fast";
    }
    std::cerr << std::endl;
    return status_;
}

void
Watcher::handleFrame( Kiv::Seconds time, std::span<Zornet::U8 const> frame ) {
    if ( isComplete() ) {
        return;
    }
    SeenMessage const message( time, frame );
    if ( options_.json ) {
        std::cout << message.json().dump() << std::endl;
    } else {
        std::cout << message << std::endl;
    }
    ++seen_;
    if ( isComplete() ) {
        activity_.stop();
    }
}

void
Watcher::handleEnded( std::string const& why ) {
    std::cerr << "igmphost: error: " << options_.device << ": " << why << std::endl;
    status_ = exitFailed;
    activity_.stop();
}

/// Of a device that is gone the capture tells.
void
Watcher::handleLink( Zornet::LinkState const& state ) {
    if ( state.index != 0 && state.up != isUp_ ) {
        isUp_ = state.up;
        std::cerr << "igmphost: " << options_.device
                  << ( isUp_ ? ": up again" : ": down; it is watched on when it comes up" ) << std::endl;
    }
}

} // namespace

ExitStatus
watch( WatchOptions const& options ) {
    if ( std::string const missing = missingPrivilege( !options.ns.empty() ); !missing.empty() ) {
        std::cerr << "igmphost: error: " << missing << std::endl;
        return exitFailed;
    }
    deviceFacts( options.ns, options.device );
    return Watcher( options ).run();
}

} // namespace Agent
