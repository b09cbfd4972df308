#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "agent/expecting/Expectation.h"
#include "agent/querying/QuerierSpec.h"
#include "agent/scenario/HostSpec.h"
#include "agent/timeline/Event.h"

namespace Agent {

/// The most hosts of a scenario.
inline constexpr U32 mostHosts = 1'000'000;

/// The share of one process in the hosts of a scenario: of N such shares number K takes host K and every N-th
/// from there on, in the order of the scenario.
struct Shard {
    U32 number = 1; ///< K, from 1 to N
    U32 shards = 1; ///< N

    /// Of that many hosts, how many this share has.
    U64 share( U64 hosts ) const { return ( hosts + shards - number ) / shards; }
    /// Whether it has the host of that number, counted from 0.
    bool has( U64 host ) const { return hostsBefore( host ) == 0; }
    /// How many hosts there are from that number on until one that it has.
    U64 hostsBefore( U64 host ) const { return ( U64{ shards } + number - 1 - host % shards ) % shards; }
};

// What a text stands for. Each raises RangeException that says what was expected and found.
Shard shardOf( std::string_view text );           ///< "K/N"
Kiv::Seconds durationOf( std::string_view text ); ///< above 0
U64 wholeNumberOf( std::string_view text, U64 least, U64 greatest = std::numeric_limits<U64>::max() );
Igmp::IgmpVersion protocolOf( std::string_view text ); ///< 1 to 3, or the enumerator's name

/// What a user wants to exist: plain data, checked one by one against what the model can hold.
struct Scenario {
    std::vector<std::string> files;
    std::vector<HostSpec> hosts;
    Settings defaults{ Igmp::IgmpHost::attributes() }; ///< every host that does not set them itself has them
    Shard shard;
    std::optional<U64> seed; ///< for what the agent itself draws
    std::optional<Kiv::Seconds> duration;
    std::vector<Event> events;
    std::vector<Expectation> expectations;
    std::optional<QuerierSpec> querier; ///< runs beside the hosts

    /// How many hosts this process has, those included that are added later.
    U64 hostCount() const;
    /// Calls `f` with each entry that this process has hosts of, the index of the first and how many; they
    /// are as far apart as there are shares.
    template <class F>
    void forEachEntry( F f ) const;
    /// Calls `f` with the entry and the index of each host that this process has, in order.
    template <class F>
    void forEachHost( F f ) const;
};

template <class F>
void
Scenario::forEachEntry( F f ) const {
    U64 first = shard.number - 1; // counted from the first host of the entry
    for ( HostSpec const& spec : hosts ) {
        U64 const taken = first < spec.count ? ( spec.count - first - 1 ) / shard.shards + 1 : 0;
        if ( taken != 0 ) {
            f( spec, static_cast<U32>( first ), static_cast<U32>( taken ) );
        }
        first += taken * shard.shards - spec.count;
    }
}

template <class F>
void
Scenario::forEachHost( F f ) const {
    forEachEntry( [&]( HostSpec const& spec, U32 first, U32 taken ) {
        for ( U64 i = 0; i < taken; ++i ) {
            f( spec, static_cast<U32>( first + i * shard.shards ) );
        }
    } );
}

} // namespace Agent
