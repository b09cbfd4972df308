#pragma once

#include <map>
#include <unordered_map>
#include <vector>

#include "agent/scenario/HostSelection.h"
#include "platform/kiv/FunctionRef.h"

namespace Agent {

/// What kind the hosts of each entry are of, by numbers that the user gives. An entry is one thing, however
/// many hosts it has, until something becomes of some of them alone; then each run of hosts that are alike
/// is.
class HostKinds {
  public:
    using Kind = U32;

    HostKinds( std::size_t entries, Kind kind ) : whole_( entries, kind ) {}

    /// Puts what `f` makes of the kind of each run of hosts within the range in its place. `hosts` is how
    /// many the entry has.
    void change( HostRange const& range, U32 hosts, Kiv::FunctionRef<Kind( Kind )> f );

  private:
    using Runs = std::map<U32, Kind>; ///< by the first host; a run ends where the next begins

    static void split( Runs& runs, U32 first );
    static void merge( Runs& runs );

    std::vector<Kind> whole_; ///< of entries that have no runs
    std::unordered_map<U32, Runs> runs_;
};

} // namespace Agent
