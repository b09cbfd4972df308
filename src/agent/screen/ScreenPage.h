#pragma once

#include <deque>
#include <string>
#include <vector>

#include "agent/output/RunMonitor.h"

namespace Agent {

/// What a live screen of that size shows, line by line; a line is never longer than the screen is wide, and
/// there are never more of them than fit. The last messages stand at the bottom.
std::vector<std::string> screenPage(
    std::string const& title, RunView const& view, std::deque<std::string> const& messages, std::size_t rows,
    std::size_t columns
);

} // namespace Agent
