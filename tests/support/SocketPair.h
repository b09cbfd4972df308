#pragma once

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/kiv/Types.h"

namespace Support {

/// Two connected stream sockets that do not block. Each is closed with the pair unless it was handed over.
class SocketPair {
  public:
    SocketPair() {
        if ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends_ ) != 0 ) {
            throw std::runtime_error( "socketpair" );
        }
    }
    SocketPair( SocketPair const& ) = delete;
    SocketPair& operator=( SocketPair const& ) = delete;
    ~SocketPair() {
        closeEnd( 0 );
        closeEnd( 1 );
    }

    int end( int which ) const { return ends_[which]; }
    int handOver( int which ) { return std::exchange( ends_[which], -1 ); }
    void closeEnd( int which ) {
        if ( ends_[which] >= 0 ) {
            close( std::exchange( ends_[which], -1 ) );
        }
    }
    /// Everything that has arrived at an end.
    std::vector<Kiv::U8> take( int which ) const {
        std::vector<Kiv::U8> all;
        Kiv::U8 buffer[65536];
        for ( ssize_t got; ( got = recv( ends_[which], buffer, sizeof( buffer ), MSG_DONTWAIT ) ) > 0; ) {
            all.insert( all.end(), buffer, buffer + got );
        }
        return all;
    }
    /// Returns how much was taken.
    std::size_t put( int which, std::vector<Kiv::U8> const& bytes, std::size_t from = 0 ) const {
        ssize_t const taken =
            send( ends_[which], bytes.data() + from, bytes.size() - from, MSG_DONTWAIT | MSG_NOSIGNAL );
        return taken < 0 ? 0 : static_cast<std::size_t>( taken );
    }

  private:
    int ends_[2];
};

} // namespace Support
