#pragma once

#include <set>
#include <string>
#include <vector>

namespace Agent {

/// What the help text of the command, or of one of its verbs, offers.
struct HelpPage {
    std::string words; ///< the command line up to here: "igmphost", "igmphost run", …
    std::set<std::string> verbs;
    std::set<std::string> options; ///< the long ones, with their dashes
};

/// The pages of the real command and of all its verbs, however deep.
std::vector<HelpPage> helpPages();

/// A file of the source tree, whole.
std::string sourceFile( std::string const& path );

} // namespace Agent
