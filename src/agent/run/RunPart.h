#pragma once

#include <functional>
#include <optional>
#include <set>

#include "agent/command/ExitStatus.h"
#include "agent/output/Messages.h"
#include "agent/output/StatusLedger.h"
#include "agent/run/Emulation.h"
#include "agent/run/NextEvent.h"
#include "agent/run/RunOptions.h"
#include "agent/run/StartUpProgress.h"
#include "agent/scenario/Scenario.h"
#include "agent/traffic/Traffic.h"
#include "lab/Querier.h"

namespace Agent {

/// What the parts of a run share; it outlives them.
struct RunContext {
    RunOptions const& options;
    Scenario const& scenario;
    Kiv::Ptr<Lumo::TimerWheel> wheel;
    Emulation& emulation;
    Traffic& traffic;
    StatusLedger& ledger;
    Messages& messages;
    /// What any part plans to do first of all; none where there is no plan. May be empty.
    std::function<std::optional<NextEvent>()> nextEvent{};
    /// Looks whether somebody wants the run to end, outside of any turn. May be empty.
    std::function<bool()> isToEnd{};
    Kiv::Seconds started = 0.0;                  ///< when the hosts were started, on the clock of Kiv::now()
    std::vector<Lab::Querier const*> queriers{}; ///< that run beside the hosts
    std::set<std::string> farEnds{};             ///< their devices, by deviceLabel(), that no host sits on

    /// What the devices that hosts sit on have carried.
    DeviceTraffic hostsTraffic() const;
};

/// Something that accompanies the hosts of a run, such as the file that their status goes to. It is made, in
/// the order of makeRunParts(), before any host exists, and raises an exception there for what must keep the
/// run from beginning. It goes, last made first, before the hosts do.
class RunPart {
  public:
    virtual ~RunPart() = default;

    /// The hosts are being brought up; told once a second.
    virtual void handleProgress( StartUpProgress const& ) {}
    /// The hosts exist, and are about to be bound and enabled.
    virtual void handleLoaded() {}
    /// The hosts have been started.
    virtual void handleStarted() {}
    /// What this part plans to do next.
    virtual std::optional<NextEvent> nextEvent() const { return std::nullopt; }
    /// SIGUSR1.
    virtual void handleStatusWanted() {}
    /// The time is over: from now on nothing happens by plan. The hosts are as they were, and may leave their
    /// groups next.
    virtual void handleTimeOver() {}
    /// The run is over; the hosts are still there. Returns how it went for this part; the worst of all is how
    /// the command ends.
    virtual ExitStatus handleEnded() { return exitDone; }
};

} // namespace Agent
