#pragma once

#include <deque>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "agent/scenario/Scenario.h"
#include "agent/scenario/warnings/LinkWarnings.h"

namespace Agent {

/// Warnings about addresses that others on a host's link have when events set them on the host, take the host
/// to that link, or let it come back. An event takes as long as it has hosts; the work is bounded over
/// all events, and it is told where that does not suffice.
class EventAddresses {
  public:
    /// `described` has seen the hosts of the scenario.
    EventAddresses( Scenario const& scenario, LinkWarnings const& described, Diagnostics& warnings )
        : scenario_( scenario ), described_( described ), warnings_( warnings ) {}

    void check();

  private:
    using HostKey = U64; ///< entry and index of a host
    /// Of addresses of one kind, those that events have set.
    struct Kind {
        Kiv::AttributeId id;
        std::unordered_map<HostKey, U64> numbers{};
        std::unordered_map<std::string, std::set<std::pair<U64, HostKey>>>
            hosts{}; ///< who has which, by link
    };

    void handle( Event const& event );
    void handleSet( Event const& event );
    void giveUp( Event const& event, Kind& kind );
    void moveHosts( Event const& event );
    void take( Event const& event, Kind& kind, Setting const& cause );
    void release( HostKey host, Kind& kind );
    void forget( HostKey host );
    void comeBack( Event const& event );
    void tell( HostKey host, Kind const& kind, Position const& at, bool& told );
    void silentIs( HostKey host, bool silent );
    bool isSilent( HostKey host ) const {
        return owner( host ).spec->later != unlikeAtStart_.contains( host );
    }
    std::optional<U64> number( HostKey host, Kind const& kind ) const;
    std::string linkOf( HostKey host ) const;
    std::optional<HostKey>
    holder( Kind const& kind, std::string const& link, U64 number, HostKey apart ) const;
    template <class F>
    void forEachHost( Event const& event, F f );
    LinkWarnings::Owner owner( HostKey host ) const;
    HostKey keyOf( LinkWarnings::Owner const& owner ) const;

    Scenario const& scenario_;
    LinkWarnings const& described_;
    Diagnostics& warnings_;
    Kind ipAddrs_{ Igmp::IgmpHost::attrIpAddr };
    Kind macAddrs_{ Igmp::IgmpHost::attrMacAddr };
    std::unordered_set<HostKey> unlikeAtStart_; ///< silent, or no longer: deleted, disabled, to come
    std::unordered_map<HostKey, HostSpec const*> places_; ///< where hosts are that events have moved
    std::deque<HostSpec> newPlaces_;
    U64 hostsLeft_ = 5'000'000;
};

} // namespace Agent
