#include "bench/rivals/TimerLoad.h"

#include <random>

namespace Bench {

TimerLoad::TimerLoad( std::size_t timers, unsigned seed ) {
    std::mt19937 random( seed );
    std::uniform_real_distribution<double> span( 0.0, horizon );
    for ( std::size_t i = 0; i < timers; ++i ) {
        first.push_back( span( random ) );
        second.push_back( span( random ) );
    }
}

} // namespace Bench
