#include "agent/metrics/MetricsExchange.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace Agent {

MetricsExchange::MetricsExchange() : wanted_( eventfd( 0, EFD_CLOEXEC | EFD_NONBLOCK ) ) {
    if ( !wanted_ ) {
        throw std::system_error( errno, std::generic_category(), "eventfd" );
    }
}

MetricsExchange::Families
MetricsExchange::Collect() const {
    constexpr std::chrono::seconds patience( 5 );
    std::unique_lock lock( mutex_ );
    Zornet::U64 const before = answers_;
    eventfd_write( wanted_.get(), 1 );
    bool const answered = answered_.wait_for( lock, patience, [&] { return answers_ != before || ended_; } );
    return answered && !ended_ ? families_ : Families();
}

void
MetricsExchange::wantIsTaken() const {
    eventfd_t wants = 0;
    eventfd_read( wanted_.get(), &wants );
}

void
MetricsExchange::answerIs( Families families ) {
    {
        std::lock_guard const lock( mutex_ );
        families_ = std::move( families );
        ++answers_;
    }
    answered_.notify_all();
}

void
MetricsExchange::end() {
    {
        std::lock_guard const lock( mutex_ );
        ended_ = true;
    }
    answered_.notify_all();
}

} // namespace Agent
