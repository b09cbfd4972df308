#pragma once

#include <map>

#include "agent/scenario/Diagnostics.h"

namespace Agent {

/// Gathers what hosts would have to be warned of after a change, and decides whether the change is made.
class Consent {
  public:
    void add( std::string const& host, std::vector<Diagnostic> const& regrets );

    /// Tells the warnings, each text once. Raises std::invalid_argument, with nothing told, where one of them
    /// is of what may end the agent's process, unless it is forced.
    void demand( bool isForced ) const;

  private:
    struct Regret {
        std::string firstHost;
        std::size_t hosts = 0;
        bool endsProcess = false;
    };

    std::string told( std::string const& text, Regret const& regret ) const;

    std::map<std::string, Regret> regrets_; ///< by text
};

} // namespace Agent
