#pragma once

#include <iosfwd>
#include <string>

#include "platform/kiv/Types.h"

namespace Agent {

/// Shows how far a span of time has passed: a bar that moves on a terminal, elsewhere a line for each tenth.
class Progress {
  public:
    /// `what` follows the numbers, such as " simulated".
    Progress( std::ostream& out, bool terminal, Kiv::Seconds span, std::string what );
    /// Leaves the bar and its line.
    ~Progress();
    Progress( Progress const& ) = delete;
    Progress& operator=( Progress const& ) = delete;

    void passedIs( Kiv::Seconds passed );

  private:
    void draw( double share, Kiv::Seconds passed );

    std::ostream& out_;
    bool terminal_;
    Kiv::Seconds span_;
    std::string what_;
    int tenthsTold_ = 0;
    bool drawn_ = false;
};

} // namespace Agent
