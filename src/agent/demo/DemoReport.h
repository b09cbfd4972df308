#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "agent/command/ExitStatus.h"
#include "agent/output/StatusLedger.h"
#include "agent/querying/Membership.h"

namespace Agent {

/// What both sides of a demonstration have counted and know in the end, told as a table.
class DemoReport {
  public:
    explicit DemoReport( StatusLedger::Account const& hosts ) : hosts_( hosts ) {}

    /// Takes in a querier and what the hosts on its link are configured to want. `link` names the link where
    /// there are several.
    void querierIs( Lab::Querier const& querier, Membership const& configured, std::string const& link );

    /// True where every querier has learned what is configured.
    bool agrees() const { return differences_.empty(); }
    ExitStatus exitStatus() const { return agrees() ? exitDone : exitFailed; }
    void print( std::ostream& out ) const;

  private:
    StatusLedger::Account const hosts_;
    Lab::QuerierCounters heard_;
    Kiv::U64 queries_ = 0;
    std::size_t configuredGroups_ = 0;
    std::size_t learnedGroups_ = 0;
    std::vector<std::string> differences_;
};

} // namespace Agent
