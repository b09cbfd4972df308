#include "lab/Impairment.h"

#include "platform/kiv/Exception.h"

namespace Lab {

void
Impairment::check() const {
    for ( double const probability : { loss, duplication, reordering } ) {
        if ( !( probability >= 0.0 && probability <= 1.0 ) ) {
            Kiv::throwRangeException( "Impairment: a probability < 0 or > 1 is not allowed" );
        }
    }
    for ( Kiv::Seconds const span : { delay, jitter, reorderingDelay } ) {
        if ( !( span >= 0.0 && Kiv::isFinite( span ) ) ) {
            Kiv::throwRangeException( "Impairment: a time must be finite and not below 0" );
        }
    }
}

} // namespace Lab
