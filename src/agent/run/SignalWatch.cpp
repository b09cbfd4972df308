#include "agent/run/SignalWatch.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <system_error>

#include "agent/run/PromptEnd.h"

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
    while ( take() != 0 ) { // one that came since the last turn would end the process
    }
    pthread_sigmask( SIG_SETMASK, &outerMask_, nullptr );
}

void
SignalWatch::handleIo( Kiv::U32 ) {
    while ( int const signal = take() ) {
        handler_( signal );
    }
}

/// One of those that wait; 0 where none does.
int
SignalWatch::take() {
    signalfd_siginfo info;
    PromptEnd::forgetSeen();
    ssize_t const bytes = read( descriptor_.get(), &info, sizeof info );
    PromptEnd::forgetSeen(); // a look may have come before the signal was taken
    return bytes == static_cast<ssize_t>( sizeof info ) ? static_cast<int>( info.ssi_signo ) : 0;
}

} // namespace Agent
