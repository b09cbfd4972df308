#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/Figures.h"

namespace Bench {

/// The same work for every way to hold timers: arm all, rearm all, cancel every other one, and let the clock
/// go on in steps of a millisecond, as a busy loop does, until the rest have fired.
struct TimerLoad {
    static constexpr double horizon = 100.0; ///< seconds
    static constexpr double step = 0.001;

    TimerLoad( std::size_t timers, unsigned seed );

    std::size_t timers() const { return first.size(); }
    /// Arming and rearming of all, cancelling of half, firing of half.
    std::size_t operations() const { return 3 * timers(); }
    /// Drives the rival, checks that half the timers fired, and returns nanoseconds of processor time per
    /// operation.
    template <class Arm, class Cancel, class Advance>
    double nanosecondsPerOperation(
        char const* rival, Arm const& arm, Cancel const& cancel, Advance const& advance,
        std::size_t const& fired
    ) const {
        double const seconds = processorSecondsOf( [&] {
            for ( std::size_t i = 0; i < timers(); ++i ) {
                arm( i, first[i] );
            }
            for ( std::size_t i = 0; i < timers(); ++i ) {
                arm( i, second[i] );
            }
            for ( std::size_t i = 0; i < timers(); i += 2 ) {
                cancel( i );
            }
            for ( double now = 0.0; now < horizon + 2 * step; now += step ) {
                advance( now );
            }
        } );
        if ( fired != timers() / 2 ) {
            throw std::runtime_error( std::string( rival ) + " fired " + std::to_string( fired ) );
        }
        return seconds * 1e9 / static_cast<double>( operations() );
    }

    std::vector<double> first; ///< deadlines
    std::vector<double> second;
};

/// std::multimap with an iterator kept for each timer.
double multimapTimers( TimerLoad const& load );
/// std::priority_queue in which a cancelled entry stays until its time has come.
double priorityQueueTimers( TimerLoad const& load );
/// When timers fire: each when its time has come, or all once the last is due, which leaves a reactor nothing
/// to wait for.
enum class Firing { inTime, allAtOnce };
/// Asio's steady_timer, each allocated by itself as the hosts' timers are.
double asioTimers( TimerLoad const& load, Firing firing );

} // namespace Bench
