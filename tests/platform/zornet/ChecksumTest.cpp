#include "platform/zornet/Checksum.h"

#include <gtest/gtest.h>

#include "Hex.h"

namespace Zornet {

class ChecksumTest : public ::testing::Test {
  protected:
    static U16 checksum( std::string_view digits, U32 seed = 0 ) {
        std::vector<U8> const bytes = fromHex( digits );
        auto const* data = reinterpret_cast<char const*>( bytes.data() );
        return ipChecksumCalc( data, static_cast<unsigned short>( bytes.size() ), seed ).value();
    }
};

TEST_F( ChecksumTest, OfNothingIsAllOnes ) {
    EXPECT_EQ( checksum( "" ), 0xffff );
}

TEST_F( ChecksumTest, IsTheComplementOfTheFoldedSum ) {
    // The example of RFC 1071 section 3: the sum is ddf2.
    EXPECT_EQ( checksum( "0001 f203 f4f5 f6f7" ), 0xffff - 0xddf2 );
}

TEST_F( ChecksumTest, CarriesAreFoldedTwiceWhereNeeded ) {
    EXPECT_EQ( checksum( "ffff 0001 ffff" ), 0xfffe );
}

TEST_F( ChecksumTest, OddLastByteCountsAsTheHighOne ) {
    EXPECT_EQ( checksum( "1234 56" ), checksum( "1234 5600" ) );
}

TEST_F( ChecksumTest, SeedIsAddedToTheSum ) {
    EXPECT_EQ( checksum( "1234", 0x1111 ), checksum( "1234 1111" ) );
    EXPECT_EQ( checksum( "1234", 0xffffffff ), checksum( "1234 ffff ffff" ) );
}

TEST_F( ChecksumTest, OverARightStoredChecksumIsZero ) {
    EXPECT_EQ( checksum( "1164 ee9b 0000 0000" ), 0 );
}

TEST_F( ChecksumTest, OfGoldenIgmpMessages ) {
    EXPECT_EQ( checksum( "1600 0000 ef010101" ), 0xf9fc );
    EXPECT_EQ( checksum( "1200 0000 ef010101" ), 0xfdfc );
    EXPECT_EQ( checksum( "1700 0000 ef010101" ), 0xf8fc );
    EXPECT_EQ( checksum( "1100 0000 00000000" ), 0xeeff );
    EXPECT_EQ( checksum( "1164 0000 00000000 027d0000" ), 0xec1e );
}

TEST_F( ChecksumTest, OfGoldenReportsWithOneRecord ) {
    EXPECT_EQ( checksum( "22000000 00000001 04000000 ef010101" ), 0xe9fb );
    EXPECT_EQ( checksum( "22000000 00000001 03000000 ef010101" ), 0xeafb );
    EXPECT_EQ( checksum( "22000000 00000001 02000000 ef010101" ), 0xebfb );
}

} // namespace Zornet
