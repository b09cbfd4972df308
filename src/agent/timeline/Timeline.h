#pragma once

#include <queue>

#include "agent/run/RunPart.h"
#include "agent/timeline/HostActions.h"
#include "lab/Timer.h"

namespace Agent {

/// Plays the events of a scenario on the clock of its hosts. What is due at one time is done in the order of
/// the scenario, and before all that is due later, however long it takes: after so many hosts or groups the
/// rest is left to the next turn, so that whoever asks meanwhile is answered and whoever wants the end is
/// heard. In simulated time a turn would move the clock: only whoever wants the end is heard there. There is
/// one timer, and one cursor for each event, however many hosts and groups it is about.
class Timeline : public RunPart {
  public:
    /// What happens next.
    struct Next {
        Kiv::Seconds time; ///< on the clock of Kiv::now()
        Event const* event;
    };

    explicit Timeline( RunContext const& context );

    void handleStarted() override;
    /// Does what was due before the end, unless somebody wants the end.
    void handleTimeOver() override;

    std::optional<Next> next() const;
    std::optional<NextEvent> nextEvent() const override;

  private:
    struct Entry {
        Kiv::Seconds time;
        std::size_t cursor;

        bool operator>( Entry const& other ) const {
            return time > other.time || ( time == other.time && cursor > other.cursor );
        }
    };

    void handleTimer();
    bool isDue( Kiv::Seconds time ) const { return !queue_.empty() && queue_.top().time <= time; }
    bool mayGoOn();
    bool isToEnd() const { return context_.isToEnd && context_.isToEnd(); }
    void play( std::size_t cursor, Kiv::Seconds now );
    void queue( std::size_t cursor );
    void tellMisses( std::size_t cursor );

    struct Misses {
        U64 units = 0;  ///< in the present step
        U64 missed = 0; ///< of them
        Kiv::Seconds since = 0.0;
        bool told = false;
    };

    RunContext const& context_;
    HostActions actions_;
    std::vector<EventCursor> cursors_;
    std::vector<Misses> misses_;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue_;
    Kiv::Ptr<Lab::Timer> timer_;
    U64 unitsLeft_ = 0; ///< that may still be done in this turn
};

} // namespace Agent
