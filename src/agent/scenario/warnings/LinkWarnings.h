#pragma once

#include <map>
#include <optional>
#include <unordered_map>

#include "agent/scenario/Scenario.h"

namespace Agent {

/// Warnings about hosts that get in each other's way, on a link or on a shared device. Entries must come in
/// the order in which they will be made, and stay where they are: the first host of an interface opens the
/// device. An entry takes as long as it has VLANs, however many hosts.
class LinkWarnings {
  public:
    LinkWarnings( Scenario const& scenario, Diagnostics& warnings )
        : scenario_( scenario ), warnings_( warnings ) {}

    /// The hosts of an entry from an index on.
    struct Owner {
        HostSpec const* spec;
        U32 index;
    };

    void check( HostSpec const& spec );

    /// Names the broadcast domain that a host is in, as far as the scenario tells.
    static std::string linkOf( HostSpec const& spec, U32 index );
    // Of ipAddr or macAddr, as a number: the host that has been found to have it, and what to say of it.
    std::optional<Owner> holder( Kiv::AttributeId id, std::string const& link, U64 number ) const;
    std::string takenText(
        Kiv::AttributeId id, U64 number, std::string const& link, Owner const& owner, Position const& at
    ) const;

  private:
    struct Opener {
        Owner owner;
        std::string device;
    };
    /// Consecutive numbers that consecutive hosts have.
    struct Claim {
        U64 last;
        Owner owner; ///< of the first number
    };
    using Claims = std::map<U64, Claim>; ///< by their first number; none overlap
    /// What hosts have one of each on a link: a word for it, and its text form.
    struct Kind {
        char const* key;
        std::string ( *text )( U64 number );
        std::unordered_map<std::string, Claims> claims; ///< by link
    };

    void checkAddresses( HostSpec const& spec, Kind& kind, Setting const& setting, U64 first );
    bool claim(
        Owner const& owner, U64 first, U64 count, Kind& kind, std::string const& link, Position const& at
    );
    Kind const& kindOf( Kiv::AttributeId id ) const {
        return id == Igmp::IgmpHost::attrIpAddr ? ipAddrs_ : macAddrs_;
    }
    std::string takenText(
        Kind const& kind, U64 number, std::string const& link, Owner const& owner, Position const& at
    ) const;
    void checkSharedDevice( HostSpec const& spec );
    void checkChannels( HostSpec const& spec );
    std::string told( Owner const& owner, Position const& from ) const;

    Scenario const& scenario_;
    Diagnostics& warnings_;
    Kind ipAddrs_{ "ipAddr",
                   []( U64 number ) {
                       return Kiv::ValueTraits<Zornet::IpAddr>::format(
                           Zornet::IpAddr::fromHost( static_cast<U32>( number ) )
                       );
                   },
                   {} };
    Kind macAddrs_{ "macAddr",
                    []( U64 number ) {
                        return Kiv::ValueTraits<Zornet::EthAddr>::format( ethAddrOf( number ) );
                    },
                    {} };
    std::unordered_map<std::string, Owner> channels_; ///< by interface and VLAN
    std::unordered_map<std::string, Opener> openers_; ///< by interface
};

} // namespace Agent
