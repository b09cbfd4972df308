#include "lab/IgmpFrame.h"

#include <gtest/gtest.h>

#include "tests/support/Frames.h"

namespace Lab {

class IgmpFrameTest : public ::testing::Test {
  protected:
    using Verdict = IgmpFrame::Verdict;

    static constexpr std::size_t ip = 14; ///< where the IP header begins
    IpAddr const host{ "10.0.0.1" };
    IpAddr const group{ "239.1.1.1" };
    Bytes const good = v2Report( host, group );

    static Verdict verdict( Bytes const& bytes, std::optional<Bridging::VlanId> const& vlan = {} ) {
        return IgmpFrame( bytes, vlan ).verdict();
    }
    Bytes tagged( U16 tag ) const {
        Manner manner;
        manner.tag = tag;
        Bytes const message = igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, group );
        return igmpFrame( host, group, message, manner );
    }
    /// The good frame with a byte of its IP header changed and the header's checksum put right.
    Bytes withIpByte( std::size_t at, U8 value ) const {
        Bytes frame = good;
        frame[ip + at] = value;
        fixIpChecksum( frame, 24 );
        return frame;
    }
};

TEST_F( IgmpFrameTest, GoodFrameTellsItsParts ) {
    IgmpFrame const frame( good, {} );
    ASSERT_EQ( frame.verdict(), Verdict::good );
    EXPECT_EQ( frame.src(), host );
    EXPECT_EQ( frame.dst(), group );
    EXPECT_EQ( frame.ttl(), 1 );
    EXPECT_TRUE( frame.hasRouterAlert() );
    EXPECT_EQ( frame.igmpBytes(), 8U );
    EXPECT_EQ( frame.v12().groupAddress(), group );
}

TEST_F( IgmpFrameTest, PaddingBehindThePacketIsPassedOver ) {
    Bytes frame = good;
    frame.resize( 60 );
    EXPECT_EQ( IgmpFrame( frame, {} ).igmpBytes(), 8U );
}

TEST_F( IgmpFrameTest, RouterAlertIsFoundBehindOtherOptions ) {
    Bytes const message = igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, group );
    Bytes frame = igmpFrame( host, group, message );
    Bytes const options{ 1, 7, 3, 0 }; // no operation, record route of 3 bytes
    frame.insert( frame.begin() + ip + 20, options.begin(), options.end() );
    frame[ip] = 0x47;
    frame[ip + 3] = static_cast<U8>( frame.size() - ip );
    fixIpChecksum( frame, 28 );
    EXPECT_TRUE( IgmpFrame( frame, {} ).hasRouterAlert() );
}

TEST_F( IgmpFrameTest, HeaderWithoutOptionsHasNoRouterAlert ) {
    Manner manner;
    manner.routerAlert = false;
    Bytes const message = igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, group );
    IgmpFrame const frame( igmpFrame( host, group, message, manner ), {} );
    EXPECT_FALSE( frame.hasRouterAlert() );
}

TEST_F( IgmpFrameTest, OptionOfLengthZeroDoesNotHoldItUp ) {
    Bytes frame = good;
    frame[ip + 20] = 7;
    frame[ip + 21] = 0;
    fixIpChecksum( frame, 24 );
    EXPECT_EQ( verdict( frame ), Verdict::good );
    EXPECT_FALSE( IgmpFrame( frame, {} ).hasRouterAlert() );
}

TEST_F( IgmpFrameTest, TruncationIsFoundAtEveryLength ) {
    for ( std::size_t length = 0; length < good.size(); ++length ) {
        Bytes const cut( good.begin(), good.begin() + static_cast<std::ptrdiff_t>( length ) );
        EXPECT_EQ( verdict( cut ), Verdict::truncated ) << length;
    }
}

TEST_F( IgmpFrameTest, TruncationOfATaggedFrameIsFoundAtEveryLength ) {
    Bytes const frame = tagged( 100 );
    for ( std::size_t length = 0; length < frame.size(); ++length ) {
        Bytes const cut( frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>( length ) );
        EXPECT_EQ( verdict( cut, Bridging::VlanId( 100 ) ), Verdict::truncated ) << length;
    }
}

