#include "agent/demo/VlanTrunk.h"

#include <gmock/gmock.h>

#include "lab/Wire.h"
#include "platform/zornet/PktManager.h"
#include "tests/support/Frames.h"
#include "tests/support/SimulatedTest.h"

namespace Agent {

namespace {

using Lab::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::IpAddr;

/// A wire of one segment.
struct Lan : Lab::Wire {
    explicit Lan( Kiv::Ptr<Lumo::TimerWheel const> const& wheel ) : Wire( wheel ) {
        defaultSegmentIs( "lan" );
    }
};

/// A trunk on one device of a wire and a station on another.
class VlanTrunkTest : public Support::SimulatedTest {
  protected:
    static Kiv::Ptr<Zornet::EthDevPam> open( char const* device ) {
        Kiv::Ptr<Zornet::EthDevPam> const pam = Zornet::EthDevPamIs( device );
        pam->deviceOpenIs( true );
        return pam;
    }
    Kiv::Ptr<Zornet::Pam> vlan( Zornet::U16 number ) { return trunk_.pam( Bridging::VlanId( number ) ); }
    static Bytes frame( std::optional<Zornet::U16> tag ) {
        Lab::Manner manner;
        manner.tag = tag;
        return Lab::igmpFrame(
            IpAddr( "10.0.0.1" ), IpAddr( "239.1.1.1" ), Lab::v3ReportMessage( {} ), manner
        );
    }
    void send( Bytes const& bytes ) {
        station_->txPktIs( Zornet::pktWithBytes( bytes ) );
        settle();
    }
    static std::vector<Bytes> read( Kiv::Ptr<Zornet::Pam> const& pam ) {
        std::vector<Bytes> frames;
        while ( Kiv::Ptr<Zornet::Pkt> const pkt = pam->rxPkt() ) {
            pkt->copyTo( frames.emplace_back( pkt->bytes() ).data() );
        }
        return frames;
    }

    Lan wire_{ wheel() };
    Zornet::DeviceProviderScope const scope_{ wire_ };
    Kiv::Ptr<Zornet::EthDevPam> const station_ = open( "station" );
    VlanTrunk trunk_{ open( "trunk" ) };
};

TEST_F( VlanTrunkTest, FrameReachesItsVlanWithItsTag ) {
    Bytes const tagged = frame( Zornet::U16{ 5 } );
    vlan( 5 );
    vlan( 6 );
    send( tagged );
    EXPECT_THAT( read( vlan( 5 ) ), ElementsAre( tagged ) );
    EXPECT_THAT( read( vlan( 6 ) ), IsEmpty() );
}

TEST_F( VlanTrunkTest, EachFrameIsSignalled ) {
    vlan( 5 );
    send( frame( Zornet::U16{ 5 } ) );
    send( frame( Zornet::U16{ 5 } ) );
    EXPECT_EQ( vlan( 5 )->readableCount(), 2U );
    EXPECT_EQ( read( vlan( 5 ) ).size(), 2U );
}

TEST_F( VlanTrunkTest, FrameOfNoVlanThatIsReadIsPassedOver ) {
    vlan( 5 );
    send( frame( Zornet::U16{ 7 } ) );
    send( frame( {} ) );
    EXPECT_EQ( vlan( 5 )->readableCount(), 0U );
}

TEST_F( VlanTrunkTest, WhatIsSentLeavesAsItIs ) {
    Bytes const tagged = frame( Zornet::U16{ 5 } );
    vlan( 5 )->txPktIs( Zornet::pktWithBytes( tagged ) );
    settle();
    EXPECT_THAT( read( station_ ), ElementsAre( tagged ) );
}

} // namespace

} // namespace Agent
