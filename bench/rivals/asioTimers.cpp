#include <asio.hpp>
#include <memory>
#include <thread>

#include "bench/rivals/TimerLoad.h"

namespace {

using Moment = std::chrono::steady_clock::time_point;
using Span = std::chrono::duration<double>;

constexpr double pressed = 2.0; ///< seconds of the kernel's clock, for the horizon
constexpr double lead = 1.5;    ///< seconds until the horizon begins: time enough to arm, rearm and cancel

/// A clock that goes over the horizon of the load, within `pressed` seconds of the kernel's. Asio's reactor
/// waits in the kernel, which knows no other clock than its own.
class PressedClock {
  public:
    Moment at( double time ) const {
        return begin_ + std::chrono::duration_cast<Moment::duration>(
                            Span( time * pressed / Bench::TimerLoad::horizon )
                        );
    }
    /// Keeps the processor until that time. A sleep would cost more than the span slept.
    void waitUntil( double time ) {
        Moment const from = std::chrono::steady_clock::now();
        Moment till = from;
        while ( till < at( time ) ) {
            till = std::chrono::steady_clock::now();
        }
        waited_ += Span( till - from ).count();
    }
    /// Seconds of processor time that are not the timers'.
    double waited() const { return waited_; }

  private:
    Moment begin_ =
        std::chrono::steady_clock::now() + std::chrono::duration_cast<Moment::duration>( Span( lead ) );
    double waited_ = 0.0;
};

} // namespace

double
Bench::asioTimers( TimerLoad const& load, Firing firing ) {
    asio::io_context context;
    std::size_t fired = 0;
    std::vector<std::unique_ptr<asio::steady_timer>> all;
    for ( std::size_t i = 0; i < load.timers(); ++i ) {
        all.push_back( std::make_unique<asio::steady_timer>( context ) );
    }
    PressedClock clock;
    auto const arm = [&]( std::size_t timer, double deadline ) {
        all[timer]->expires_at( clock.at( deadline ) );
        all[timer]->async_wait( [&fired]( asio::error_code const& error ) { fired += error ? 0 : 1; } );
    };
    auto const cancel = [&]( std::size_t timer ) { all[timer]->cancel(); };
    bool begun = false;
    auto const advance = [&]( double now ) {
        if ( begun && firing == Firing::allAtOnce ) {
            return;
        }
        if ( !begun ) {
            begun = true;
            context.poll(); // tells of what was cancelled
            std::this_thread::sleep_until( clock.at( firing == Firing::inTime ? now : TimerLoad::horizon ) );
        }
        clock.waitUntil( now );
        context.restart();
        context.poll();
    };
    double const perOperation = load.nanosecondsPerOperation( "Asio", arm, cancel, advance, fired );
    return perOperation - clock.waited() * 1e9 / static_cast<double>( load.operations() );
}
