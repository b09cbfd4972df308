#pragma once

#include <chrono>
#include <iosfwd>

#include "platform/kiv/Types.h"

namespace Agent {

/// Tells, on a line of a terminal that it draws anew and takes away at its end, how far those who work on a
/// scenario have come, once that has taken a while. It is told of by them as long as it lives; there is one
/// at a time.
class WorkProgress {
  public:
    explicit WorkProgress( std::ostream& out, Kiv::Seconds patience = 1.5 );
    ~WorkProgress();
    WorkProgress( WorkProgress const& ) = delete;
    WorkProgress& operator=( WorkProgress const& ) = delete;

    /// For those who work: so many of all `what` are done. Does nothing where nobody wants to know.
    static void tell( char const* what, Kiv::U64 done, Kiv::U64 all );

  private:
    using Clock = std::chrono::steady_clock;

    void draw( char const* what, Kiv::U64 done, Kiv::U64 all );

    std::ostream& out_;
    Clock::time_point next_; ///< when it is drawn next
    bool drawn_ = false;
};

} // namespace Agent
