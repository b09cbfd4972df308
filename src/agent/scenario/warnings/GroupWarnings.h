#pragma once

#include "agent/scenario/Scenario.h"

namespace Agent {

/// Warnings about the groups of one entry of hosts.
class GroupWarnings {
  public:
    GroupWarnings( HostSpec const& host, Diagnostics& warnings ) : host_( host ), warnings_( warnings ) {}

    void check();

  private:
    void checkAddress( GroupSpec const& group );
    void checkFilterMode( GroupSpec const& group );
    void checkSources( GroupSpec const& group );
    void checkReplication( GroupSpec const& group );
    bool hasGroupOutside( GroupSpec const& block ) const;
    void warn( GroupSpec const& group, std::string const& text, bool endsProcess = false );

    HostSpec const& host_;
    Diagnostics& warnings_;
};

} // namespace Agent
