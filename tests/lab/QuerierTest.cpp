#include "tests/lab/QuerierTest.h"

#include <cstdio>

#include "lab/IgmpFrame.h"

namespace Lab {

namespace {

std::string
numbers( std::span<IpAddr const> sources ) {
    std::string text;
    for ( IpAddr const& source : sources ) {
        text += ( text.empty() ? "" : " " ) + std::to_string( source.hostOrder() & 0xffff );
    }
    return text;
}

std::string
queryText( IgmpFrame const& frame ) {
    if ( frame.v12().groupAddress().isZero() ) {
        return "Q";
    }
    std::string text = "Q(G";
    bool const isV3 = frame.igmpBytes() >= 12;
    if ( isV3 && frame.v3Query().numSources() != 0 ) {
        text += "," + numbers( { &frame.v3Query().source( 0 ), frame.v3Query().numSources() } );
    }
    return text + ( isV3 && frame.v3Query().suppressRouterProcessing() ? ") S" : ")" );
}

} // namespace

void
QuerierTest::start( QuerierConfig const& config ) {
    querier = std::make_unique<Querier>( config, pam, wheel() );
    querier->enabledIs( true );
    mark();
}

void
QuerierTest::startVersion( U8 version ) {
    QuerierConfig config;
    config.version = version;
    start( config );
}

std::vector<IpAddr>
QuerierTest::sources( std::vector<int> const& numbers ) {
    std::vector<IpAddr> addresses;
    for ( int number : numbers ) {
        addresses.push_back( source( number ) );
    }
    return addresses;
}

void
QuerierTest::hear( Record type, std::vector<int> const& numbers, IpAddr const& from ) {
    hear( v3Report( from, { { type, G, sources( numbers ) } } ) );
}

void
QuerierTest::mark() {
    mark_ = clock().now();
    pam->sent.clear();
}

std::vector<std::string>
QuerierTest::sent() const {
    std::vector<std::string> texts;
    for ( ScriptedPam::Sent const& sent : pam->sent ) {
        char time[32];
        std::snprintf( time, sizeof time, "%.3f ", sent.time - mark_ );
        texts.push_back( time + queryText( IgmpFrame( sent.frame, querier->config().vlanId ) ) );
    }
    return texts;
}

std::string
QuerierTest::state( IpAddr const& group ) const {
    QuerierGroup const* const state = querier->group( group );
    if ( !state ) {
        return "none";
    }
    std::string const requested = numbers( state->requestedSources() );
    if ( state->filterMode() == FilterMode::include ) {
        return "INCLUDE (" + requested + ")";
    }
    return "EXCLUDE (" + requested + ", " + numbers( state->excludedSources() ) + ")";
}

} // namespace Lab
