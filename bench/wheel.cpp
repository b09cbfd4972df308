/// A million timers: armed, armed anew, half of them cancelled, the rest fired; beside three usual ways to
/// hold timers.

#include <asio.hpp>
#include <functional>
#include <map>
#include <queue>
#include <random>

#include "bench/support/Figures.h"
#include "platform/kiv/Clock.h"
#include "platform/lumo/TimerWheel.h"

namespace {

constexpr std::size_t timers = 1'000'000;
constexpr std::size_t operations = 3 * timers; // arm and rearm all, cancel half, fire half
constexpr double horizon = 100.0;              // seconds

struct Deadlines {
    std::vector<double> first;
    std::vector<double> second;
};

Deadlines
drawDeadlines( unsigned seed ) {
    std::mt19937 random( seed );
    std::uniform_real_distribution<double> span( 0.0, horizon );
    Deadlines deadlines;
    for ( std::size_t i = 0; i < timers; ++i ) {
        deadlines.first.push_back( span( random ) );
        deadlines.second.push_back( span( random ) );
    }
    return deadlines;
}

void
require( std::size_t fired, char const* what ) {
    if ( fired != timers / 2 ) {
        throw std::runtime_error( std::string( what ) + " fired " + std::to_string( fired ) + " timers" );
    }
}

class CountingTimer : public Lumo::TimerWheel::NotifieeConst {
  public:
    CountingTimer( Kiv::Ptr<Lumo::TimerWheel const> const& wheel, std::size_t& fired )
        : NotifieeConst( wheel ), fired_( fired ) {
        isRegisteredNotifieeIs( true );
    }
    void onTime() override { ++fired_; }

  private:
    std::size_t& fired_;
};

double
ourWheel( Deadlines const& deadlines ) {
    Kiv::SimulatedClock clock( 0.0 );
    Kiv::ClockScope const scope( clock );
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    std::size_t fired = 0;
    std::vector<Kiv::Ptr<CountingTimer>> all;
    for ( std::size_t i = 0; i < timers; ++i ) {
        all.emplace_back( new CountingTimer( wheel, fired ) );
    }
    double const seconds = Bench::secondsOf( [&] {
        for ( std::size_t i = 0; i < timers; ++i ) {
            all[i]->timeMinIs( deadlines.first[i] );
        }
        for ( std::size_t i = 0; i < timers; ++i ) {
            all[i]->timeMinIs( deadlines.second[i] );
        }
        for ( std::size_t i = 0; i < timers; i += 2 ) {
            all[i]->timeMinIs( Kiv::never );
        }
        for ( double now = 0.0; now < horizon + 0.01; now += 0.001 ) {
            wheel->expire( now );
        }
    } );
    require( fired, "the wheel" );
    return seconds * 1e9 / operations;
}

double
multimap( Deadlines const& deadlines ) {
    std::multimap<double, std::size_t> queue;
    std::vector<std::multimap<double, std::size_t>::iterator> at( timers );
    std::size_t fired = 0;
    double const seconds = Bench::secondsOf( [&] {
        for ( std::size_t i = 0; i < timers; ++i ) {
            at[i] = queue.emplace( deadlines.first[i], i );
        }
        for ( std::size_t i = 0; i < timers; ++i ) {
            queue.erase( at[i] );
            at[i] = queue.emplace( deadlines.second[i], i );
        }
        for ( std::size_t i = 0; i < timers; i += 2 ) {
            queue.erase( at[i] );
        }
        for ( ; !queue.empty(); ++fired ) {
            queue.erase( queue.begin() );
        }
    } );
    require( fired, "multimap" );
    return seconds * 1e9 / operations;
}

double
priorityQueue( Deadlines const& deadlines ) {
    struct Entry {
        double deadline;
        std::size_t timer;
        unsigned generation;
        bool operator>( Entry const& other ) const { return deadline > other.deadline; }
    };
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
    std::vector<unsigned> generations( timers, 0 );
    std::size_t fired = 0;
    double const seconds = Bench::secondsOf( [&] {
        for ( std::size_t i = 0; i < timers; ++i ) {
            queue.push( { deadlines.first[i], i, generations[i] } );
        }
        for ( std::size_t i = 0; i < timers; ++i ) {
            queue.push( { deadlines.second[i], i, ++generations[i] } );
        }
        for ( std::size_t i = 0; i < timers; i += 2 ) {
            ++generations[i];
        }
        for ( ; !queue.empty(); queue.pop() ) {
            Entry const& entry = queue.top();
            fired += entry.generation == generations[entry.timer] ? 1 : 0;
        }
    } );
    require( fired, "priority_queue" );
    return seconds * 1e9 / operations;
}

/// A clock for Asio's timers that stands where it is put.
struct StandingClock {
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<StandingClock>;
    [[maybe_unused]] static constexpr bool is_steady = false; // asked for by the concept of a clock
    static inline time_point current{};
    static time_point now() { return current; }
    static time_point at( double seconds ) {
        return time_point( std::chrono::duration_cast<duration>( std::chrono::duration<double>( seconds ) ) );
    }
};

double
asioTimers( Deadlines const& deadlines ) {
    asio::io_context context;
    StandingClock::current = {};
    std::size_t fired = 0;
    std::vector<asio::basic_waitable_timer<StandingClock>> all;
    all.reserve( timers );
    for ( std::size_t i = 0; i < timers; ++i ) {
        all.emplace_back( context );
    }
    auto const arm = [&]( std::size_t i, double deadline ) {
        all[i].expires_at( StandingClock::at( deadline ) );
        all[i].async_wait( [&fired]( asio::error_code const& error ) { fired += error ? 0 : 1; } );
    };
    double const seconds = Bench::secondsOf( [&] {
        for ( std::size_t i = 0; i < timers; ++i ) {
            arm( i, deadlines.first[i] );
        }
        for ( std::size_t i = 0; i < timers; ++i ) {
            arm( i, deadlines.second[i] );
        }
        for ( std::size_t i = 0; i < timers; i += 2 ) {
            all[i].cancel();
        }
        StandingClock::current = StandingClock::at( horizon + 1.0 );
        context.poll();
    } );
    require( fired, "Asio" );
    return seconds * 1e9 / operations;
}

void
measure( Bench::Figures& figures, unsigned runs ) {
    std::vector<double> ours, map, heap, asio;
    for ( unsigned i = 0; i < runs; ++i ) {
        Deadlines const deadlines = drawDeadlines( i + 1 );
        ours.push_back( ourWheel( deadlines ) );
        map.push_back( multimap( deadlines ) );
        heap.push_back( priorityQueue( deadlines ) );
        asio.push_back( asioTimers( deadlines ) );
    }
    figures.add( "timing wheel, per operation", "ns", ours );
    figures.add( "std::multimap, per operation", "ns", map );
    figures.add( "std::priority_queue with lazy cancel, per operation", "ns", heap );
    figures.add( "Asio's timers, per operation", "ns", asio );
    figures.add( "multimap over wheel", "times", Bench::ratios( map, ours ) );
    figures.add( "priority_queue over wheel", "times", Bench::ratios( heap, ours ) );
    figures.add( "Asio over wheel", "times", Bench::ratios( asio, ours ) );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "A million timers: arm, rearm, cancel half, fire the rest", measure );
}
