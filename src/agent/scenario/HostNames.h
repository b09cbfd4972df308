#pragma once

#include <unordered_map>

#include "agent/scenario/Scenario.h"

namespace Agent {

/// Which names are taken, and where. An entry of a million hosts costs no more than one of a single host.
class HostNames {
  public:
    struct Clash {
        std::string name;
        Position first; ///< where it is taken
    };

    /// Takes the names of an entry; where one is taken already, tells which, and takes none.
    std::optional<Clash> take( HostSpec const& spec );
    /// True where the name is one of those taken.
    bool has( std::string const& name ) const { return clash( name, 1 ).has_value(); }

  private:
    struct Series {
        U32 count;
        Position at;
    };
    struct Numbered {
        U32 least;
        Position at;
    };

    std::optional<Clash> clash( std::string const& name, U32 count ) const;
    std::optional<Clash> clashOfSeries( std::string const& name, U32 count ) const;
    std::optional<Clash> clashOfSingle( std::string const& name ) const;

    std::unordered_map<std::string, Position> single_;
    std::unordered_map<std::string, Series> series_;     ///< of "NAME-1" on, by NAME
    std::unordered_map<std::string, Numbered> numbered_; ///< single ones that are called "NAME-N", by NAME
};

} // namespace Agent
