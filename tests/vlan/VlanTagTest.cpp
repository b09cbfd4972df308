#include "vlan/VlanTag.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "tests/platform/zornet/AssertionText.h"
#include "tests/vlan/Frames.h"

namespace Zornet {

class VlanTagTest : public ::testing::Test {
  protected:
    static std::string added( std::string const& frame, U16 vlanId ) {
        Kiv::Ptr<Pkt> pkt = pktOf( frame );
        addPktVlanTag( pkt, vlanId );
        return frameOf( pkt );
    }
    static std::string stripped( std::string const& frame ) {
        Kiv::Ptr<Pkt> pkt = pktOf( frame );
        stripPktVlanTag( pkt );
        return frameOf( pkt );
    }
    static std::string fixedUp( std::string const& frame, U16 vlanId, bool tag ) {
        Kiv::Ptr<Pkt> pkt = pktOf( frame );
        fixupPktVlanTag( pkt, vlanId, tag );
        return frameOf( pkt );
    }
};

TEST_F( VlanTagTest, UntaggedFrameIsOfVlan0 ) {
    EXPECT_EQ( vlanIdFromEthPkt( pktOf( untaggedFrame ) ), 0U );
}

TEST_F( VlanTagTest, PriorityTagIsOfVlan0 ) {
    EXPECT_EQ( vlanIdFromEthPkt( pktOf( taggedFrame( "e000" ) ) ), 0U );
}

TEST_F( VlanTagTest, VlanIsTheLow12BitsOfTheTag ) {
    EXPECT_EQ( vlanIdFromEthPkt( pktOf( taggedFrame( "0001" ) ) ), 1U );
    EXPECT_EQ( vlanIdFromEthPkt( pktOf( taggedFrame( "f064" ) ) ), 100U );
    EXPECT_EQ( vlanIdFromEthPkt( pktOf( taggedFrame( "0fff" ) ) ), 4095U );
}

TEST_F( VlanTagTest, OutermostTagCounts ) {
    EXPECT_EQ( vlanIdFromEthPkt( pktOf( doublyTaggedFrame( "0064", "00c8" ) ) ), 100U );
}

TEST_F( VlanTagTest, OtherTagProtocolIsNoTag ) {
    EXPECT_EQ( vlanIdFromEthPkt( pktOf( addresses + "88a8 0064 0800" + payload ) ), 0U );
}

TEST_F( VlanTagTest, FrontStaysWhereItWasWhenTheVlanIsRead ) {
    Kiv::Ptr<Pkt> const pkt = pktOf( taggedFrame( "0064" ) );
    U8 const* const front = pkt->front();
    vlanIdFromEthPkt( pkt );
    EXPECT_EQ( pkt->front(), front );
    EXPECT_EQ( frameOf( pkt ), ungrouped( taggedFrame( "0064" ) ) );
}

TEST_F( VlanTagTest, FrameTooShortForATagHasNone ) {
    for ( std::string const& frame : { std::string(), addresses + "8100", addresses + "8100 0064 08" } ) {
        EXPECT_EQ( vlanIdFromEthPkt( pktOf( frame ) ), 0U );
        EXPECT_EQ( stripped( frame ), ungrouped( frame ) );
    }
}

TEST_F( VlanTagTest, AddedTagStandsBehindTheAddresses ) {
    EXPECT_EQ( added( untaggedFrame, 100 ), ungrouped( taggedFrame( "0064" ) ) );
}

TEST_F( VlanTagTest, AddedTagTakesTheLow12Bits ) {
    EXPECT_EQ( added( untaggedFrame, 0xf064 ), ungrouped( taggedFrame( "0064" ) ) );
}

TEST_F( VlanTagTest, AddingToATaggedFrameMakesASecondTag ) {
    EXPECT_EQ( added( taggedFrame( "a0c8" ), 100 ), ungrouped( doublyTaggedFrame( "0064", "a0c8" ) ) );
}

TEST_F( VlanTagTest, AddingNeedsNoHeadRoom ) {
    Kiv::Ptr<Pkt> pkt = pktWithBytes( fromHex( untaggedFrame ), 0 );
    addPktVlanTag( pkt, 100 );
    EXPECT_EQ( frameOf( pkt ), ungrouped( taggedFrame( "0064" ) ) );
}

TEST_F( VlanTagTest, AddingEndsTheProcessForLessThanAnEthernetHeader ) {
    Kiv::Ptr<Pkt> pkt = pktOf( addresses + "08" );
    EXPECT_DEATH( addPktVlanTag( pkt, 1 ), assertionText( "pkt->bytes() >= sizeof( EthHdr )" ) );
}

TEST_F( VlanTagTest, StrippedFrameIs4BytesShorter ) {
    EXPECT_EQ( stripped( taggedFrame( "e064" ) ), ungrouped( untaggedFrame ) );
}

TEST_F( VlanTagTest, StrippingLeavesAnUntaggedFrame ) {
    EXPECT_EQ( stripped( untaggedFrame ), ungrouped( untaggedFrame ) );
}

TEST_F( VlanTagTest, StrippingTakesTheOuterTagOnly ) {
    EXPECT_EQ( stripped( doublyTaggedFrame( "0064", "a0c8" ) ), ungrouped( taggedFrame( "a0c8" ) ) );
}

TEST_F( VlanTagTest, FixingUpATaggedFrameKeepsItsPriority ) {
    EXPECT_EQ( fixedUp( taggedFrame( "f0c8" ), 100, true ), ungrouped( taggedFrame( "f064" ) ) );
    EXPECT_EQ( fixedUp( taggedFrame( "7fff" ), 0xf001, true ), ungrouped( taggedFrame( "7001" ) ) );
}

TEST_F( VlanTagTest, FixingUpRewritesTheOuterTagOnly ) {
    EXPECT_EQ(
        fixedUp( doublyTaggedFrame( "a0c8", "0001" ), 100, true ),
        ungrouped( doublyTaggedFrame( "a064", "0001" ) )
    );
}

TEST_F( VlanTagTest, FixingUpAddsAndStrips ) {
    EXPECT_EQ( fixedUp( untaggedFrame, 100, true ), ungrouped( taggedFrame( "0064" ) ) );
    EXPECT_EQ( fixedUp( taggedFrame( "a064" ), 100, false ), ungrouped( untaggedFrame ) );
    EXPECT_EQ( fixedUp( untaggedFrame, 100, false ), ungrouped( untaggedFrame ) );
}

TEST_F( VlanTagTest, PacketRemainsTheSameObject ) {
    Kiv::Ptr<Pkt> const pkt = pktOf( untaggedFrame );
    Kiv::Ptr<Pkt> edited = pkt;
    addPktVlanTag( edited, 100 );
    fixupPktVlanTag( edited, 200, true );
    stripPktVlanTag( edited );
    EXPECT_EQ( edited, pkt );
}

TEST_F( VlanTagTest, PayloadStaysWhereItIs ) {
    Kiv::Ptr<Pkt> pkt = pktOf( untaggedFrame );
    U8 const* const payloadFront = pkt->front() + 14;
    addPktVlanTag( pkt, 100 );
    EXPECT_EQ( pkt->front() + 18, payloadFront );
    stripPktVlanTag( pkt );
    EXPECT_EQ( pkt->front() + 14, payloadFront );
}

/// Frames of random lengths and bytes, every other one of them tagged.
class RandomVlanTagTest : public VlanTagTest {
  protected:
    void eachFrame( void ( *check )( std::vector<U8> const& frame, U16 vlanId ) ) {
        for ( int i = 0; i < 2000; ++i ) {
            std::vector<U8> frame( 18 + random_() % 100 );
            std::generate( frame.begin(), frame.end(), [this] { return static_cast<U8>( random_() ); } );
            if ( i % 2 == 0 ) {
                frame[12] = 0x81;
                frame[13] = 0x00;
            }
            check( frame, static_cast<U16>( random_() ) );
        }
    }

