#include "platform/bridging/VlanId.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Bridging {

class VlanIdTest : public ::testing::Test {
  protected:
    template <class T>
    static std::string refusal( T const& value ) {
        try {
            VlanId{ value };
        } catch ( Kiv::RangeException const& exception ) {
            return exception.what();
        }
        return "taken";
    }
    static constexpr char const* outOfRange = "VlanId::value < 1 or > 4094 not allowed";
};

TEST_F( VlanIdTest, TakesBothEndsOfItsRange ) {
    EXPECT_EQ( VlanId( 1 ).value(), 1 );
    EXPECT_EQ( VlanId( 4094 ).value(), 4094 );
}

TEST_F( VlanIdTest, RefusesWhatLiesOutside ) {
    EXPECT_EQ( refusal( Kiv::U16{ 0 } ), outOfRange );
    EXPECT_EQ( refusal( Kiv::U16{ 4095 } ), outOfRange );
    EXPECT_EQ( refusal( Kiv::U16{ 65535 } ), outOfRange );
}

TEST_F( VlanIdTest, ReadsAndWritesDecimal ) {
    EXPECT_EQ( VlanId( "100" ), VlanId( 100 ) );
    EXPECT_EQ( valueToStrep( VlanId( 100 ) ), Kiv::String8( "100" ) );
    std::ostringstream out;
    out << VlanId( 4094 );
    EXPECT_EQ( out.str(), "4094" );
}

TEST_F( VlanIdTest, SurvivesItsText ) {
    using Traits = Kiv::ValueTraits<VlanId>;
    EXPECT_EQ( Traits::format( VlanId( 4094 ) ), "4094" );
    EXPECT_EQ( Traits::parse( Traits::format( VlanId( 4094 ) ) ), VlanId( 4094 ) );
}

TEST_F( VlanIdTest, RefusesTextThatIsNoVlan ) {
    EXPECT_EQ( refusal( "4095" ), outOfRange );
    for ( char const* text : { "", "65537", "-1", "1a", " 1" } ) {
        EXPECT_NE( refusal( text ), "taken" ) << text;
    }
}

TEST_F( VlanIdTest, ComparesAndHashesByNumber ) {
    EXPECT_LT( VlanId( 9 ), VlanId( 10 ) );
    EXPECT_NE( VlanId( 9 ), VlanId( 10 ) );
    EXPECT_NE( VlanId( 9 ).hash(), VlanId( 10 ).hash() );
}

} // namespace Bridging