TEST_F( IgmpFrameTest, BadIpHeaders ) {
    EXPECT_EQ( verdict( withIpByte( 0, 0x66 ) ), Verdict::badIpHeader ) << "version 6";
    EXPECT_EQ( verdict( withIpByte( 0, 0x44 ) ), Verdict::badIpHeader ) << "header of 16 bytes";
    EXPECT_EQ( verdict( withIpByte( 3, 23 ) ), Verdict::badIpHeader ) << "total length below the header's";
}

TEST_F( IgmpFrameTest, HeaderLengthBeyondTheTotalLength ) {
    EXPECT_EQ( verdict( withIpByte( 0, 0x4f ) ), Verdict::badIpHeader );
}

TEST_F( IgmpFrameTest, TotalLengthBeyondTheFrame ) {
    EXPECT_EQ( verdict( withIpByte( 3, 33 ) ), Verdict::truncated );
    EXPECT_EQ( verdict( withIpByte( 2, 0xff ) ), Verdict::truncated );
}

TEST_F( IgmpFrameTest, ChecksumOfTheIpHeader ) {
    Bytes frame = good;
    frame[ip + 12] ^= 1;
    EXPECT_EQ( verdict( frame ), Verdict::badIpChecksum );
}

TEST_F( IgmpFrameTest, OtherProtocolIsForeign ) {
    EXPECT_EQ( verdict( withIpByte( 9, 17 ) ), Verdict::foreign );
}

TEST_F( IgmpFrameTest, OtherEthernetTypeIsForeign ) {
    Bytes frame = good;
    frame[12] = 0x86;
    frame[13] = 0xdd;
    EXPECT_EQ( verdict( frame ), Verdict::foreign );
}

TEST_F( IgmpFrameTest, Fragments ) {
    EXPECT_EQ( verdict( withIpByte( 6, 0x20 ) ), Verdict::fragment ) << "more fragments";
    EXPECT_EQ( verdict( withIpByte( 6, 0x1f ) ), Verdict::fragment ) << "offset, high bits";
    EXPECT_EQ( verdict( withIpByte( 7, 1 ) ), Verdict::fragment ) << "offset, low bits";
    EXPECT_EQ( verdict( withIpByte( 6, 0x40 ) ), Verdict::good ) << "don't fragment";
}

TEST_F( IgmpFrameTest, MessageOfLessThanEightBytes ) {
    Bytes const message{ 0x16, 0, 0xe9, 0xff };
    for ( std::size_t length = 0; length <= 4; ++length ) {
        Bytes const part( message.begin(), message.begin() + static_cast<std::ptrdiff_t>( length ) );
        EXPECT_EQ( verdict( igmpFrame( host, group, part ) ), Verdict::badIgmpLength ) << length;
    }
}

TEST_F( IgmpFrameTest, ChecksumOfTheMessageCoversAllOfIt ) {
    for ( std::size_t at = good.size() - 8; at < good.size(); ++at ) {
        Bytes frame = good;
        frame[at] ^= 0x10;
        EXPECT_EQ( verdict( frame ), Verdict::badIgmpChecksum ) << at;
    }
}

TEST_F( IgmpFrameTest, UntaggedReaderHearsPriorityTagsAndNoVlan ) {
    EXPECT_EQ( verdict( tagged( 0xe000 ) ), Verdict::good );
    EXPECT_EQ( verdict( tagged( 100 ) ), Verdict::foreign );
}

TEST_F( IgmpFrameTest, TaggedReaderHearsItsVlanOnly ) {
    Bridging::VlanId const vlan( 100 );
    EXPECT_EQ( verdict( tagged( 100 ), vlan ), Verdict::good );
    EXPECT_EQ( verdict( tagged( 0xe000 | 100 ), vlan ), Verdict::good ) << "with a priority";
    EXPECT_EQ( verdict( tagged( 101 ), vlan ), Verdict::foreign );
    EXPECT_EQ( verdict( good, vlan ), Verdict::foreign );
}

} // namespace Lab
