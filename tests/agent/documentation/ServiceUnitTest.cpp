/// The unit that systemd runs is held against how the command ends.

#include <gmock/gmock.h>

#include "agent/command/ExitStatus.h"
#include "tests/agent/documentation/HelpPages.h"

namespace Agent {

namespace {

TEST( ServiceUnit, StartsNothingAgainThatWouldEndTheSame ) {
    EXPECT_THAT(
        sourceFile( "packaging/igmphost@.service.in" ),
        ::testing::HasSubstr(
            "\nRestart=on-failure\n# A scenario with mistakes stays one, and a test that failed has its "
            "answer.\nRestartPreventExitStatus=" +
            std::to_string( exitWrongUsage ) + " " + std::to_string( exitNotMet ) + "\n"
        )
    );
}

} // namespace

} // namespace Agent
