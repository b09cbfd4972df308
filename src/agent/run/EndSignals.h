#pragma once

#include "agent/run/PromptEnd.h"
#include "agent/run/SignalWatch.h"

namespace Agent {

/// Takes SIGINT and SIGTERM for a verb that they are to end: in the turns of the default activity, and where
/// no turn comes, as in a write that nobody reads, they end the process. There is one at a time.
class EndSignals {
  public:
    explicit EndSignals( std::function<void()> handler )
        : watch_( { SIGINT, SIGTERM }, [handler = std::move( handler )]( int ) { handler(); } ) {}

  private:
    SignalWatch const watch_;
    PromptEnd const promptEnd_{ { SIGINT, SIGTERM } };
};

} // namespace Agent
