#include "agent/control/ControlListener.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "agent/control/ControlTrace.h"
#include "agent/control/SocketPath.h"

namespace Agent {

namespace {

[[noreturn]] void
throwCannot( std::string const& path, std::string const& reason ) {
    throw std::runtime_error( "cannot listen at " + path + ": " + reason );
}

Zornet::FileDescriptor
newReserve() {
    return Zornet::FileDescriptor( open( "/dev/null", O_RDONLY | O_CLOEXEC ) );
}

} // namespace

ControlListener::ControlListener( std::string const& path, Taken taken )
    : path_( path ), taken_( std::move( taken ) ), socket_( newStreamSocket() ), reserve_( newReserve() ) {
    removeStale();
    listen();
    Kiv::defaultActivity()->activitySm().ioHandlerIs( socket_.get(), EPOLLIN, this );
}

ControlListener::~ControlListener() {
    Kiv::defaultActivity()->activitySm().ioHandlerDel( socket_.get() );
    struct stat present {};
    bool const isOurs = lstat( path_.c_str(), &present ) == 0 && present.st_dev == made_.st_dev &&
                        present.st_ino == made_.st_ino;
    if ( isOurs ) {
        unlink( path_.c_str() );
    }
}

/// Only a socket that refuses to be connected to has nobody behind it.
void
ControlListener::removeStale() {
    struct stat present {};
    sockaddr_un const address = socketAddress( path_ );
    if ( lstat( path_.c_str(), &present ) != 0 ) {
        return;
    }
    if ( std::string const other = noSocketAt( path_ ); !other.empty() ) {
        throwCannot( path_, "there is " + other + ", which is left alone" );
    }
    int const error = connectTo( newStreamSocket(), address );
    if ( error == 0 || error == EAGAIN ) {
        throwCannot( path_, "an agent that is running listens there" );
    }
    if ( error != ECONNREFUSED ) {
        throwCannot( path_, "what is there cannot be connected to: " + std::string( strerror( error ) ) );
    }
    if ( unlink( path_.c_str() ) != 0 ) {
        throwCannot(
            path_, "a socket that was left there cannot be removed: " + std::string( strerror( errno ) )
        );
    }
    hasReplaced_ = true;
}

void
ControlListener::listen() {
    constexpr int backlog = 512;
    sockaddr_un const address = socketAddress( path_ );
    fchmod( socket_.get(), S_IRUSR | S_IWUSR ); // what is bound has these rights from its first moment
    bool const bound =
        bind( socket_.get(), reinterpret_cast<sockaddr const*>( &address ), sizeof address ) == 0;
    if ( !bound || ::listen( socket_.get(), backlog ) != 0 || lstat( path_.c_str(), &made_ ) != 0 ) {
        throwCannot( path_, strerror( errno ) );
    }
}

void
ControlListener::handleIo( Kiv::U32 ) {
    Zornet::FileDescriptor peer( accept4( socket_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC ) );
    if ( peer ) {
        taken_( std::move( peer ) );
    } else if ( errno == EMFILE || errno == ENFILE ) {
        refuseForWantOfDescriptors();
    }
}

void
ControlListener::refuseForWantOfDescriptors() {
    KIV_TRACE( controlTrace, controlTrouble ) << "a peer is refused: no file descriptor is left";
    reserve_ = Zornet::FileDescriptor();
    Zornet::FileDescriptor( accept4( socket_.get(), nullptr, nullptr, SOCK_CLOEXEC ) );
    reserve_ = newReserve();
}

} // namespace Agent
