#pragma once

#include "agent/scenario/Scenario.h"
#include "agent/scenario/warnings/GroupDigest.h"

namespace Agent {

/// Warnings about the settings of one entry of hosts; of its groups it looks at what they come to together.
class HostWarnings {
  public:
    HostWarnings( HostSpec const& spec, GroupDigest const& groups, Diagnostics& warnings )
        : spec_( spec ), groups_( groups ), warnings_( warnings ) {}

    void check();

  private:
    void checkName();
    void checkAddresses();
    void checkBinding();
    void checkTag();
    void checkVersion();
    void checkRobustness();
    void checkMtu();
    void checkPeriodicReport();
    void checkTimes();
    void checkSilence();

    template <class T>
    T value( Kiv::AttributeId id ) const {
        return spec_.settings.value<T>( id );
    }
    bool isVersion3() const;
    /// Warns at the place of the attribute's setting, or of the host where it is not set.
    void warn( Kiv::AttributeId id, std::string const& text, bool endsProcess = false );

    HostSpec const& spec_;
    GroupDigest const& groups_;
    Diagnostics& warnings_;
};

} // namespace Agent
