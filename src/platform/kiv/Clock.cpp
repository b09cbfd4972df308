#include "platform/kiv/Clock.h"

#include <chrono>

namespace Kiv {

namespace {

template <class C>
Seconds
secondsOf() {
    return std::chrono::duration<double>( C::now().time_since_epoch() ).count();
}

Clock*&
clockInForce() {
    static SystemClock system;
    static Clock* clock = &system;
    return clock;
}

} // namespace

void
Clock::advanceTo( Seconds ) {}

SystemClock::SystemClock()
    : offset_( secondsOf<std::chrono::system_clock>() - secondsOf<std::chrono::steady_clock>() ) {}

Seconds
SystemClock::now() const {
    return offset_ + secondsOf<std::chrono::steady_clock>();
}

void
SimulatedClock::advanceTo( Seconds time ) {
    if ( time > now_ ) {
        now_ = time;
        instantServed_ = false;
    }
}

Clock&
clock() {
    return *clockInForce();
}

Seconds
now() {
    return clock().now();
}

ClockScope::ClockScope( Clock& clock ) : outer_( clockInForce() ) {
    clockInForce() = &clock;
}

ClockScope::~ClockScope() {
    clockInForce() = outer_;
}

} // namespace Kiv
