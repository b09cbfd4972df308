#pragma once

#include <csignal>
#include <ctime>
#include <vector>

namespace Agent {

/// Ends the process at once where signals that are to end it wait to be taken while the thread that has made
/// this works on: in a call that goes on for seconds, such as that which enables a host of a great many
/// groups. A thread that takes its signals in turns of a loop, or sleeps, never notices. There is one at a
/// time.
class PromptEnd {
  public:
    /// Looks whenever the thread has worked for so many seconds. A signal that is seen twice ends the
    /// process, as it would if nobody watched it.
    explicit PromptEnd( std::vector<int> const& signals, double interval = 0.5 );
    ~PromptEnd();
    PromptEnd( PromptEnd const& ) = delete;
    PromptEnd& operator=( PromptEnd const& ) = delete;

    /// Whether it may happen; at first it may.
    void allowedIs( bool allowed );
    /// What is to be done before such an end; null for nothing.
    static void lastActIs( void ( *act )() );

  private:
    timer_t timer_{};
    struct sigaction outer_ {};
};

} // namespace Agent
