#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/kiv/Types.h"

namespace Agent {

/// What became of one expectation.
struct ExpectationOutcome {
    std::string name;                    ///< as in the scenario, or where it stands
    std::string place;                   ///< the file that it stands in
    Kiv::Seconds time = 0.0;             ///< when it was decided, in seconds after the start
    std::vector<std::string> shortfalls; ///< empty where it was met
};

/// Writes the outcomes as CI systems read them: JUnit XML, a test case each. Any text is made well-formed:
/// what XML cannot hold becomes U+FFFD.
void writeJUnit( std::ostream& out, std::vector<ExpectationOutcome> const& outcomes, Kiv::Seconds duration );

} // namespace Agent
