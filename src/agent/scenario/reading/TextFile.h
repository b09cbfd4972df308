#pragma once

#include <string>

namespace Agent {

/// The whole text of a file. Raises std::system_error where there is none, for a folder, and for more than a
/// scenario can need, such as a device that never ends.
std::string textOfFile( std::string const& path );

} // namespace Agent
