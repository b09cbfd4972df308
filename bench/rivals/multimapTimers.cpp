#include <map>

#include "bench/rivals/TimerLoad.h"

double
Bench::multimapTimers( TimerLoad const& load ) {
    using Queue = std::multimap<double, std::size_t>;
    Queue queue;
    std::vector<Queue::iterator> at( load.timers(), queue.end() );
    std::size_t fired = 0;
    auto const cancel = [&]( std::size_t timer ) {
        if ( at[timer] != queue.end() ) {
            queue.erase( at[timer] );
            at[timer] = queue.end();
        }
    };
    auto const arm = [&]( std::size_t timer, double deadline ) {
        cancel( timer );
        at[timer] = queue.emplace( deadline, timer );
    };
    auto const advance = [&]( double now ) {
        while ( !queue.empty() && queue.begin()->first <= now ) {
            at[queue.begin()->second] = queue.end();
            queue.erase( queue.begin() );
            ++fired;
        }
    };
    return load.nanosecondsPerOperation( "multimap", arm, cancel, advance, fired );
}
