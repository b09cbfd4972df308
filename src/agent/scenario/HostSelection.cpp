#include "agent/scenario/HostSelection.h"

#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <unordered_set>

#include "agent/hosts/HostPattern.h"
#include "agent/scenario/Scenario.h"
#include "agent/scenario/Suggestion.h"

namespace Agent {

namespace {

/// The parts of a name such as one of several hosts has: the entry's name, and the index.
std::optional<U32>
indexAfter( std::size_t dash, std::string const& name ) {
    U32 number = 0;
    char const* const end = name.data() + name.size();
    auto const [stop, error] = std::from_chars( name.data() + dash + 1, end, number );
    bool const isNumber = error == std::errc() && stop == end && name[dash + 1] != '0';
    return isNumber ? std::optional( number - 1 ) : std::nullopt;
}

/// What every name that matches the pattern begins with.
std::string_view
beginOf( std::string_view pattern ) {
    return pattern.substr( 0, pattern.find_first_of( patternCharacters ) );
}

/// What every name that matches the pattern ends with. A bracket that closes may end a choice of characters.
std::string_view
endOf( std::string_view pattern ) {
    std::string_view const end = pattern.substr( pattern.find_last_of( patternCharacters ) + 1 );
    return end.substr( end.rfind( ']' ) + 1 );
}

/// True where every name that begins as the pattern does matches it: "rx*".
bool
isOpen( std::string_view pattern ) {
    return pattern.back() == '*' && beginOf( pattern ).size() == pattern.size() - 1;
}

/// What the number in a name is, modulo `step`.
struct LastDigits {
    U64 number = 0;
    U64 step = 1;
};

/// Of what the name of one of several hosts ends with.
LastDigits
lastDigits( std::string_view end ) {
    constexpr U64 base = 10;
    LastDigits last;
    for ( ; !end.empty() && last.step <= mostHosts; end.remove_suffix( 1 ) ) {
        if ( end.back() < '0' || end.back() > '9' ) {
            break;
        }
        last.number += static_cast<U64>( end.back() - '0' ) * last.step;
        last.step *= base;
    }
    return last;
}

/// Whether one of several hosts can have such a name: it ends in a digit.
bool
mayHaveNumber( std::string_view pattern ) {
    std::string_view const end = endOf( pattern );
    return end.empty() || ( end.back() >= '0' && end.back() <= '9' );
}

/// Adds a range that does not come before the last one; one that follows it directly makes it longer.
void
append( HostRange const& range, std::vector<HostRange>& ranges ) {
    bool const follows = !ranges.empty() && ranges.back().entry == range.entry &&
                         ranges.back().first + ranges.back().count == range.first;
    if ( follows ) {
        ranges.back().count += range.count;
    } else {
        ranges.push_back( range );
    }
}

std::string
mirrored( std::string_view text ) {
    return { text.rbegin(), text.rend() };
}

/// The entries that `isMeant` says, by the names that `nameOf` gives them.
template <class IsMeant, class NameOf>
NameOrder
orderOf( Scenario const& scenario, IsMeant isMeant, NameOf nameOf ) {
    std::vector<NameOrder::Named> names;
    for ( U32 entry = 0; entry < scenario.hosts.size(); ++entry ) {
        if ( isMeant( scenario.hosts[entry] ) ) {
            names.push_back( { nameOf( scenario.hosts[entry] ), entry } );
        }
    }
    return NameOrder( std::move( names ) );
}

bool
isSingle( HostSpec const& spec ) {
    return spec.count == 1;
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
    return { range.entry, range.first + offset, range.number + offset, range.count - offset - 1 };
}

HostFinder::HostFinder( Scenario const& scenario, U64 steps )
    : scenario_( scenario ),
      singleOrder_( orderOf( scenario, isSingle, []( HostSpec const& spec ) { return spec.name; } ) ),
      mirroredOrder_(
          orderOf( scenario, isSingle, []( HostSpec const& spec ) { return mirrored( spec.name ); } )
      ),
      seriesOrder_(
          orderOf( scenario, std::not_fn( isSingle ), []( HostSpec const& spec ) { return spec.name + "-"; } )
      ),
      stepsLeft_( steps ) {
    U64 number = 0;
    U32 entry = 0;
    for ( HostSpec const& spec : scenario.hosts ) {
        numbers_.push_back( number );
        number += spec.count;
        ( isSingle( spec ) ? single_ : series_ ).emplace( spec.name, entry++ );
    }
}

HostSelection
HostFinder::find( std::vector<HostName> const& names, Diagnostics& errors ) {
    std::vector<std::string> texts;
    for ( HostName const& name : names ) {
        texts.push_back( name.text );
        if ( rangesOf( name.text ).empty() && stepsLeft_ != 0 ) {
            errors.add( name.at, unknown( name.text ) );
        }
    }
    auto const [selection, isNew] = selections_.try_emplace( std::move( texts ) );
    if ( isNew ) {
        selection->second = select( names );
    }
    if ( stepsLeft_ == 0 && !names.empty() ) {
        tellTooWide( names.back(), errors );
        return {};
    }
    return selection->second;
}

/// From there on the same is said of all names: which hosts they mean is not known.
void
HostFinder::tellTooWide( HostName const& name, Diagnostics& errors ) {
    tooWide_ = tooWide_ ? tooWide_ : name;
    errors.add(
        tooWide_->at,
        "hosts: expected names, or patterns that begin or end as fewer names do; those up to '" +
            tooWide_->text + "' take too long to find"
    );
}

HostSelection
HostFinder::select( std::vector<HostName> const& names ) {
    constexpr U64 stepsOfRange = 10;
    Ranges ranges;
    for ( HostName const& name : names ) {
        Ranges const& found = rangesOf( name.text );
        if ( spend( stepsOfRange * found.size() ) ) {
            ranges.insert( ranges.end(), found.begin(), found.end() );
        }
    }
    for ( U32 entry = 0; names.empty() && entry < scenario_.hosts.size(); ++entry ) {
        ranges.push_back( wholeEntry( entry ) );
    }
    return HostSelection( std::move( ranges ) );
}

HostFinder::Ranges const&
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
HostFinder::addNamed( std::string const& name, Ranges& ranges ) const {
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
        ranges.push_back( part( series->second, *index, 1 ) );
    }
}

void
HostFinder::addMatching( std::string const& pattern, Ranges& ranges ) {
    std::string_view const begin = beginOf( pattern );
    auto const named = singleOrder_.startingWith( begin );
    auto const alike = mirroredOrder_.startingWith( mirrored( endOf( pattern ) ) );
    for ( auto const& [name, entry] : alike.size() < named.size() ? alike : named ) {
        addMatching( pattern, wholeEntry( entry ), ranges );
    }
    if ( mayHaveNumber( pattern ) ) {
        for ( auto const& [name, entry] : seriesOrder_.startingWith( begin ) ) {
            addMatching( pattern, wholeEntry( entry ), ranges );
        }
        addMatchingNumbers( pattern, begin, ranges );
    }
}

/// Where the pattern goes on behind the name of an entry: "rx-12*" means the 12th, the 120th to the 129th …
void
HostFinder::addMatchingNumbers( std::string const& pattern, std::string_view begin, Ranges& ranges ) {
    constexpr U64 base = 10;
    std::size_t const dash = begin.rfind( '-' );
    if ( dash == std::string_view::npos || dash + 1 == begin.size() ) {
        return;
    }
    auto const index = indexAfter( dash, std::string( begin ) );
    auto const series = series_.find( std::string( begin.substr( 0, dash ) ) );
    if ( !index || series == series_.end() ) {
        return;
    }
    U64 const count = scenario_.hosts[series->second].count;
    U64 first = *index;
    for ( U64 width = 1; first < count; width *= base ) {
        auto const hosts = static_cast<U32>( std::min( width, count - first ) );
        addMatching( pattern, part( series->second, static_cast<U32>( first ), hosts ), ranges );
        first = ( first + 1 ) * base - 1;
    }
}

/// Adds those hosts of the range that match; all their names begin as the pattern does. The digits in which
/// it ends leave one number of ten, of a hundred …
void
HostFinder::addMatching( std::string const& pattern, HostRange const& range, Ranges& ranges ) {
    if ( isOpen( pattern ) ) {
        ranges.push_back( range );
        return;
    }
    HostSpec const& spec = scenario_.hosts[range.entry];
    auto const [last, step] = spec.count == 1 ? LastDigits() : lastDigits( endOf( pattern ) );
    U64 const end = U64{ range.first } + range.count;
    U64 index = range.first + ( last + step - ( range.first + 1 ) % step ) % step;
    for ( bool goesOn = spend( 1 ); goesOn && index < end; index += step, goesOn = spend( 1 ) ) {
        auto const host = static_cast<U32>( index );
        if ( fnmatch( pattern.c_str(), spec.hostName( host ).c_str(), 0 ) == 0 ) {
            append( part( range.entry, host, 1 ), ranges );
        }
    }
}

HostRange
HostFinder::part( U32 entry, U32 first, U32 count ) const {
    return { entry, first, count, numbers_[entry] + first };
}

HostRange
HostFinder::wholeEntry( U32 entry ) const {
    return part( entry, 0, scenario_.hosts[entry].count );
}

/// False, with nothing left, where the steps do not suffice.
bool
HostFinder::spend( U64 steps ) {
    bool const suffices = stepsLeft_ > steps;
    stepsLeft_ = suffices ? stepsLeft_ - steps : 0;
    return suffices;
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
