/// A million timers on the wheel: armed, armed anew, half of them cancelled, the rest fired; beside three
/// usual ways to hold timers.

#include "bench/rivals/TimerLoad.h"
#include "bench/support/Figures.h"
#include "platform/kiv/Clock.h"
#include "platform/lumo/TimerWheel.h"

namespace {

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
ourWheel( Bench::TimerLoad const& load ) {
    Kiv::SimulatedClock clock( 0.0 );
    Kiv::ClockScope const scope( clock );
    Kiv::Ptr<Lumo::TimerWheel> const wheel( new Lumo::TimerWheel );
    std::size_t fired = 0;
    std::vector<Kiv::Ptr<CountingTimer>> all;
    for ( std::size_t i = 0; i < load.timers(); ++i ) {
        all.emplace_back( new CountingTimer( wheel, fired ) );
    }
    auto const arm = [&]( std::size_t timer, double deadline ) { all[timer]->timeMinIs( deadline ); };
    auto const cancel = [&]( std::size_t timer ) { all[timer]->timeMinIs( Kiv::never ); };
    auto const advance = [&]( double now ) { wheel->expire( now ); };
    return load.nanosecondsPerOperation( "the wheel", arm, cancel, advance, fired );
}

void
measure( Bench::Figures& figures, Bench::Effort const& effort ) {
    std::vector<double> ours, map, heap, asio, asioAtOnce;
    for ( unsigned i = 0; i < effort.runs; ++i ) {
        Bench::TimerLoad const load( 1'000'000, i + 1 );
        ours.push_back( ourWheel( load ) );
        if ( !effort.quick ) {
            map.push_back( Bench::multimapTimers( load ) );
            asioAtOnce.push_back( Bench::asioTimers( load, Bench::Firing::allAtOnce ) );
        }
        heap.push_back( Bench::priorityQueueTimers( load ) );
        asio.push_back( Bench::asioTimers( load, Bench::Firing::inTime ) );
    }
    figures.add( "timing wheel, per operation", "ns", ours );
    figures.add( "std::priority_queue with lazy cancel, per operation", "ns", heap );
    figures.add( "Asio's timers, per operation", "ns", asio );
    if ( !effort.quick ) {
        figures.add( "Asio's timers, all overdue at once, per operation", "ns", asioAtOnce );
        figures.add( "std::multimap, per operation", "ns", map );
        figures.add( "Asio, all overdue at once, beside wheel", "times", Bench::ratios( asioAtOnce, ours ) );
        figures.add( "multimap beside wheel", "times", Bench::ratios( map, ours ) );
    }
    figures.add( "priority_queue beside wheel", "times", Bench::ratios( heap, ours ), Bench::atLeast( 3.0 ) );
    figures.add( "Asio beside wheel", "times", Bench::ratios( asio, ours ), Bench::atLeast( 10.0 ) );
}

} // namespace

int
main( int argc, char** argv ) {
    return Bench::run( argc, argv, "A million timers: arm, rearm, cancel half, fire the rest", measure );
}
