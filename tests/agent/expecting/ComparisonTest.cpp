#include "agent/expecting/Comparison.h"

#include <gmock/gmock.h>

#include "model/Enumerations.h"

namespace Agent {

namespace {

using Kiv::U32;

/// Which of the numbers 1, 2 and 3 meet the comparison.
std::string
met( std::string_view text ) {
    Comparison const comparison( Kiv::valueType<U32>, text );
    std::string all;
    for ( U32 number = 1; number <= 3; ++number ) {
        all += comparison.holds( number ) ? std::to_string( number ) : "";
    }
    return all;
}

TEST( ComparisonTest, NumbersAreComparedInEveryWay ) {
    EXPECT_EQ( met( "2" ), "2" );
    EXPECT_EQ( met( "==2" ), "2" );
    EXPECT_EQ( met( "!= 2" ), "13" );
    EXPECT_EQ( met( "< 2" ), "1" );
    EXPECT_EQ( met( "<=2" ), "12" );
    EXPECT_EQ( met( "> 2" ), "3" );
    EXPECT_EQ( met( ">=   2" ), "23" );
}

TEST( ComparisonTest, OtherValuesAreEqualOrNot ) {
    Comparison const two( Kiv::valueType<Igmp::IgmpVersion>, "2" );
    EXPECT_TRUE( two.holds( Igmp::igmpVersion2 ) );
    EXPECT_FALSE( two.holds( Igmp::igmpVersion3 ) );
    EXPECT_TRUE( Comparison( Kiv::valueType<bool>, "!= true" ).holds( false ) );
}

TEST( ComparisonTest, TextIsThatOfAScenario ) {
    EXPECT_EQ( Comparison( Kiv::valueType<U32>, ">=2" ).text(), ">= 2" );
    EXPECT_EQ( Comparison( Kiv::valueType<U32>, "== 2" ).text(), "2" );
    EXPECT_EQ( Comparison( Kiv::valueType<double>, "< 1.5" ).text(), "< 1.5" );
}

TEST( ComparisonTest, WhatIsNoneIsRefused ) {
    EXPECT_THROW( Comparison( Kiv::valueType<U32>, ">= many" ), Kiv::RangeException );
    EXPECT_THROW( Comparison( Kiv::valueType<U32>, ">=" ), Kiv::RangeException );
    EXPECT_THROW( Comparison( Kiv::valueType<U32>, "=> 2" ), Kiv::RangeException );
    EXPECT_THROW( Comparison( Kiv::valueType<bool>, "> false" ), Kiv::RangeException );
}

} // namespace

} // namespace Agent
