#include "agent/timeline/TimeText.h"

namespace Agent {

Kiv::Seconds
notNegativeSeconds( std::string_view text ) {
    try {
        Kiv::Seconds const seconds = Kiv::ValueTraits<double>::parse( text );
        if ( seconds >= 0.0 && Kiv::isFinite( seconds ) ) {
            return seconds;
        }
    } catch ( Kiv::RangeException const& ) {
    }
    Kiv::throwExpected( "a number of seconds, 0 or above", text );
}

} // namespace Agent
