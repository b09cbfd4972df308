#include "agent/output/WallTime.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace Agent {

std::string
wallTime( Kiv::Seconds time ) {
    constexpr double thousand = 1e3;
    auto const milliseconds = static_cast<long long>( std::floor( time * thousand ) );
    auto const seconds = static_cast<time_t>( milliseconds / 1000 );
    tm local{};
    localtime_r( &seconds, &local );
    std::array<char, 16> day{};
    std::size_t const length = strftime( day.data(), day.size(), "%H:%M:%S", &local );
    std::array<char, 8> fraction{};
    std::snprintf( fraction.data(), fraction.size(), ".%03d", static_cast<int>( milliseconds % 1000 ) );
    return std::string( day.data(), length ) + fraction.data();
}

} // namespace Agent
