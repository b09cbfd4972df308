#pragma once

#include "agent/scenario/Scenario.h"
#include "agent/scenario/warnings/GroupDigest.h"

namespace Agent {

/// Warnings about the groups of one entry of hosts. The digest may be of more groups than are looked at.
class GroupWarnings {
  public:
    GroupWarnings( HostSpec const& host, GroupDigest const& groups, Diagnostics& warnings )
        : host_( host ), groups_( groups ), warnings_( warnings ) {}

    void check();

  private:
    void checkAddress( GroupSpec const& group );
    void checkFilterMode( GroupSpec const& group );
    void checkSources( GroupSpec const& group );
    void checkReplication( GroupSpec const& group );
    bool hasGroupOutside( GroupSpec const& block ) const;
    void warn( GroupSpec const& group, std::string const& text, bool endsProcess = false );

    HostSpec const& host_;
    GroupDigest const& groups_;
    Diagnostics& warnings_;
};

} // namespace Agent
