#include "agent/scenario/HostNames.h"

#include <charconv>

namespace Agent {

namespace {

struct NumberedName {
    std::string name;
    U32 number;
};

/// The parts of a name such as one of several hosts has.
std::optional<NumberedName>
numberedName( std::string_view text ) {
    std::size_t const dash = text.rfind( '-' );
    if ( dash == std::string_view::npos || dash + 1 == text.size() || text[dash + 1] == '0' ) {
        return {};
    }
    U32 number = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars( text.data() + dash + 1, end, number );
    if ( error != std::errc() || stop != end ) {
        return {};
    }
    return NumberedName{ std::string( text.substr( 0, dash ) ), number };
}

} // namespace

std::optional<HostNames::Clash>
HostNames::take( HostSpec const& spec ) {
    if ( auto found = clash( spec.name, spec.count ) ) {
        return found;
    }
    if ( spec.count > 1 ) {
        series_.emplace( spec.name, Series{ spec.count, spec.at } );
        return {};
    }
    single_.emplace( spec.name, spec.at );
    if ( auto const parts = numberedName( spec.name ) ) {
        auto const [entry, isNew] = numbered_.emplace( parts->name, Numbered{ parts->number, spec.at } );
        if ( parts->number < entry->second.least ) {
            entry->second = { parts->number, spec.at };
        }
    }
    return {};
}

std::optional<HostNames::Clash>
HostNames::clash( std::string const& name, U32 count ) const {
    return count > 1 ? clashOfSeries( name, count ) : clashOfSingle( name );
}

std::optional<HostNames::Clash>
HostNames::clashOfSeries( std::string const& name, U32 count ) const {
    if ( auto const series = series_.find( name ); series != series_.end() ) {
        return Clash{ name + "-1", series->second.at };
    }
    auto const numbered = numbered_.find( name );
    if ( numbered != numbered_.end() && numbered->second.least <= count ) {
        return Clash{ name + "-" + std::to_string( numbered->second.least ), numbered->second.at };
    }
    return {};
}

std::optional<HostNames::Clash>
HostNames::clashOfSingle( std::string const& name ) const {
    if ( auto const single = single_.find( name ); single != single_.end() ) {
        return Clash{ name, single->second };
    }
    auto const parts = numberedName( name );
    auto const series = parts ? series_.find( parts->name ) : series_.end();
    if ( series != series_.end() && parts->number <= series->second.count ) {
        return Clash{ name, series->second.at };
    }
    return {};
}

} // namespace Agent
