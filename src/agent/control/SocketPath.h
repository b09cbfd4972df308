#pragma once

#include <sys/socket.h>
#include <sys/types.h>
#include <sys/un.h>

#include <string>

#include "platform/zornet/device/FileDescriptor.h"

namespace Agent {

/// The address of a Unix-domain socket. Raises std::invalid_argument for a path that no such address holds.
sockaddr_un socketAddress( std::string const& path );

/// A stream socket that does not block. Raises std::system_error.
Zornet::FileDescriptor newStreamSocket();
/// Connects to the socket at the address; 0, or the number of the error.
int connectTo( Zornet::FileDescriptor const& socket, sockaddr_un const& address );

/// Who is at the other end of a connected Unix-domain socket.
ucred peerOf( Zornet::FileDescriptor const& socket );
/// Whether that user may control a process of user `owner`: the user itself, and root.
bool mayControl( uid_t user, uid_t owner );
/// "root", or "user NAME", or "user 1234" where the number has no name.
std::string userText( uid_t user );

/// What is at a path in place of a socket, such as "a regular file"; empty for a socket and for nothing.
std::string noSocketAt( std::string const& path );

} // namespace Agent
