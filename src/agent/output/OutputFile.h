#pragma once

#include <string>

#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

/// Opens a file that the user has named, empty, for writing. A process of root follows no link that the path
/// ends in: in a folder that others may write to, one might lead to any file of the system. None, with errno
/// set, where that fails; it is ELOOP for such a link.
Zornet::FileDescriptor outputFile( std::string const& path );

/// The same for a file that must not exist, for whoever asks.
Zornet::FileDescriptor newOutputFile( std::string const& path );

/// Whether links are followed.
bool followsLinks();

/// Raises std::system_error that says which file cannot be written, and why.
[[noreturn]] void throwCannotWrite( std::string const& path, int error );

} // namespace Agent
