#include "platform/zornet/device/SendingThread.h"

#include <pthread.h>
#include <sched.h>

#include <csignal>
#include <system_error>

namespace Zornet {

namespace {

bool
hasProcessors() {
    cpu_set_t processors;
    return sched_getaffinity( 0, sizeof processors, &processors ) == 0 && CPU_COUNT( &processors ) > 1;
}

/// Blocks all signals for its life: they are for the embedder's threads, not for one started meanwhile.
class NoSignals {
  public:
    NoSignals() {
        sigset_t all;
        sigfillset( &all );
        pthread_sigmask( SIG_SETMASK, &all, &outer_ );
    }
    ~NoSignals() { pthread_sigmask( SIG_SETMASK, &outer_, nullptr ); }
    NoSignals( NoSignals const& ) = delete;
    NoSignals& operator=( NoSignals const& ) = delete;

  private:
    sigset_t outer_{};
};

} // namespace

std::unique_ptr<SendingThread>
SendingThread::make( Kiv::Ptr<PacketSocket> const& socket ) {
    if ( !hasProcessors() ) {
        return nullptr;
    }
    std::unique_ptr<SendingThread> made( new SendingThread( socket ) );
    NoSignals const scope;
    try {
        made->thread_ = std::thread( [self = made.get()] { self->run(); } );
    } catch ( std::system_error const& ) {
        return nullptr;
    }
    return made;
}

SendingThread::~SendingThread() {
    if ( thread_.joinable() ) {
        ending_ = true;
        give();
        thread_.join();
    }
}

void
SendingThread::give() {
    given_.fetch_add( 1, std::memory_order_release );
    given_.notify_one();
}

Burst const&
SendingThread::tried() const {
    tried_.wait( takenBack_, std::memory_order_acquire );
    return bursts_[takenBack_ % depth];
}

void
SendingThread::takeBack() {
    ++takenBack_;
    if ( underWay() == 0 ) {
        refused_ = false;
    }
}

void
SendingThread::run() {
    for ( unsigned done = 0;; ) {
        given_.wait( done, std::memory_order_acquire );
        if ( ending_ ) {
            return;
        }
        Burst& burst = bursts_[done % depth];
        if ( !refused_ ) {
            burst.send( *socket_ );
            refused_ = burst.refusal() != 0;
        }
        tried_.store( ++done, std::memory_order_release );
        tried_.notify_one();
    }
}

} // namespace Zornet
