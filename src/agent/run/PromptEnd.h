#pragma once

#include <csignal>
#include <ctime>
#include <optional>
#include <vector>

namespace Agent {

/// Ends the process at once where signals that are to end it wait to be taken while the thread that has made
/// this is busy: in a call that goes on for seconds, such as that which enables a host of a great many
/// groups, or in a write to a pipe that nobody reads. A thread that takes its signals in turns of a loop
/// never notices. There is one at a time.
class PromptEnd {
  public:
    /// Where it may happen.
    enum class Allowed {
        never,
        whereItWaits, ///< not in the midst of work, however long that takes
        always
    };

    /// Looks every so many seconds. A signal that is seen twice in a row, and was not taken in between, ends
    /// the process, as it would if nobody watched it. Where the system refuses a timer it never does.
    ///
    /// Time is what a clock on the wall shows, and not what the thread has worked: one that waits for the
    /// reader of a pipe, or for another process, does not work. An idle process wakes up once an interval for
    /// it, which is the price.
    explicit PromptEnd( std::vector<int> const& signals, double interval = 1.0 );
    ~PromptEnd();
    PromptEnd( PromptEnd const& ) = delete;
    PromptEnd& operator=( PromptEnd const& ) = delete;

    /// At first it may happen always.
    void allowedIs( Allowed allowed );
    /// What is to be done before such an end, in the midst of anything: async-signal-safe. Null for nothing.
    /// A second signal ends it too.
    static void lastActIs( void ( *act )() );
    /// Whoever takes signals tells it: one that comes later is another.
    static void forgetSeen();

  private:
    std::optional<timer_t> timer_;
    struct sigaction outer_ {};
};

} // namespace Agent
