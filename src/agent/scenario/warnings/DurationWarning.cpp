#include "agent/scenario/warnings/DurationWarning.h"

namespace Agent {

void
warnOfTimeBehindEnd(
    Scenario const& scenario, Kiv::Seconds time, Position const& at, Diagnostics& warnings
) {
    if ( scenario.duration && time > *scenario.duration ) {
        auto const textOf = &Kiv::ValueTraits<double>::format;
        warnings.add(
            at, "at: " + textOf( time ) + " s does not come; the duration is " +
                    textOf( *scenario.duration ) + " s"
        );
    }
}

} // namespace Agent
