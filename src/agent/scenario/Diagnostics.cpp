#include "agent/scenario/Diagnostics.h"

#include <algorithm>
#include <ostream>
#include <tuple>

namespace Agent {

namespace {

bool
standsBefore( Diagnostic const& a, Diagnostic const& b ) {
    return std::tie( a.at.file, a.at.line, a.at.column ) < std::tie( b.at.file, b.at.line, b.at.column );
}

} // namespace

void
Diagnostics::addRepetition(
    Position const& at, std::string const& what, Position const& first, std::vector<std::string> const& files
) {
    add( at, what + " is there already, in " + placeSeenFrom( first, at, files ) );
}

void
Diagnostics::print( std::ostream& out, std::vector<std::string> const& files, char const* severity ) const {
    std::vector<Diagnostic> ordered = entries_;
    std::stable_sort( ordered.begin(), ordered.end(), standsBefore );
    for ( auto const& [at, text, endsProcess] : ordered ) {
        out << files.at( at.file ) << ':';
        if ( at.line != 0 ) {
            out << at.line << ':' << at.column << ':';
        }
        out << ' ' << severity << ": " << text << '\n';
    }
}

std::string
placeSeenFrom( Position const& place, Position const& from, std::vector<std::string> const& files ) {
    std::string const line = "line " + std::to_string( place.line );
    return place.file == from.file ? line : line + " of " + files.at( place.file );
}

} // namespace Agent
