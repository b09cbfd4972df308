#include "platform/bridging/AllowedTrafficDirection.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Bridging {

using AllowedTrafficDirectionTest = ::testing::Test;

TEST_F( AllowedTrafficDirectionTest, HasThreeNumbers ) {
    EXPECT_EQ( AllowedTrafficDirection::both, AllowedTrafficDirection{ 0 } );
    EXPECT_EQ( AllowedTrafficDirection::ingress, AllowedTrafficDirection{ 1 } );
    EXPECT_EQ( AllowedTrafficDirection::egress, AllowedTrafficDirection{ 2 } );
    EXPECT_EQ( AllowedTrafficDirection(), AllowedTrafficDirection::both );
}

TEST_F( AllowedTrafficDirectionTest, EachSurvivesItsText ) {
    using Traits = Kiv::ValueTraits<AllowedTrafficDirection>;
    for ( Kiv::U32 number = 0; number < 3; ++number ) {
        AllowedTrafficDirection const direction{ number };
        EXPECT_EQ( Traits::parse( Traits::format( direction ) ), direction );
    }
}

TEST_F( AllowedTrafficDirectionTest, IsFoundByItsNumber ) {
    EXPECT_EQ( allowedTrafficDirection( 2U ), AllowedTrafficDirection::egress );
    EXPECT_THROW( allowedTrafficDirection( 3U ), Kiv::RangeException );
}

TEST_F( AllowedTrafficDirectionTest, PrintsNameOrNumber ) {
    std::ostringstream out;
    out << AllowedTrafficDirection::ingress << ' ' << AllowedTrafficDirection{ 3 };
    EXPECT_EQ( out.str(), "ingress AllowedTrafficDirection(3)" );
    EXPECT_EQ( valueToStrep( AllowedTrafficDirection::egress ), Kiv::String8( "'egress'" ) );
}

TEST_F( AllowedTrafficDirectionTest, RefusesAnUnknownName ) {
    try {
        allowedTrafficDirection( "up" );
        FAIL() << "taken";
    } catch ( Kiv::RangeException const& exception ) {
        EXPECT_STREQ(
            exception.what(), "expected AllowedTrafficDirection, one of both, ingress, egress, found 'up'"
        );
    }
}

} // namespace Bridging
