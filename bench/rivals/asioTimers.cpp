#include <asio.hpp>
#include <memory>

#include "bench/rivals/TimerLoad.h"

/// Asio's reactor waits in the kernel, which knows no other clock than its own, so the horizon is pressed
/// into one second of it. What is overdue fires in one go, which does Asio no harm; processor time alone
/// counts.
double
Bench::asioTimers( TimerLoad const& load ) {
    asio::io_context context;
    std::size_t fired = 0;
    std::vector<std::unique_ptr<asio::steady_timer>> all;
    for ( std::size_t i = 0; i < load.timers(); ++i ) {
        all.push_back( std::make_unique<asio::steady_timer>( context ) );
    }
    auto const start = std::chrono::steady_clock::now();
    auto const arm = [&]( std::size_t timer, double deadline ) {
        std::chrono::duration<double> const span( deadline / TimerLoad::horizon );
        all[timer]->expires_at( start + std::chrono::duration_cast<std::chrono::nanoseconds>( span ) );
        all[timer]->async_wait( [&fired]( asio::error_code const& error ) { fired += error ? 0 : 1; } );
    };
    auto const cancel = [&]( std::size_t timer ) { all[timer]->cancel(); };
    auto const advance = [&]( double now ) {
        if ( now >= TimerLoad::horizon + TimerLoad::step ) {
            context.run();
        }
    };
    return load.nanosecondsPerOperation( "Asio", arm, cancel, advance, fired );
}
