#include "platform/zornet/EthAddr.h"

#include <gtest/gtest.h>

#include <sstream>

#include "RangeMessage.h"

namespace Zornet {

using EthAddrTest = ::testing::Test;

TEST_F( EthAddrTest, DefaultIsAllZero ) {
    EXPECT_EQ( EthAddr(), EthAddr( "00:00:00:00:00:00" ) );
}

TEST_F( EthAddrTest, ReadsPairsOfDigits ) {
    EXPECT_EQ( EthAddr( "02:00:5e:AB:cd:01" ), EthAddr( { 0x02, 0x00, 0x5e, 0xab, 0xcd, 0x01 } ) );
}

TEST_F( EthAddrTest, WritesLowerCasePairs ) {
    EXPECT_EQ( valueToStrep( EthAddr( "02:00:00:00:00:01" ) ), Kiv::String8( "02:00:00:00:00:01" ) );
    std::ostringstream out;
    out << EthAddr( "01:00:5E:00:00:16" );
    EXPECT_EQ( out.str(), "01:00:5e:00:00:16" );
}

TEST_F( EthAddrTest, TellsEveryByteApart ) {
    for ( std::size_t i = 0; i < 6; ++i ) {
        std::array<U8, 6> bytes{};
        bytes[i] = 1;
        EXPECT_NE( EthAddr( bytes ), EthAddr() ) << i;
    }
}

TEST_F( EthAddrTest, RefusesEveryOtherText ) {
    for ( char const* text : { "", "02:00:00:00:00", "02:00:00:00:00:1", "02:00:00:00:00:01:",
                               "02-00-00-00-00-01", "020000000001", "02:00:00:00:00:0g", " 2:00:00:00:00:01",
                               "+2:00:00:00:00:01", "02:00:00:00:00:01:02", "0:200:00:00:00:01" } ) {
        EXPECT_THROW( EthAddr{ text }, Kiv::RangeException ) << text;
    }
}

TEST_F( EthAddrTest, RefusalNamesWhatWasExpected ) {
    EXPECT_EQ(
        rangeMessage( [] { EthAddr( "02" ); } ),
        "expected an Ethernet address such as 02:00:00:00:00:01, found '02'"
    );
}

TEST_F( EthAddrTest, ValueTraitsFormatAndParse ) {
    using Traits = Kiv::ValueTraits<EthAddr>;
    EXPECT_EQ( Traits::format( Traits::parse( "02:00:00:00:0a:ff" ) ), "02:00:00:00:0a:ff" );
}

} // namespace Zornet
