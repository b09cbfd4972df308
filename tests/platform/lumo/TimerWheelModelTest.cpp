#include <algorithm>
#include <random>
#include <tuple>
#include <vector>

#include "tests/platform/lumo/Alarm.h"
#include "tests/support/SimulatedTest.h"

namespace {

using Kiv::Ptr;
using Kiv::Seconds;

/// Drives the wheel and a plain sorted reference by the same random operations.
class TimerWheelModelTest : public Support::SimulatedTest {
  protected:
    /// Armed timers by time, then by the order of arming.
    using Entry = std::tuple<Seconds, long, std::size_t>;

    TimerWheelModelTest() {
        for ( std::size_t i = 0; i < 300; ++i ) {
            alarms_.push_back( Alarm::on( wheel(), [this, i] { fired_.push_back( i ); } ) );
        }
    }

    void arm( std::size_t i, Seconds time ) {
        disarm( i );
        alarms_[i]->timeMinIs( time );
        reference_.emplace_back( time, ++armings_, i );
    }
    void disarm( std::size_t i ) {
        std::erase_if( reference_, [i]( Entry const& entry ) { return std::get<2>( entry ) == i; } );
        alarms_[i]->timeMinIs( Kiv::never );
    }
    std::vector<std::size_t> takeDue( Seconds now ) {
        std::sort( reference_.begin(), reference_.end() );
        std::vector<std::size_t> due;
        while ( !reference_.empty() && std::get<0>( reference_.front() ) <= now ) {
            due.push_back( std::get<2>( reference_.front() ) );
            reference_.erase( reference_.begin() );
        }
        return due;
    }
    Seconds earliest() const {
        Seconds first = Kiv::never;
        for ( Entry const& entry : reference_ ) {
            first = std::min( first, std::get<0>( entry ) );
        }
        return first;
    }
    /// A distance of any size from a fraction of a tick to hours, at times a round one, so that times
    /// coincide.
    Seconds distance() {
        Seconds const scale[] = { 1e-7, 1e-6, 1e-4, 1e-2, 1.0, 60.0, 4e3 };
        Seconds const span = scale[random_() % 7] * static_cast<double>( random_() % 100 );
        return random_() % 10 == 0 ? -span : span;
    }

    std::mt19937 random_{ 9 };
    std::vector<Ptr<Alarm>> alarms_;
    std::vector<std::size_t> fired_;
    std::vector<Entry> reference_;
    long armings_ = 0;
};

TEST_F( TimerWheelModelTest, AgreesWithASortedListOverRandomOperations ) {
    for ( int step = 0; step < 100'000; ++step ) {
        std::size_t const i = random_() % alarms_.size();
        unsigned const operation = random_() % 8;
        if ( operation == 0 ) {
            disarm( i );
        } else if ( operation <= 5 ) {
            arm( i, Kiv::now() + distance() );
        } else {
            Seconds const next = earliest();
            clock().advanceTo( operation == 6 && Kiv::isFinite( next ) ? next : Kiv::now() + distance() );
            wheel()->expire( Kiv::now() );
            ASSERT_EQ( fired_, takeDue( Kiv::now() ) ) << "step " << step;
            fired_.clear();
        }
        ASSERT_EQ( wheel()->armedTimers(), reference_.size() );
        ASSERT_EQ( wheel()->nextDeadline(), earliest() ) << "step " << step;
    }
    EXPECT_GT( armings_, 50'000 );
}

} // namespace
