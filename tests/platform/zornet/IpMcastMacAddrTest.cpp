#include "platform/zornet/IpMcastMacAddr.h"

#include <gtest/gtest.h>

namespace Zornet {

using IpMcastMacAddrTest = ::testing::Test;

TEST_F( IpMcastMacAddrTest, MapsTheLow23Bits ) {
    EXPECT_EQ( ipMcastMacAddr( IpAddr( "224.0.0.1" ) ), EthAddr( "01:00:5e:00:00:01" ) );
    EXPECT_EQ( ipMcastMacAddr( IpAddr( "239.127.254.253" ) ), EthAddr( "01:00:5e:7f:fe:fd" ) );
}

TEST_F( IpMcastMacAddrTest, DropsTheTopBitOfTheSecondByte ) {
    EXPECT_EQ( ipMcastMacAddr( IpAddr( "224.128.0.1" ) ), EthAddr( "01:00:5e:00:00:01" ) );
    EXPECT_EQ( ipMcastMacAddr( IpAddr( "239.255.255.250" ) ), EthAddr( "01:00:5e:7f:ff:fa" ) );
}

TEST_F( IpMcastMacAddrTest, KnowsThePrefix ) {
    EXPECT_TRUE( isIpMcastMacAddr( EthAddr( "01:00:5e:00:00:00" ) ) );
    EXPECT_TRUE( isIpMcastMacAddr( EthAddr( "01:00:5e:7f:ff:ff" ) ) );
}

TEST_F( IpMcastMacAddrTest, RefusesEveryOtherAddress ) {
    for ( char const* other : { "01:00:5e:80:00:00", "00:00:5e:00:00:01", "01:01:5e:00:00:01",
                                "01:00:5f:00:00:01", "ff:ff:ff:ff:ff:ff", "02:00:00:00:00:01" } ) {
        EXPECT_FALSE( isIpMcastMacAddr( EthAddr( other ) ) ) << other;
    }
}

} // namespace Zornet
