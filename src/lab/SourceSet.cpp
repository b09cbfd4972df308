#include "lab/SourceSet.h"

#include <algorithm>
#include <iterator>
#include <ostream>

#include "platform/kiv/Assert.h"

namespace Lab {

SourceSet::SourceSet( std::initializer_list<Zornet::IpAddr> sources )
    : SourceSet( std::span( sources.begin(), sources.size() ) ) {}

SourceSet::SourceSet( std::span<Zornet::IpAddr const> sources ) : sources_( sources.begin(), sources.end() ) {
    std::sort( sources_.begin(), sources_.end() );
    sources_.erase( std::unique( sources_.begin(), sources_.end() ), sources_.end() );
}

bool
SourceSet::contains( Zornet::IpAddr const& source ) const {
    return std::binary_search( sources_.begin(), sources_.end(), source );
}

void
SourceSet::append( Zornet::IpAddr const& source ) {
    Kiv::invariant( sources_.empty() || sources_.back() < source, "sources ascend" );
    sources_.push_back( source );
}

SourceSet
operator+( SourceSet const& a, SourceSet const& b ) {
    SourceSet result;
    std::set_union( a.begin(), a.end(), b.begin(), b.end(), std::back_inserter( result.sources_ ) );
    return result;
}

SourceSet
operator*( SourceSet const& a, SourceSet const& b ) {
    SourceSet result;
    std::set_intersection( a.begin(), a.end(), b.begin(), b.end(), std::back_inserter( result.sources_ ) );
    return result;
}

SourceSet
operator-( SourceSet const& a, SourceSet const& b ) {
    SourceSet result;
    std::set_difference( a.begin(), a.end(), b.begin(), b.end(), std::back_inserter( result.sources_ ) );
    return result;
}

std::ostream&
operator<<( std::ostream& out, SourceSet const& sources ) {
    char const* before = "{";
    for ( Zornet::IpAddr const& source : sources ) {
        out << before << source;
        before = ", ";
    }
    return out << ( sources.empty() ? "{}" : "}" );
}

} // namespace Lab
