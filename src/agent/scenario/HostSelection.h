#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "agent/scenario/Diagnostics.h"
#include "agent/scenario/NameOrder.h"
#include "platform/kiv/Types.h"

namespace Agent {

using Kiv::U32;
using Kiv::U64;

struct HostSpec;
struct Scenario;

/// A name by which a scenario speaks of hosts that it describes elsewhere, and where: the name of a host,
/// that of an entry with a count, which stands for all its hosts, or a pattern with *, ? and [] as shells
/// have it.
struct HostName {
    std::string text;
    Position at;
};

/// Hosts `first` to `first + count - 1` of an entry.
struct HostRange {
    U32 entry = 0; ///< index into the scenario's hosts
    U32 first = 0;
    U32 count = 0;
    U64 number = 0; ///< of the range's first host, counted from 0 over the whole scenario
};

/// Some hosts of a scenario, in its order, each once. What is alike is kept as one: a hundred thousand hosts
/// of one entry cost no more than one. Copies share what they hold.
class HostSelection {
  public:
    struct Host {
        U32 entry; ///< index into the scenario's hosts
        U32 index; ///< within the entry
        U64 number;
        U32 behind; ///< how many hosts of its range come behind it, their numbers one after the other
    };

    HostSelection() : HostSelection( std::vector<HostRange>() ) {}
    /// In any order; what two ranges share is taken once.
    explicit HostSelection( std::vector<HostRange> ranges );

    U64 count() const { return ends_->empty() ? 0 : ends_->back(); }
    std::vector<HostRange> const& ranges() const { return *ranges_; }
    /// The host of that index, which must be below count(). Takes logarithmic time in the ranges.
    Host host( U64 index ) const;

  private:
    std::shared_ptr<std::vector<HostRange> const> ranges_;
    std::shared_ptr<std::vector<U64> const> ends_; ///< how many hosts there are up to the end of a range
};

/// Finds hosts by name. Takes a name's length for a name. A pattern is held against the names that begin as
/// it does, or end as it does where these are fewer, once, however often it is used. What patterns that many
/// names agree with so far may take is bounded over all of them; where that does not suffice, it is told as
/// an error.
class HostFinder {
  public:
    /// What may be spent in steps, of which the test of a name takes one and an entry in a selection ten.
    static constexpr U64 mostSteps = 100'000'000;

    /// The scenario's hosts must not change while it is used.
    explicit HostFinder( Scenario const& scenario, U64 steps = mostSteps );

    /// The hosts of these names; all hosts for none. Tells each name that means no host.
    HostSelection find( std::vector<HostName> const& names, Diagnostics& errors );

  private:
    using Ranges = std::vector<HostRange>;

    HostSelection select( std::vector<HostName> const& names );
    Ranges const& rangesOf( std::string const& name );
    void addNamed( std::string const& name, Ranges& ranges ) const;
    void addMatching( std::string const& pattern, Ranges& ranges );
    void addMatchingNumbers( std::string const& pattern, std::string_view begin, Ranges& ranges );
    void addMatching( std::string const& pattern, HostRange const& range, Ranges& ranges );
    HostRange part( U32 entry, U32 first, U32 count ) const;
    HostRange wholeEntry( U32 entry ) const;
    std::string unknown( std::string const& name ) const;
    void tellTooWide( HostName const& name, Diagnostics& errors );
    bool spend( U64 steps );

    Scenario const& scenario_;
    std::vector<U64> numbers_; ///< of each entry's first host
    NameOrder const singleOrder_;
    NameOrder const mirroredOrder_; ///< names of single hosts, read backwards
    NameOrder const seriesOrder_;   ///< what all names of an entry's hosts begin with
    std::unordered_map<std::string, U32> single_;
    std::unordered_map<std::string, U32> series_;
    std::unordered_map<std::string, Ranges> known_;
    std::map<std::vector<std::string>, HostSelection> selections_; ///< by the names
    U64 stepsLeft_;
    std::optional<HostName> tooWide_; ///< what the steps did not suffice for
};

} // namespace Agent
