#include "agent/run/SignalWatch.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <system_error>

namespace Agent {

SignalWatch::SignalWatch( std::vector<int> const& signals, std::function<void( int )> handler )
    : handler_( std::move( handler ) ) {
    sigset_t watched;
    sigemptyset( &watched );
    for ( int const signal : signals ) {
        sigaddset( &watched, signal );
    }
    pthread_sigmask( SIG_BLOCK, &watched, &outerMask_ );
    descriptor_ = Zornet::FileDescriptor( signalfd( -1, &watched, SFD_NONBLOCK | SFD_CLOEXEC ) );
    if ( !descriptor_ ) {
        throw std::system_error( errno, std::generic_category(), "signalfd" );
    }
    Kiv::defaultActivity()->activitySm().ioHandlerIs( descriptor_.get(), EPOLLIN, this );
}

SignalWatch::~SignalWatch() {
    Kiv::defaultActivity()->activitySm().ioHandlerDel( descriptor_.get() );
    pthread_sigmask( SIG_SETMASK, &outerMask_, nullptr );
}

void
SignalWatch::handleIo( Kiv::U32 ) {
    signalfd_siginfo info;
    while ( read( descriptor_.get(), &info, sizeof info ) == static_cast<ssize_t>( sizeof info ) ) {
        handler_( static_cast<int>( info.ssi_signo ) );
    }
}

} // namespace Agent
