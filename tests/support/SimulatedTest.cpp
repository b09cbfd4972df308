#include "tests/support/SimulatedTest.h"

namespace Support {

SimulatedTest::SimulatedTest( Kiv::Seconds start )
    : start_( start ), clock_( start ), clockScope_( clock_ ), wheel_( new Lumo::TimerWheel ) {}

SimulatedTest::~SimulatedTest() {
    deferredDeliveryIs( false );
}

} // namespace Support
