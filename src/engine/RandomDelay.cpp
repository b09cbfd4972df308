#include "engine/RandomDelay.h"

#include <cstdlib>

#include "engine/Trace.h"
#include "platform/kiv/Assert.h"
#include "platform/kiv/Clock.h"

namespace Igmp {

Kiv::Seconds
randomDelay( Kiv::Seconds maxSecs ) {
    double r = drand48();
    Kiv::invariant( r <= 1.0, "r <= 1.0" );
    if ( r < 0.1 ) {
        double const orig = r;
        r += 0.1;
        KIV_TRACE( igmpHostTrace, traceDetail )
            << "randomDelay: making r bigger.  orig: " << orig << " new " << r;
    }
    Kiv::Seconds const delay = r * maxSecs;
    KIV_TRACE( igmpHostTrace, traceDetail ) << "randomDelay: maxSecs " << maxSecs << " delay " << delay;
    return delay;
}

void
seedRandomDelays() {
    srand48( static_cast<long>( Kiv::now() ) );
}

} // namespace Igmp
