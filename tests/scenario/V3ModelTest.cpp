/// Random version 3 hosts against the reference querier. IGMPHOST_MODEL_SEEDS sets how many seeds are tried,
/// 1,000 by default; IGMPHOST_MODEL_SEED names one for V3ModelReplay, which then prints all that happens.

#include <gmock/gmock.h>

#include <cstdlib>
#include <iostream>

#include "tests/scenario/V3ModelCase.h"

namespace {

using Scenario::U64;
using Scenario::V3ModelCase;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

U64
numberFrom( char const* variable, U64 otherwise ) {
    char const* const text = std::getenv( variable );
    return text ? std::strtoull( text, nullptr, 10 ) : otherwise;
}

/// Returns how many frames were lost.
U64
expectRightState( U64 seed, std::ostream* log = nullptr ) {
    V3ModelCase modelCase( seed );
    if ( log ) {
        modelCase.logIs( *log );
    }
    EXPECT_THAT( modelCase.run(), IsEmpty() )
        << "IGMPHOST_MODEL_SEED=" << seed
        << " --gtest_filter=V3ModelReplay.* tries this again: " << modelCase.shape();
    return modelCase.framesLost();
}

/// The seeds in parts, so that several run at once.
class V3Model : public ::testing::TestWithParam<U64> {};

constexpr U64 parts = 10;

INSTANTIATE_TEST_SUITE_P( Part, V3Model, ::testing::Range( U64{ 0 }, parts ) );

TEST_P( V3Model, QuerierForwardsWhatSomeHostWants ) {
    U64 const seeds = numberFrom( "IGMPHOST_MODEL_SEEDS", 1000 );
    U64 lost = 0;
    for ( U64 seed = 1 + GetParam(); seed <= seeds; seed += parts ) {
        lost += expectRightState( seed );
    }
    EXPECT_GE( lost, seeds / parts ); // a case that loses nothing proves less
}

/// The case of IGMPHOST_MODEL_SEED, or of the first seed.
TEST( V3ModelReplay, TellsWhatHappensOnTheWire ) {
    U64 const seed = numberFrom( "IGMPHOST_MODEL_SEED", 1 );
    std::ostringstream log;
    expectRightState( seed, &log );
    EXPECT_THAT(
        log.str(), AllOf( HasSubstr( " wants of 239.1.1." ), HasSubstr( " router v3query 0.0.0.0 {}" ) )
    );
    if ( std::getenv( "IGMPHOST_MODEL_SEED" ) ) {
        std::cout << log.str();
    }
}

} // namespace
