#include "platform/kiv/Value.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Kiv::U16;
using Kiv::U32;
using Kiv::U8;
using Kiv::ValueTraits;

/// The message of the error that `text` meets as a `T`.
template <class T>
std::string
errorOf( std::string_view text ) {
    try {
        ValueTraits<T>::parse( text );
    } catch ( Kiv::RangeException const& e ) {
        return e.what();
    }
    return "none";
}

TEST( ValueTest, UnsignedNumbersParseUpToTheirWidth ) {
    EXPECT_EQ( ValueTraits<U8>::parse( "255" ), 255 );
    EXPECT_EQ( ValueTraits<U16>::parse( "65535" ), 65535 );
    EXPECT_EQ( ValueTraits<U32>::parse( "4294967295" ), 4294967295U );
    EXPECT_EQ( ValueTraits<U32>::parse( "007" ), 7U );
}

TEST( ValueTest, UnsignedNumbersBeyondTheirWidthAreNamed ) {
    EXPECT_EQ( errorOf<U8>( "256" ), "expected U8, a whole number from 0 to 255, found '256'" );
    EXPECT_EQ( errorOf<U16>( "65536" ), "expected U16, a whole number from 0 to 65535, found '65536'" );
    EXPECT_EQ(
        errorOf<U32>( "4294967296" ), "expected U32, a whole number from 0 to 4294967295, found '4294967296'"
    );
}

TEST( ValueTest, UnsignedNumbersAreDigitsAlone ) {
    for ( char const* text : { "", " 1", "1 ", "-1", "+1", "0x1", "1.0", "99999999999999999999999" } ) {
        EXPECT_NE( errorOf<U32>( text ), "none" ) << "'" << text << "'";
    }
}

TEST( ValueTest, UnsignedNumbersFormatInDecimal ) {
    EXPECT_EQ( ValueTraits<U8>::format( 200 ), "200" );
    EXPECT_EQ( ValueTraits<U32>::format( 4294967295U ), "4294967295" );
}

TEST( ValueTest, TruthValuesAreTrueAndFalse ) {
    EXPECT_TRUE( ValueTraits<bool>::parse( "true" ) );
    EXPECT_FALSE( ValueTraits<bool>::parse( "false" ) );
    EXPECT_EQ( ValueTraits<bool>::format( true ), "true" );
    EXPECT_EQ( errorOf<bool>( "yes" ), "expected true or false, found 'yes'" );
}

TEST( ValueTest, RealNumbersComeBackTheSame ) {
    for ( double value : { 0.0, 0.1, 1.0 / 3.0, -5.5, 1e-300, 1.8e9 + 1e-6, 125.0 } ) {
        EXPECT_EQ( ValueTraits<double>::parse( ValueTraits<double>::format( value ) ), value );
    }
}

TEST( ValueTest, InfinityIsARealNumber ) {
    EXPECT_EQ( ValueTraits<double>::format( Kiv::never ), "inf" );
    EXPECT_EQ( ValueTraits<double>::parse( "inf" ), Kiv::never );
}

TEST( ValueTest, RealNumbersAreNumbersAlone ) {
    for ( char const* text : { "", "ten", "1s", " 1", "nan", "1e999", "1,5" } ) {
        EXPECT_EQ( errorOf<double>( text ), "expected a number, found '" + std::string( text ) + "'" );
    }
}

TEST( ValueTest, TextsAreTakenAsTheyAre ) {
    EXPECT_EQ( ValueTraits<Kiv::String8>::parse( " a b " ), Kiv::String8( " a b " ) );
    EXPECT_EQ( ValueTraits<Kiv::String8>::format( "x" ), "x" );
    EXPECT_EQ( ValueTraits<Kiv::Name>::parse( "eth0" ), Kiv::Name( "eth0" ) );
    EXPECT_EQ( ValueTraits<Kiv::Name>::format( Kiv::Name( "eth0" ) ), "eth0" );
}

TEST( ValueTest, TypesKnowTheirNamesAndForms ) {
    EXPECT_STREQ( Kiv::valueType<U8>.name, "U8" );
    EXPECT_STREQ( Kiv::valueType<U16>.name, "U16" );
    EXPECT_STREQ( Kiv::valueType<U32>.name, "U32" );
    EXPECT_STREQ( Kiv::valueType<bool>.name, "bool" );
    EXPECT_STREQ( Kiv::valueType<double>.name, "double" );
    EXPECT_STREQ( Kiv::valueType<Kiv::String8>.name, "Kiv::String" );
    EXPECT_STREQ( Kiv::valueType<Kiv::Name>.name, "Kiv::Name" );
    EXPECT_EQ( Kiv::valueType<U8>.form, Kiv::ValueForm::unsignedInteger );
    EXPECT_EQ( Kiv::valueType<bool>.form, Kiv::ValueForm::boolean );
    EXPECT_EQ( Kiv::valueType<double>.form, Kiv::ValueForm::real );
    EXPECT_EQ( Kiv::valueType<Kiv::Name>.form, Kiv::ValueForm::text );
}

TEST( ValueTest, TypeParsesAndFormatsWithoutKnowingTheValue ) {
    Kiv::ValueType const& type = Kiv::valueType<U16>;
    std::any const value = type.parse( "17" );
    EXPECT_EQ( std::any_cast<U16>( value ), 17 );
    EXPECT_EQ( type.format( value ), "17" );
    EXPECT_THROW( type.parse( "seventeen" ), Kiv::RangeException );
}

} // namespace
