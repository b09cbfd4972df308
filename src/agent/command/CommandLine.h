#pragma once

namespace Agent {

/// The whole command: reads the arguments, does what they ask for and returns the exit status.
int commandLine( int argc, char** argv );

} // namespace Agent
