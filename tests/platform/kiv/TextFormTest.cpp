#include "platform/kiv/TextForm.h"

#include <gtest/gtest.h>

#include "platform/kiv/Entity.h"
#include "tests/platform/zornet/RangeMessage.h"

namespace {

using Kiv::String8;
using Kiv::valueToStrep;
using Zornet::rangeMessage;

/// The value that `text` is as a whole.
template <class T>
T
parsed( String8 const& text ) {
    T value{};
    Kiv::strepToValue( text, &value );
    return value;
}

template <class T>
std::string
faultOf( String8 const& text ) {
    return rangeMessage( [&] { parsed<T>( text ); } );
}

TEST( TextFormTest, StringStandsBetweenSingleQuotes ) {
    EXPECT_EQ( valueToStrep( String8( "et 1" ) ), String8( "'et 1'" ) );
    EXPECT_EQ( valueToStrep( String8() ), String8( "''" ) );
}

TEST( TextFormTest, StringEscapesQuotesBackslashesAndUnprintableBytes ) {
    String8 const text( std::string_view( "a'b\\c\n\0\xff", 8 ) );
    EXPECT_EQ( valueToStrep( text ), String8( "'a\\'b\\\\c\\x0a\\x00\\xff'" ) );
}

TEST( TextFormTest, EveryByteOfAStringComesBack ) {
    std::string bytes;
    for ( int byte = 0; byte < 256; ++byte ) {
        bytes += static_cast<char>( byte );
    }
    EXPECT_EQ( parsed<String8>( valueToStrep( String8( bytes ) ) ).view(), bytes );
}

TEST( TextFormTest, StringWithoutItsQuotesIsRefused ) {
    EXPECT_EQ( faultOf<String8>( "et1" ), "expected \" '\" at column 0" );
    EXPECT_EQ( faultOf<String8>( "'et1" ), "expected \"'\" at column 4" );
    EXPECT_EQ( faultOf<String8>( "" ), "expected \" '\" at column 0" );
}

TEST( TextFormTest, UnknownEscapeIsRefused ) {
    EXPECT_EQ( faultOf<String8>( "'\\n'" ), "expected ', \\ or x at column 2" );
    EXPECT_EQ( faultOf<String8>( "'\\" ), "expected ', \\ or x at column 2" );
    EXPECT_EQ( faultOf<String8>( "'\\x4g'" ), "expected a hexadecimal digit at column 4" );
    EXPECT_EQ( faultOf<String8>( "'\\x4" ), "expected a hexadecimal digit at column 4" );
    String8 const zero( std::string_view( "'\\x4\0'", 6 ) ); // which ends the list of digits
    EXPECT_EQ( faultOf<String8>( zero ), "expected a hexadecimal digit at column 4" );
}

TEST( TextFormTest, BlanksOfEveryKindMayStandBeforeAValue ) {
    EXPECT_EQ( parsed<long long>( " \t\r\n7" ), 7 );
    EXPECT_TRUE( parsed<bool>( "\r\ttrue" ) );
}

TEST( TextFormTest, NumbersAreDecimal ) {
    EXPECT_EQ( valueToStrep( Kiv::U8{ 200 } ), String8( "200" ) );
    EXPECT_EQ( valueToStrep( Kiv::U16{ 65535 } ), String8( "65535" ) );
    EXPECT_EQ( valueToStrep( -7LL ), String8( "-7" ) );
    EXPECT_EQ( parsed<long long>( " 65537" ), 65537 );
    EXPECT_EQ( parsed<long long>( "-7" ), -7 );
    EXPECT_EQ( parsed<double>( "2.5" ), 2.5 );
}

TEST( TextFormTest, WhatIsNoNumberIsRefused ) {
    EXPECT_EQ( faultOf<long long>( "x" ), "expected a whole number at column 0" );
    EXPECT_EQ( faultOf<long long>( "9223372036854775808" ), "expected a whole number at column 0" );
    EXPECT_EQ( faultOf<double>( "" ), "expected a number at column 0" );
}

TEST( TextFormTest, TruthValuesAreTrueAndFalse ) {
    for ( bool value : { false, true } ) {
        EXPECT_EQ( parsed<bool>( valueToStrep( value ) ), value );
    }
    EXPECT_EQ( valueToStrep( true ), String8( "true" ) );
    EXPECT_EQ( faultOf<bool>( "1" ), "expected \"false\" at column 0" );
    EXPECT_EQ( faultOf<bool>( "" ), "expected \"false\" at column 0" );
    EXPECT_EQ( faultOf<bool>( "tru" ), "expected \"true\" at column 3" );
}

TEST( TextFormTest, JunkBehindAValueIsNamedWithItsColumn ) {
    EXPECT_EQ( faultOf<bool>( "true," ), "junk at column 4 deserializing true," );
    EXPECT_EQ( faultOf<String8>( "'a' " ), "junk at column 3 deserializing 'a' " );
}

TEST( TextFormTest, ValueIsLeftAloneByTextThatFails ) {
    long long value = 5;
    EXPECT_THROW( Kiv::strepToValue( "7 x", &value ), Kiv::RangeException );
    EXPECT_EQ( value, 5 );
}

TEST( TextFormTest, BlankInAPatternStandsForAnyRunOfBlanks ) {
    String8 const text( " \t\n ,x" );
    String8::IteratorConst at = text.begin();
    Kiv::needString( at, text.end(), " , " );
    EXPECT_EQ( at.column(), 5 );
    Kiv::needString( at, text.end(), " x" );
    EXPECT_EQ( at, text.end() );
}

TEST( TextFormTest, PatternThatDoesNotMatchIsNamedWithTheColumn ) {
    String8 const text( "Val" );
    String8::IteratorConst at = text.begin();
    EXPECT_EQ(
        rangeMessage( [&] { Kiv::needString( at, text.end(), " Value" ); } ),
        "expected \" Value\" at column 3"
    );
}

TEST( TextFormTest, FaultIsRaisedAgainWithTheAttributesName ) {
    Kiv::RangeException const fault( "too large", {}, false );
    String8 attribute( "mtu" );
    EXPECT_EQ(
        rangeMessage( [&] { Kiv::rethrowFromDeserializeAttr( fault, attribute ); } ), "mtu: too large"
    );
}

TEST( TextFormTest, NullIsTheOnePointerWithAText ) {
    Kiv::Ptr<Kiv::Entity> pointer;
    Kiv::strepToValue( " null", &pointer );
    EXPECT_FALSE( pointer );
    EXPECT_THROW( Kiv::strepToValue( "'eth0'", &pointer ), Kiv::RangeException );
}

} // namespace
