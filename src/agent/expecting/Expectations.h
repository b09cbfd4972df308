#pragma once

#include <optional>
#include <queue>

#include "agent/expecting/JUnitReport.h"
#include "agent/run/RunPart.h"
#include "lab/Timer.h"

namespace Agent {

/// Looks at what a scenario expects when it is time, tells what is not met and, for --junit, writes the
/// outcome. What happens at the very time of a look has happened. Without a duration, a run whose
/// expectations all have their time ends with the last of them.
class Expectations : public RunPart {
  public:
    /// Raises std::system_error where the outcome could not be written.
    explicit Expectations( RunContext const& context );

    /// Whether a run of the scenario ends with its last expectation.
    static bool decideTheEnd( Scenario const& scenario );

    void handleStarted() override { arm(); }
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
    void arm();
    void handleTimer();
    bool isBehind( Kiv::Seconds time ) const;
    void look( std::size_t index, Kiv::Seconds time, bool isLast );
    void decide( std::size_t index, std::vector<std::string> shortfalls );
    void endIfDecided() const;
    bool write() const;

    RunContext const& context_;
    std::priority_queue<Look, std::vector<Look>, std::greater<>> looks_;
    std::vector<std::optional<ExpectationOutcome>>
        outcomes_; ///< one for each expectation, once it is decided
    Kiv::Ptr<Lab::Timer> timer_;
};

} // namespace Agent
