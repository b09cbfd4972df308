#pragma once

#include <iosfwd>
#include <string>
#include <unordered_set>
#include <vector>

namespace Agent {

/// A place in a scenario file. Line and column count from 1; line 0 stands for the file as a whole.
struct Position {
    std::size_t file = 0; ///< index into the scenario's list of files
    int line = 0;
    int column = 0;
};

/// What a reader has to say about a place.
struct Diagnostic {
    Position at;
    std::string text;
    bool endsProcess =
        false; ///< a warning of what, on a packet or a change, ends the process and all its hosts
};

/// A list of complaints about scenario files, told in the order of the files. What is said of one place over
/// and over, as where an alias is used many times, is told once.
class Diagnostics {
  public:
    void add( Position const& at, std::string const& text, bool endsProcess = false );
    std::vector<Diagnostic> const& entries() const { return entries_; }
    /// "WHAT is there already, in line N".
    void addRepetition(
        Position const& at, std::string const& what, Position const& first,
        std::vector<std::string> const& files
    );
    bool empty() const { return entries_.empty(); }
    /// How many complaints there were, repeated ones too.
    std::size_t size() const { return size_; }
    /// In the order of the files.
    std::vector<Diagnostic> ordered() const;

    /// One line each: "FILE:LINE:COLUMN: SEVERITY: TEXT".
    void print( std::ostream& out, std::vector<std::string> const& files, char const* severity ) const;

  private:
    std::vector<Diagnostic> entries_;
    std::unordered_set<std::string> told_; ///< places with texts
    std::size_t size_ = 0;
};

/// "line 3", or "line 3 of other.yaml" seen from a place in another file.
std::string
placeSeenFrom( Position const& place, Position const& from, std::vector<std::string> const& files );

} // namespace Agent
