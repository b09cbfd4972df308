#include "agent/scenario/HostSelection.h"

#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "agent/scenario/Scenario.h"
#include "agent/scenario/Suggestion.h"

namespace Agent {

namespace {

constexpr char wildcards[] = "*?[\\";

bool
isPattern( std::string_view text ) {
    return text.find_first_of( wildcards ) != std::string_view::npos;
}

/// The parts of a name such as one of several hosts has: the entry's name, and the index.
std::optional<U32>
indexAfter( std::size_t dash, std::string const& name ) {
    U32 number = 0;
    char const* const end = name.data() + name.size();
    auto const [stop, error] = std::from_chars( name.data() + dash + 1, end, number );
    bool const isNumber = error == std::errc() && stop == end && name[dash + 1] != '0';
    return isNumber ? std::optional( number - 1 ) : std::nullopt;
}

/// True where every name that begins with `stem` matches the pattern: "rx*" and "rx-".
bool
matchesAll( std::string_view pattern, std::string_view stem ) {
    return pattern.find_first_of( wildcards ) == pattern.size() - 1 && pattern.back() == '*' &&
           stem.starts_with( pattern.substr( 0, pattern.size() - 1 ) );
}

} // namespace

HostSelection::HostSelection( std::vector<HostRange> ranges ) {
    std::sort( ranges.begin(), ranges.end(), []( HostRange const& a, HostRange const& b ) {
        return a.number < b.number;
    } );
    std::vector<HostRange> taken;
    std::vector<U64> ends;
    U64 end = 0;
    for ( HostRange range : ranges ) {
        U64 const done = std::min<U64>( end > range.number ? end - range.number : 0, range.count );
        range.first += static_cast<U32>( done );
        range.count -= static_cast<U32>( done );
        range.number += done;
        if ( range.count != 0 ) {
            end = range.number + range.count;
            taken.push_back( range );
            ends.push_back( ( ends.empty() ? 0 : ends.back() ) + range.count );
        }
    }
    ranges_ = std::make_shared<std::vector<HostRange> const>( std::move( taken ) );
    ends_ = std::make_shared<std::vector<U64> const>( std::move( ends ) );
}

HostSelection::Host
HostSelection::host( U64 index ) const {
    auto const at =
        static_cast<std::size_t>( std::upper_bound( ends_->begin(), ends_->end(), index ) - ends_->begin() );
    HostRange const& range = ranges()[at];
    auto const offset = static_cast<U32>( index - ( ends_->at( at ) - range.count ) );
    return { range.entry, range.first + offset, range.number + offset };
}

HostFinder::HostFinder( Scenario const& scenario ) : scenario_( scenario ) {
    U64 number = 0;
    U32 entry = 0;
    for ( HostSpec const& spec : scenario.hosts ) {
        numbers_.push_back( number );
        number += spec.count;
        stems_.emplace( spec.count == 1 ? spec.name : spec.name + "-", entry );
        ( spec.count == 1 ? single_ : series_ ).emplace( spec.name, entry++ );
    }
}

HostSelection
HostFinder::find( std::vector<HostName> const& names, Diagnostics& errors ) {
    std::vector<std::string> texts;
    for ( HostName const& name : names ) {
        texts.push_back( name.text );
        if ( rangesOf( name.text ).empty() ) {
            errors.add( name.at, unknown( name.text ) );
        }
    }
    auto const [selection, isNew] = selections_.try_emplace( std::move( texts ) );
    if ( isNew ) {
        selection->second = select( names );
    }
    return selection->second;
}

HostSelection
HostFinder::select( std::vector<HostName> const& names ) {
    std::vector<HostRange> ranges;
    for ( HostName const& name : names ) {
        std::vector<HostRange> const& found = rangesOf( name.text );
        ranges.insert( ranges.end(), found.begin(), found.end() );
    }
    for ( U32 entry = 0; names.empty() && entry < scenario_.hosts.size(); ++entry ) {
        ranges.push_back( wholeEntry( entry ) );
    }
    return HostSelection( std::move( ranges ) );
}

std::vector<HostRange> const&
HostFinder::rangesOf( std::string const& name ) {
    auto const [known, isNew] = known_.try_emplace( name );
    if ( isNew ) {
        addNamed( name, known->second );
        if ( known->second.empty() && isPattern( name ) ) {
            addMatching( name, known->second );
        }
    }
    return known->second;
}

void
HostFinder::addNamed( std::string const& name, std::vector<HostRange>& ranges ) const {
    if ( auto const single = single_.find( name ); single != single_.end() ) {
        ranges.push_back( wholeEntry( single->second ) );
        return;
    }
    if ( auto const series = series_.find( name ); series != series_.end() ) {
        ranges.push_back( wholeEntry( series->second ) );
        return;
    }
    std::size_t const dash = name.rfind( '-' );
    if ( dash == std::string::npos || dash + 1 == name.size() ) {
        return;
    }
    auto const series = series_.find( name.substr( 0, dash ) );
    auto const index = indexAfter( dash, name );
    if ( series != series_.end() && index && *index < scenario_.hosts[series->second].count ) {
        ranges.push_back( { series->second, *index, 1, numbers_[series->second] + *index } );
    }
}

/// Of the entries only those are tested whose names agree with the pattern's begin without wildcards, as far
/// as both go.
void
HostFinder::addMatching( std::string const& pattern, std::vector<HostRange>& ranges ) const {
    std::string_view const begin =
        std::string_view( pattern ).substr( 0, pattern.find_first_of( wildcards ) );
    for ( std::size_t length = 1; length < begin.size(); ++length ) {
        auto const [first, last] = stems_.equal_range( begin.substr( 0, length ) );
        for ( auto at = first; at != last; ++at ) {
            addMatching( pattern, at->second, ranges );
        }
    }
    for ( auto at = stems_.lower_bound( begin ); at != stems_.end() && at->first.starts_with( begin );
          ++at ) {
        if ( matchesAll( pattern, at->first ) ) {
            ranges.push_back( wholeEntry( at->second ) );
        } else {
            addMatching( pattern, at->second, ranges );
        }
    }
}

void
HostFinder::addMatching( std::string const& pattern, U32 entry, std::vector<HostRange>& ranges ) const {
    HostSpec const& spec = scenario_.hosts[entry];
    HostRange range{ entry, 0, 0, 0 };
    for ( U32 index = 0; index <= spec.count; ++index ) {
        bool const matches =
            index < spec.count && fnmatch( pattern.c_str(), spec.hostName( index ).c_str(), 0 ) == 0;
        if ( matches && range.count++ == 0 ) {
            range.first = index;
        } else if ( !matches && range.count != 0 ) {
            range.number = numbers_[entry] + range.first;
            ranges.push_back( range );
            range.count = 0;
        }
    }
}

HostRange
HostFinder::wholeEntry( U32 entry ) const {
    return { entry, 0, scenario_.hosts[entry].count, numbers_[entry] };
}

std::string
HostFinder::unknown( std::string const& name ) const {
    constexpr std::size_t mostToList = 20;
    constexpr std::size_t mostToSearch = 1000;
    if ( isPattern( name ) ) {
        return "hosts: expected a pattern that the name of a host matches, found '" + name + "'";
    }
    std::vector<std::string_view> names;
    std::unordered_set<std::string_view> known{ "" }; // where it is missing or repeated, that has been told
    for ( U32 entry = 0; entry < std::min( scenario_.hosts.size(), mostToSearch ); ++entry ) {
        if ( known.insert( scenario_.hosts[entry].name ).second ) {
            names.emplace_back( scenario_.hosts[entry].name );
        }
    }
    std::string const told = "hosts: expected the name of a host, found '" + name + "'";
    if ( names.size() <= mostToList ) {
        return told + suggestion( name, names );
    }
    std::string_view const near = nearest( name, names );
    return near.empty() ? told : told + "; did you mean '" + std::string( near ) + "'?";
}

} // namespace Agent
