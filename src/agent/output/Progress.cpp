#include "agent/output/Progress.h"

#include <algorithm>
#include <ostream>

namespace Agent {

Progress::Progress( std::ostream& out, bool terminal, Kiv::Seconds span, std::string what )
    : out_( out ), terminal_( terminal ), span_( span ), what_( std::move( what ) ) {}

Progress::~Progress() {
    if ( drawn_ ) {
        out_ << std::endl;
    }
}

void
Progress::passedIs( Kiv::Seconds passed ) {
    double const share = std::min( passed / span_, 1.0 );
    if ( terminal_ ) {
        draw( share, passed );
        return;
    }
    constexpr double rounding = 1e-9;
    int const tenths = static_cast<int>( share * 10.0 + rounding );
    if ( tenths > tenthsTold_ ) {
        tenthsTold_ = tenths;
        out_ << passed << " of " << span_ << " s" << what_ << std::endl;
    }
}

void
Progress::draw( double share, Kiv::Seconds passed ) {
    constexpr int width = 40;
    int const filled = static_cast<int>( share * width );
    out_ << "\r[" << std::string( static_cast<std::size_t>( filled ), '#' )
         << std::string( static_cast<std::size_t>( width - filled ), '.' ) << "] "
         << static_cast<int>( share * 100.0 ) << " %  " << passed << " of " << span_ << " s" << what_
         << "\x1b[K" << std::flush;
    drawn_ = true;
}

} // namespace Agent
