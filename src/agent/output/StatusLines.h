#pragma once

#include <iosfwd>
#include <string>

#include "agent/output/RunMonitor.h"
#include "lab/Timer.h"

namespace Agent {

/// One line for a person: hosts, groups, timers, frames in all and per second, losses.
std::string statusText( RunView const& view );
/// The same and every counter, as one line of JSON.
std::string statusJson( RunView const& view );
/// The table at the end of a run.
void printSummary( std::ostream& out, RunView const& view );

/// Says how a run goes in a line for each interval, and in a table at its end: as JSON on the standard output
/// (--status-interval), or else for a person on the standard error.
class StatusLines : public RunPart {
  public:
    explicit StatusLines( RunContext const& context );

    void handleProgress( StartUpProgress const& progress ) override;
    void handleStarted() override { next(); }
    ExitStatus handleEnded() override;

  private:
    bool isJson() const { return context_.options.statusInterval.has_value(); }
    void next();
    void tell();

    RunContext const& context_;
    RunMonitor monitor_;
    Kiv::Ptr<Lab::Timer> const timer_;
    std::string last_; ///< line of JSON
    bool failed_ = false;
};

} // namespace Agent
