#pragma once

#include <string>

namespace Support {

/// The command that was built with the tests.
std::string agentBinary();
/// The project's own folder.
std::string sourceFolder();

} // namespace Support
