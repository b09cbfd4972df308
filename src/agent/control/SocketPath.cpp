#include "agent/control/SocketPath.h"

#include <pwd.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace Agent {

sockaddr_un
socketAddress( std::string const& path ) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::size_t const most = sizeof address.sun_path - 1;
    if ( path.empty() ) {
        throw std::invalid_argument( "expected the path of a socket, found ''" );
    }
    if ( path.size() > most ) {
        throw std::invalid_argument(
            "the path of a socket has at most " + std::to_string( most ) + " bytes, found " +
            std::to_string( path.size() ) + ": " + path
        );
    }
    std::copy( path.begin(), path.end(), address.sun_path );
    return address;
}

Zornet::FileDescriptor
newStreamSocket() {
    Zornet::FileDescriptor descriptor( socket( AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0 ) );
    if ( !descriptor ) {
        throw std::system_error( errno, std::generic_category(), "socket" );
    }
    return descriptor;
}

int
connectTo( Zornet::FileDescriptor const& socket, sockaddr_un const& address ) {
    auto const* const plain = reinterpret_cast<sockaddr const*>( &address );
    return connect( socket.get(), plain, sizeof address ) == 0 ? 0 : errno;
}

ucred
peerOf( Zornet::FileDescriptor const& socket ) {
    ucred peer{ 0, static_cast<uid_t>( -1 ), static_cast<gid_t>( -1 ) };
    socklen_t bytes = sizeof peer;
    getsockopt( socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &bytes );
    return peer;
}

bool
mayControl( uid_t user, uid_t owner ) {
    return user == 0 || user == owner;
}

std::string
userText( uid_t user ) {
    if ( user == 0 ) {
        return "root";
    }
    passwd const* const entry = getpwuid( user );
    return "user " + ( entry ? std::string( entry->pw_name ) : std::to_string( user ) );
}

std::string
noSocketAt( std::string const& path ) {
    struct stat status {};
    if ( stat( path.c_str(), &status ) != 0 || S_ISSOCK( status.st_mode ) ) {
        return {};
    }
    return S_ISREG( status.st_mode )    ? "a regular file"
           : S_ISDIR( status.st_mode )  ? "a directory"
           : S_ISFIFO( status.st_mode ) ? "a pipe"
                                        : "a device";
}

} // namespace Agent
