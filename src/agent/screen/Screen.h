#pragma once

#include <chrono>
#include <cstdio>
#include <deque>

#include "agent/output/RunMonitor.h"
#include "agent/run/SignalWatch.h"
#include "lab/Timer.h"
#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

/// The live screen of a run on a terminal, drawn once a second, and before that of bringing the hosts up,
/// where this takes longer. What the command says meanwhile is shown in it and told again when it goes.
/// However the process ends, the terminal is left as it was.
class Screen : public RunPart {
  public:
    /// Whether the standard output is a terminal that can show it.
    static bool isPossible();

    explicit Screen( RunContext const& context );
    ~Screen() override;

    void handleProgress( StartUpProgress const& progress ) override;
    void handleStarted() override;
    ExitStatus handleEnded() override;

  private:
    void open();
    void close();
    void resize();
    void draw();
    void tick();
    bool isDue();
    void messageIs( std::string const& line );

    RunContext const& context_;
    RunMonitor monitor_;
    Kiv::Ptr<Lab::Timer> const timer_;
    SignalWatch const signals_;
    std::optional<StartUpProgress> progress_; ///< until the hosts have been brought up
    RunView view_;
    std::deque<std::string> messages_; ///< the last that were said
    std::chrono::steady_clock::time_point looked_{};
    bool open_ = false;
};

} // namespace Agent
