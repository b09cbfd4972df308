#pragma once

#include <iosfwd>

namespace Agent {

/// Writes every type of the library, in the order of declaration: its attributes with number, kind, type,
/// key, default and flags. The form is Markdown, aligned for a terminal. Makes introspection live.
void writeModel( std::ostream& out );

/// The command `igmphost model`. Returns the exit status.
int model();

} // namespace Agent
