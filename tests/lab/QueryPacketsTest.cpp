#include "lab/QueryPackets.h"

#include <gtest/gtest.h>

#include <numeric>

#include "lab/IgmpFrame.h"
#include "platform/zornet/Pkt.h"
#include "tests/platform/zornet/Hex.h"
#include "tests/support/Frames.h"

namespace Lab {

using Zornet::hex;
using Zornet::ungrouped;

class QueryPacketsTest : public ::testing::Test {
  protected:
    IpAddr const group{ "239.1.1.1" };
    std::vector<IpAddr> const sources{ IpAddr( "10.1.0.1" ), IpAddr( "10.1.0.2" ) };

    static QuerierConfig version( U8 version ) {
        QuerierConfig config;
        config.version = version;
        return config;
    }
    static std::string frameHex( Kiv::Ptr<Zornet::Pkt> const& pkt ) {
        Bytes bytes( pkt->bytes() );
        pkt->copyTo( bytes.data() );
        return hex( bytes );
    }
    /// The IGMP message of an untagged frame with Router Alert.
    static std::string messageHex( Kiv::Ptr<Zornet::Pkt> const& pkt ) { return frameHex( pkt ).substr( 76 ); }
};

TEST_F( QueryPacketsTest, Version1GeneralQueryHasNoResponseTime ) {
    EXPECT_EQ( messageHex( QueryPackets( version( 1 ) ).general() ), "1100eeff00000000" );
}

TEST_F( QueryPacketsTest, Version2GeneralQueryTellsTenthsOfASecond ) {
    EXPECT_EQ( messageHex( QueryPackets( version( 2 ) ).general() ), "1164ee9b00000000" );
}

TEST_F( QueryPacketsTest, Version3GeneralQueryTellsRobustnessAndInterval ) {
    EXPECT_EQ( messageHex( QueryPackets( version( 3 ) ).general() ), "1164ec1e00000000027d0000" );
}

TEST_F( QueryPacketsTest, GeneralQueryGoesToAllSystemsWithRouterAlertAndHopLimitOne ) {
    std::string const frame = "01005e000001 0200000000fe 0800"
                              "46000020000000000102 39d9 0a0000fe e0000001 94040000 1164ee9b00000000";
    EXPECT_EQ( frameHex( QueryPackets( version( 2 ) ).general() ), ungrouped( frame ) );
}

TEST_F( QueryPacketsTest, TaggedQueryWithoutRouterAlert ) {
    QuerierConfig config = version( 2 );
    config.vlanId = Bridging::VlanId( 100 );
    config.routerAlert = false;
    std::string const frame = "01005e000001 0200000000fe 81000064 0800"
                              "4500001c000000000102 cee1 0a0000fe e0000001 1164ee9b00000000";
    EXPECT_EQ( frameHex( QueryPackets( config ).general() ), ungrouped( frame ) );
}

TEST_F( QueryPacketsTest, GroupQueryOfVersion2HasEightBytes ) {
    EXPECT_EQ( messageHex( QueryPackets( version( 2 ) ).group( group, true ) ), "110afef2ef010101" );
}

TEST_F( QueryPacketsTest, GroupQueryOfVersion3CarriesTheSuppressFlag ) {
    QueryPackets packets( version( 3 ) );
    EXPECT_EQ( messageHex( packets.group( group, true ) ), "110af475ef0101010a7d0000" );
    EXPECT_EQ( messageHex( packets.group( group, false ) ).substr( 16, 2 ), "02" );
}

TEST_F( QueryPacketsTest, GroupAndSourceQueryGoesToTheGroup ) {
    std::string const frame =
        "01005e010101 0200000000fe 0800 4600002c000000000102 29cc 0a0000fe ef010101 94040000"
        "110ae86eef010101027d0002 0a010001 0a010002";
    EXPECT_EQ(
        frameHex( QueryPackets( version( 3 ) ).groupAndSources( group, sources, false ) ), ungrouped( frame )
    );
}

TEST_F( QueryPacketsTest, SourceQueryShrinksAndGrowsWithItsSources ) {
    QueryPackets packets( version( 3 ) );
    std::string const two = frameHex( packets.groupAndSources( group, sources, false ) );
    std::string const one = frameHex( packets.groupAndSources( group, { sources.data(), 1 }, false ) );
    EXPECT_EQ( one.size(), two.size() - 8 );
    EXPECT_EQ( frameHex( packets.groupAndSources( group, sources, false ) ), two );
}

TEST_F( QueryPacketsTest, MtuLimitsTheSourcesOfOneQuery ) {
    QuerierConfig config;
    EXPECT_EQ( QueryPackets( config ).sourcesPerQuery(), 366U );
    config.routerAlert = false;
    config.mtu = 68;
    EXPECT_EQ( QueryPackets( config ).sourcesPerQuery(), 9U );
}

TEST_F( QueryPacketsTest, FullestQueryIsWellFormed ) {
    QueryPackets packets( version( 3 ) );
    std::vector<IpAddr> const many( 366, IpAddr( "10.1.0.1" ) );
    Kiv::Ptr<Zornet::Pkt> const pkt = packets.groupAndSources( group, many, true );
    IgmpFrame const frame( { pkt->front(), pkt->bytes() }, {} );
    EXPECT_EQ( pkt->bytes(), 14U + 1500U );
    EXPECT_EQ( frame.verdict(), IgmpFrame::Verdict::good );
    EXPECT_EQ( frame.v3Query().messageBytes(), frame.igmpBytes() );
}

TEST_F( QueryPacketsTest, MoreSourcesThanFitEndTheProcess ) {
    QueryPackets packets( version( 3 ) );
    std::vector<IpAddr> const many( 367 );
    EXPECT_DEATH( packets.groupAndSources( group, many, true ), "sources fit a version 3 query" );
}

TEST_F( QueryPacketsTest, LongTimesUseTheExponentialCode ) {
    QuerierConfig config = version( 3 );
    config.queryInterval = 1024.0;        // 0x10 << 6
    config.queryResponseInterval = 102.4; // 1024 tenths
    EXPECT_EQ( messageHex( QueryPackets( config ).general() ).substr( 0, 4 ), "11b0" );
    EXPECT_EQ( messageHex( QueryPackets( config ).general() ).substr( 18, 2 ), "b0" );
}

TEST_F( QueryPacketsTest, RobustnessAboveSevenIsSentAsZero ) {
    QuerierConfig config = version( 3 );
    config.robustness = 9;
    EXPECT_EQ( messageHex( QueryPackets( config ).general() ).substr( 16, 2 ), "00" );
    config.robustness = 7;
    EXPECT_EQ( messageHex( QueryPackets( config ).general() ).substr( 16, 2 ), "07" );
}

} // namespace Lab
