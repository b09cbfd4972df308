#include "platform/zornet/IgmpFloatCode.h"

#include <gtest/gtest.h>

namespace Zornet {

using IgmpFloatCodeTest = ::testing::Test;

TEST_F( IgmpFloatCodeTest, SmallCodesStandForThemselves ) {
    EXPECT_EQ( igmpFloatDecode( 0 ), 0U );
    EXPECT_EQ( igmpFloatDecode( 127 ), 127U );
}

TEST_F( IgmpFloatCodeTest, LargeCodesAreMantissaAndExponent ) {
    EXPECT_EQ( igmpFloatDecode( 0x80 ), 128U );   // ( 0x10 | 0 ) << 3
    EXPECT_EQ( igmpFloatDecode( 0x8f ), 248U );   // ( 0x10 | 15 ) << 3
    EXPECT_EQ( igmpFloatDecode( 0x90 ), 256U );   // ( 0x10 | 0 ) << 4
    EXPECT_EQ( igmpFloatDecode( 0xff ), 31744U ); // ( 0x10 | 15 ) << 10
}

TEST_F( IgmpFloatCodeTest, EveryCodeSurvivesItsValue ) {
    for ( U32 code = 0; code < 256; ++code ) {
        EXPECT_EQ( igmpFloatEncode( igmpFloatDecode( static_cast<U8>( code ) ) ), code );
    }
}

TEST_F( IgmpFloatCodeTest, EncodesTheGreatestValueNotAbove ) {
    for ( U32 value = 0; value < 31744; ++value ) {
        U8 const code = igmpFloatEncode( value );
        ASSERT_LE( igmpFloatDecode( code ), value );
        ASSERT_GT( igmpFloatDecode( static_cast<U8>( code + 1 ) ), value );
    }
}

TEST_F( IgmpFloatCodeTest, EncodesWhatIsTooGreatAsTheGreatest ) {
    EXPECT_EQ( igmpFloatEncode( 31745 ), 0xff );
    EXPECT_EQ( igmpFloatEncode( 32768 ), 0xff );
    EXPECT_EQ( igmpFloatEncode( 0xffffffff ), 0xff );
}

} // namespace Zornet
