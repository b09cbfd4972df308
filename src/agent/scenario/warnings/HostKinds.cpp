#include "agent/scenario/warnings/HostKinds.h"

#include <iterator>

namespace Agent {

void
HostKinds::change( HostRange const& range, U32 hosts, Kiv::FunctionRef<Kind( Kind )> f ) {
    auto known = runs_.find( range.entry );
    if ( known == runs_.end() && range.count == hosts ) {
        whole_[range.entry] = f( whole_[range.entry] );
        return;
    }
    if ( known == runs_.end() ) {
        known = runs_.emplace( range.entry, Runs{ { 0, whole_[range.entry] } } ).first;
    }
    Runs& runs = known->second;
    U32 const end = range.first + range.count;
    split( runs, range.first );
    if ( end != hosts ) {
        split( runs, end );
    }
    for ( auto run = runs.find( range.first ); run != runs.end() && run->first < end; ++run ) {
        run->second = f( run->second );
    }
    if ( range.count == hosts ) {
        merge( runs );
    }
    if ( runs.size() == 1 ) {
        whole_[range.entry] = runs.begin()->second;
        runs_.erase( known );
    }
}

void
HostKinds::split( Runs& runs, U32 first ) {
    auto const run = std::prev( runs.upper_bound( first ) );
    runs.emplace( first, run->second );
}

void
HostKinds::merge( Runs& runs ) {
    for ( auto run = std::next( runs.begin() ); run != runs.end(); ) {
        run = run->second == std::prev( run )->second ? runs.erase( run ) : std::next( run );
    }
}

} // namespace Agent
