#pragma once

#include <set>

#include "agent/scenario/Scenario.h"
#include "agent/scenario/warnings/LinkWarnings.h"
#include "model/IgmpHostDir.h"

namespace Agent {

/// The addresses that hosts of a running agent have, each on its link.
class TakenAddresses {
  public:
    /// Hosts that are apart, as those which change, hold none.
    TakenAddresses( Igmp::IgmpHostDir const& dir, std::set<Igmp::IgmpHost const*> const& apart );

    /// What is to be said of a host that would have these settings, in which an address is missing that the
    /// host does not have.
    std::vector<Diagnostic> regrets( Settings const& settings ) const;
    /// The same of a host after changes, where they are of its addresses or its link.
    std::vector<Diagnostic> regrets( Igmp::IgmpHost const& host, Settings const& changes ) const;

  private:
    Scenario present_; ///< every host an entry of its own
    Diagnostics untold_;
    LinkWarnings links_{ present_, untold_ };
};

} // namespace Agent
