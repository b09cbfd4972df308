#pragma once

#include "agent/output/StatusLedger.h"
#include "agent/run/RunPart.h"
#include "platform/kiv/Clock.h"

namespace Agent {

/// A look at a run: what those need who show it.
struct RunView {
    struct Device {
        DeviceTraffic traffic;
        double receivedPerSecond = 0.0; ///< since the look before
        double sentPerSecond = 0.0;
    };

    Kiv::Seconds time = 0.0;    ///< seconds since 1970
    Kiv::Seconds elapsed = 0.0; ///< since the hosts were started
    std::optional<Kiv::Seconds> duration{};
    U64 hosts = 0; ///< that there are, enabled or not
    StatusLedger::Account account{};
    std::size_t timersArmed = 0;
    std::map<std::string, Device> devices{}; ///< by deviceLabel()
    Device all{};                            ///< those together that hosts sit on
    std::optional<NextEvent> next{};

    /// Frames that were lost on the hosts' devices, in either direction.
    U64 losses() const { return all.traffic.receiveLosses + all.traffic.sendLosses; }
};

/// Looks at a run now and then. A look takes a time linear in the hosts.
class RunMonitor {
  public:
    explicit RunMonitor( RunContext const& context ) : context_( context ), lastTime_( Kiv::now() ) {}

    RunView look();

  private:
    RunContext const& context_;
    Kiv::Seconds lastTime_;
    std::map<std::string, DeviceTraffic> last_;
};

} // namespace Agent
