#include <queue>

#include "bench/rivals/TimerLoad.h"

double
Bench::priorityQueueTimers( TimerLoad const& load ) {
    struct Entry {
        double deadline;
        std::size_t timer;
        unsigned generation;
        bool operator>( Entry const& other ) const { return deadline > other.deadline; }
    };
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
    std::vector<unsigned> generations( load.timers(), 0 );
    std::size_t fired = 0;
    auto const cancel = [&]( std::size_t timer ) { ++generations[timer]; };
    auto const arm = [&]( std::size_t timer, double deadline ) {
        queue.push( { deadline, timer, ++generations[timer] } );
    };
    auto const advance = [&]( double now ) {
        for ( ; !queue.empty() && queue.top().deadline <= now; queue.pop() ) {
            fired += queue.top().generation == generations[queue.top().timer] ? 1 : 0;
        }
    };
    return load.nanosecondsPerOperation( "priority_queue", arm, cancel, advance, fired );
}
