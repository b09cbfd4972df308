#pragma once

#include <deque>
#include <string>
#include <vector>

#include "agent/output/RunMonitor.h"

namespace Agent {

struct ScreenSize {
    std::size_t rows;
    std::size_t columns;
};

// What a live screen shows, line by line; a line is never longer than the screen is wide, and there are never
// more of them than fit. The last messages stand at the bottom.

/// Of a run.
std::vector<std::string> screenPage(
    std::string const& title, RunView const& view, std::deque<std::string> const& messages,
    ScreenSize const& size
);
/// Of hosts that are being brought up.
std::vector<std::string> startUpPage(
    std::string const& title, StartUpProgress const& progress, std::deque<std::string> const& messages,
    ScreenSize const& size
);

} // namespace Agent
