#pragma once

namespace Agent {

/// How the command ends, as a shell sees it.
enum ExitStatus {
    exitDone = 0,
    exitFailed = 1,     ///< something went wrong while it ran, or two sides do not agree
    exitWrongUsage = 2, ///< arguments or scenario; nothing was begun
    exitNotMet = 3,     ///< what the scenario expects did not come true
};

} // namespace Agent
