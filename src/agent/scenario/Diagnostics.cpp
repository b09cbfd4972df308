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
Diagnostics::add( Position const& at, std::string const& text, bool endsProcess ) {
    ++size_;
    std::string const place =
        std::to_string( at.file ) + ":" + std::to_string( at.line ) + ":" + std::to_string( at.column ) + ":";
    if ( told_.insert( place + text ).second ) {
        entries_.push_back( { at, text, endsProcess } );
    }
}

std::vector<Diagnostic>
Diagnostics::ordered() const {
    std::vector<Diagnostic> all = entries_;
    std::stable_sort( all.begin(), all.end(), standsBefore );
    return all;
}

void
Diagnostics::print( std::ostream& out, std::vector<std::string> const& files, char const* severity ) const {
    for ( auto const& [at, text, endsProcess] : ordered() ) {
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
