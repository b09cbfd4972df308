#include "platform/zornet/IpAddr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <unordered_set>

#include "RangeMessage.h"

namespace Zornet {

using IpAddrTest = ::testing::Test;

TEST_F( IpAddrTest, DefaultIsAllZero ) {
    EXPECT_EQ( IpAddr().hostOrder(), 0U );
    EXPECT_TRUE( IpAddr().isZero() );
}

TEST_F( IpAddrTest, KeepsNetworkOrderInside ) {
    IpAddr const addr = IpAddr::fromHost( 0x0a000001 );
    EXPECT_THAT( addr.bytes(), ::testing::ElementsAre( 10, 0, 0, 1 ) );
    EXPECT_EQ( addr.hostOrder(), 0x0a000001U );
    EXPECT_FALSE( addr.isZero() );
}

TEST_F( IpAddrTest, ReadsDottedDecimal ) {
    EXPECT_EQ( IpAddr( "239.1.1.1" ), IpAddr::fromHost( 0xef010101 ) );
    EXPECT_EQ( IpAddr( "255.255.255.255" ), IpAddr::fromHost( 0xffffffff ) );
}

TEST_F( IpAddrTest, WritesWhatItReads ) {
    EXPECT_EQ( valueToStrep( IpAddr( "10.0.0.1" ) ), Kiv::String8( "10.0.0.1" ) );
    std::ostringstream out;
    out << IpAddr( "224.0.0.22" );
    EXPECT_EQ( out.str(), "224.0.0.22" );
}

TEST_F( IpAddrTest, RefusesEveryOtherText ) {
    for ( char const* text :
          { "", "10", "10.0.0", "10.0.0.", "10.0.0.1.", "10.0.0.1.2", "256.0.0.1", "10.0.0.01", "10.0.0.-1",
            "10.0.0.+1", " 10.0.0.1", "10.0.0.1 ", "10..0.1", "a.b.c.d", "0x0a.0.0.1", "10,0,0,1" } ) {
        EXPECT_THROW( IpAddr{ text }, Kiv::RangeException ) << text;
    }
}

TEST_F( IpAddrTest, RefusalNamesWhatWasExpected ) {
    EXPECT_EQ(
        rangeMessage( [] { IpAddr( "10.0.0" ); } ),
        "expected an IPv4 address such as 10.0.0.1, found '10.0.0'"
    );
}

TEST_F( IpAddrTest, OrdersByHostValue ) {
    EXPECT_LT( IpAddr( "10.0.0.255" ), IpAddr( "10.0.1.0" ) );
    EXPECT_LT( IpAddr( "9.255.255.255" ), IpAddr( "224.0.0.1" ) );
    EXPECT_FALSE( IpAddr( "10.0.0.1" ) < IpAddr( "10.0.0.1" ) );
    EXPECT_NE( IpAddr( "10.0.0.1" ), IpAddr( "1.0.0.10" ) );
}

TEST_F( IpAddrTest, AddressesOfOneBlockNeverShareAHash ) {
    std::unordered_set<U32> hashes;
    for ( U32 i = 0; i < 100000; ++i ) {
        hashes.insert( IpAddr::fromHost( 0xef000000 + i ).hash() );
    }
    EXPECT_EQ( hashes.size(), 100000U );
}

TEST_F( IpAddrTest, HashSpreadsNeighboursOverTheLowBits ) {
    std::array<int, 256> counts{};
    for ( U32 i = 0; i < 65536; ++i ) {
        ++counts[IpAddr::fromHost( 0xe0000000 + i * 256 ).hash() & 0xff];
    }
    EXPECT_THAT( counts, ::testing::Each( ::testing::AllOf( ::testing::Gt( 128 ), ::testing::Lt( 512 ) ) ) );
}

TEST_F( IpAddrTest, KnowsMulticast ) {
    EXPECT_TRUE( IpAddr( "224.0.0.0" ).isMulticast() );
    EXPECT_TRUE( IpAddr( "239.255.255.255" ).isMulticast() );
    EXPECT_FALSE( IpAddr( "223.255.255.255" ).isMulticast() );
    EXPECT_FALSE( IpAddr( "240.0.0.0" ).isMulticast() );
}

TEST_F( IpAddrTest, ValueTraitsFormatAndParse ) {
    using Traits = Kiv::ValueTraits<IpAddr>;
    EXPECT_EQ( Traits::format( Traits::parse( "232.1.2.3" ) ), "232.1.2.3" );
    EXPECT_THROW( Traits::parse( "232.1.2" ), Kiv::RangeException );
}

} // namespace Zornet