    static constexpr unsigned seed = 20240229;
    std::mt19937 random_{ seed };
};

TEST_F( RandomVlanTagTest, StrippingUndoesAdding ) {
    eachFrame( []( std::vector<U8> const& frame, U16 vlanId ) {
        Kiv::Ptr<Pkt> pkt = pktWithBytes( frame, vlanId % 6 );
        addPktVlanTag( pkt, vlanId );
        ASSERT_EQ( vlanIdFromEthPkt( pkt ), vlanId & 0xfff );
        ASSERT_EQ( pkt->front()[14] >> 4, 0 );
        stripPktVlanTag( pkt );
        ASSERT_EQ( frameOf( pkt ), hex( frame ) );
    } );
}

TEST_F( RandomVlanTagTest, FixingUpChangesNothingButTheVlan ) {
    eachFrame( []( std::vector<U8> const& frame, U16 vlanId ) {
        Kiv::Ptr<Pkt> pkt = pktWithBytes( frame );
        bool const wasTagged = frame[12] == 0x81 && frame[13] == 0x00;
        fixupPktVlanTag( pkt, vlanId, true );
        ASSERT_EQ( vlanIdFromEthPkt( pkt ), vlanId & 0xfff );
        ASSERT_EQ( pkt->front()[14] >> 4, wasTagged ? frame[14] >> 4 : 0 );
        ASSERT_EQ( pkt->bytes(), frame.size() + ( wasTagged ? 0 : 4 ) );
        fixupPktVlanTag( pkt, 0, false );
        std::vector<U8> bare = frame;
        if ( wasTagged ) {
            bare.erase( bare.begin() + 12, bare.begin() + 16 );
        }
        ASSERT_EQ( frameOf( pkt ), hex( bare ) );
    } );
}

} // namespace Zornet
