#include "agent/scenario/WorkProgress.h"

#include <ostream>

#include "agent/output/Grouped.h"

namespace Agent {

namespace {

WorkProgress* inForce = nullptr;

} // namespace

WorkProgress::WorkProgress( std::ostream& out, Kiv::Seconds patience )
    : out_( out ),
      next_(
          Clock::now() +
          std::chrono::duration_cast<Clock::duration>( std::chrono::duration<Kiv::Seconds>( patience ) )
      ) {
    inForce = this;
}

WorkProgress::~WorkProgress() {
    inForce = nullptr;
    if ( drawn_ ) {
        out_ << "\r\x1b[K" << std::flush;
    }
}

void
WorkProgress::tell( char const* what, Kiv::U64 done, Kiv::U64 all ) {
    if ( inForce ) {
        inForce->draw( what, done, all );
    }
}

void
WorkProgress::draw( char const* what, Kiv::U64 done, Kiv::U64 all ) {
    constexpr std::chrono::milliseconds interval( 200 );
    Clock::time_point const now = Clock::now();
    if ( now >= next_ ) {
        next_ = now + interval;
        drawn_ = true;
        out_ << "\rigmphost: " << grouped( done ) << " of " << grouped( all ) << " " << what << "\x1b[K"
             << std::flush;
    }
}

} // namespace Agent
