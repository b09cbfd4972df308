#pragma once

#include <unordered_map>

#include "agent/scenario/Scenario.h"

namespace Agent {

/// Warnings about hosts that get in each other's way, on a link or on a shared device. Entries must come in
/// the order in which they will be made: the first host of an interface opens the device.
class LinkWarnings {
  public:
    LinkWarnings( Scenario const& scenario, Diagnostics& warnings )
        : scenario_( scenario ), warnings_( warnings ) {}

    void check( HostSpec const& spec );

  private:
    struct Owner {
        std::string host;
        Position at;
    };
    struct Opener {
        Owner owner;
        std::string device;
    };
    using Owners = std::unordered_map<std::string, Owner>;

    /// Warns once for an entry, at `at`, where one of its hosts takes what another has.
    template <class KeyOf>
    void claim( HostSpec const& spec, Owners& owners, Position const& at, char const* what, KeyOf keyOf );
    void checkAddresses( HostSpec const& spec );
    void checkSharedDevice( HostSpec const& spec );
    std::string told( Owner const& owner, Position const& from ) const;

    Scenario const& scenario_;
    Diagnostics& warnings_;
    Owners ipAddrs_;                                  ///< by link and address
    Owners macAddrs_;                                 ///< by link and address
    Owners channels_;                                 ///< by interface and VLAN
    std::unordered_map<std::string, Opener> openers_; ///< by interface
};

} // namespace Agent
