#pragma once

#include <optional>
#include <queue>

#include "agent/expecting/JUnitReport.h"
#include "agent/run/RunPart.h"
#include "lab/Timer.h"

namespace Agent {

/// Looks at what a scenario expects when it is time, tells what is not met and, for --junit, writes the
/// outcome. What happens at the very time of a look has happened.
class Expectations : public RunPart {
  public:
    /// Raises std::system_error where the outcome could not be written.
    explicit Expectations( RunContext const& context );

    void handleStarted() override { handleTimer(); }
    void handleTimeOver() override;
    ExitStatus handleEnded() override;

  private:
    struct Look {
        Kiv::Seconds time; ///< after the start
        std::size_t expectation;

        bool operator>( Look const& other ) const {
            return time > other.time || ( time == other.time && expectation > other.expectation );
        }
    };

    Kiv::Seconds elapsed() const;
    void handleTimer();
    void look( std::size_t index, Kiv::Seconds time, bool isLast );
    void decide( std::size_t index, std::vector<std::string> shortfalls );
    bool write() const;

    RunContext const& context_;
    std::priority_queue<Look, std::vector<Look>, std::greater<>> looks_;
    std::vector<std::optional<Outcome>> outcomes_; ///< one for each expectation, once it is decided
    Kiv::Ptr<Lab::Timer> timer_;
};

} // namespace Agent
