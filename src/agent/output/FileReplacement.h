#pragma once

#include <functional>
#include <iosfwd>
#include <string>

namespace Agent {

/// Gives the file new contents in one step: a reader finds the old ones or the new ones, whole. What is not a
/// regular file, such as a terminal or a pipe, is written to as it is. Raises std::system_error where the
/// contents cannot be written; the old ones then stand. "-" is the standard output.
void replaceFile( std::string const& path, std::function<void( std::ostream& )> const& write );

/// Raises std::system_error where replaceFile() could not even begin.
void checkReplaceable( std::string const& path );

} // namespace Agent
