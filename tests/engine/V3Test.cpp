#include "tests/engine/V3Test.h"

#include <algorithm>
#include <sstream>

using Zornet::IpAddr;

SourceNumbers
numbersOf( Igmp::IgmpV3HostGroupSourceList const& list ) {
    SourceNumbers numbers;
    for ( auto const& source : list.sourceIp() ) {
        numbers[textOf( source.key )] = source.value;
    }
    return numbers;
}

std::string
textOf( IpAddr const& addr ) {
    std::ostringstream out;
    out << addr;
    return out.str();
}

namespace {

std::vector<std::string>
split( std::string const& text, std::string const& separator ) {
    std::vector<std::string> parts;
    for ( std::size_t from = 0; from < text.size(); ) {
        std::size_t const to = std::min( text.find( separator, from ), text.size() );
        parts.push_back( text.substr( from, to - from ) );
        from = to + separator.size();
    }
    return parts;
}

std::string
sortedJoin( std::vector<std::string> parts, std::string const& separator ) {
    std::sort( parts.begin(), parts.end() );
    std::string text;
    for ( std::string const& part : parts ) {
        text += ( text.empty() ? "" : separator ) + part;
    }
    return text;
}

} // namespace

std::string
sortedRecords( Support::Bytes const& frame ) {
    static constexpr std::string_view word = "v3report ";
    std::string const text = Support::describe( frame );
    if ( !text.starts_with( word ) ) {
        return text;
    }
    std::vector<std::string> records = split( text.substr( word.size() ), ", " );
    for ( std::string& record : records ) {
        std::size_t const from = record.find( '{' ) + 1;
        std::string const sources = record.substr( from, record.size() - 1 - from );
        record = record.substr( 0, from ) + sortedJoin( split( sources, " " ), " " ) + "}";
    }
    return sortedJoin( records, ", " );
}

void
V3Test::addSources( char const* group, std::vector<char const*> const& sources ) {
    for ( char const* source : sources ) {
        record( group ).sourceIs()->sourceIpIs( IpAddr( source ), 1 );
    }
    raiseAndSettle( group );
}

void
V3Test::removeSources( char const* group, std::vector<char const*> const& sources ) {
    for ( char const* source : sources ) {
        record( group ).source()->sourceIpDel( IpAddr( source ) );
    }
    raiseAndSettle( group );
}

void
V3Test::excludeAll( std::vector<std::string> const& groups ) {
    for ( std::string const& group : groups ) {
        auto const added = host().v3groupIs( IpAddr( group ) );
        added->filterModeIs( Igmp::IgmpV3GroupRecord::exclude );
        raise( *added );
    }
    settle();
}

std::vector<std::string>
V3Test::groupsInOrder( unsigned count ) {
    auto const scratch = Igmp::igmpHostFactory( "scratch" );
    for ( unsigned i = 1; i <= count; ++i ) {
        scratch->v3groupIs( IpAddr::fromHost( IpAddr( "239.1.1.0" ).hostOrder() + i ) );
    }
    std::vector<std::string> groups;
    for ( auto const& record : scratch->v3group() ) {
        groups.push_back( textOf( record.multicastAddr() ) );
    }
    return groups;
}

std::vector<std::string>
V3Test::takeRecords() {
    std::vector<std::string> records;
    for ( auto const& frame : sent() ) {
        records.push_back( sortedRecords( frame.bytes ) );
    }
    sent().clear();
    return records;
}

std::vector<std::size_t>
V3Test::lengths() {
    std::vector<std::size_t> bytes;
    for ( auto const& frame : sent() ) {
        bytes.push_back( frame.bytes.size() );
    }
    return bytes;
}
