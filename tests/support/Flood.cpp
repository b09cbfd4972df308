#include "tests/support/Flood.h"

#include <time.h>
#include <unistd.h>

namespace Support {

namespace {

constexpr std::size_t batch = 64;

std::sig_atomic_t volatile stopping = 0;

/// Waits until as many frames as were sent are due.
void
keepPace( double start, std::size_t sent, double perSecond ) {
    double const ahead = start + static_cast<double>( sent ) / perSecond - wallClock();
    if ( ahead > 0.0 ) {
        timespec const pause{ 0, static_cast<long>( ahead * 1e9 ) };
        nanosleep( &pause, nullptr );
    }
}

void
send( PacketEnd end, Bytes const& frame, double perSecond, std::ostream& out ) {
    std::signal( SIGTERM, []( int ) { stopping = 1; } );
    // Beside other tests it is to leave the hosts what processor they need.
    [[maybe_unused]] int const niceness = std::getenv( "IGMPHOST_FAULT_SECONDS" ) ? 0 : nice( 10 );
    std::vector<Bytes> const frames( batch, frame );
    double const start = wallClock();
    std::size_t sent = 0;
    for ( ; stopping == 0; sent += batch ) {
        end.sendAll( frames );
        if ( perSecond != Flood::unlimited ) {
            keepPace( start, sent, perSecond );
        }
    }
    out << sent;
}

} // namespace

Flood::Flood( Namespace const& ns, char const* device, Bytes const& frame, double perSecond )
    : child_( [&]( std::ostream& out ) { send( PacketEnd( ns, device ), frame, perSecond, out ); } ) {}

Zornet::U64
Flood::stop() {
    kill( child_.pid(), SIGTERM );
    return std::stoull( child_.output() );
}

} // namespace Support
