#include "vlan/VlanPamMultiplexer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/zornet/RangeMessage.h"
#include "tests/support/SimulatedTest.h"
#include "tests/support/TraceCapture.h"
#include "tests/vlan/FakePam.h"
#include "tests/vlan/FakeReader.h"

namespace Zornet {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VlanPamMultiplexerTest : public Support::SimulatedTest {
  protected:
    VlanPamMultiplexerTest() { multiplexer_->innerPamIs( device_ ); }
    ~VlanPamMultiplexerTest() override { multiplexer_->vlanPamDelAll(); }

    Kiv::Ptr<VlanPam> channelIs( U16 vlanId ) {
        Kiv::Ptr<VlanPam> const channel = VlanPam::VlanPamIs( std::to_string( vlanId ), multiplexer_ );
        multiplexer_->vlanPamIs( channel );
        return channel;
    }
    Kiv::Ptr<FakeReader> readerIs( U16 vlanId ) { return new FakeReader( channelIs( vlanId ) ); }

    Kiv::Ptr<FakePam> device_{ new FakePam };
    Kiv::Ptr<VlanPamMultiplexer> multiplexer_ =
        VlanPamMultiplexer::VlanPamMultiplexerIs( nullptr, IntfId( "eth7" ) );
};

TEST_F( VlanPamMultiplexerTest, FrameReachesItsChannelWithoutItsTag ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    device_->arrive( taggedFrame( "e064" ) );
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( untaggedFrame ) ) );
    EXPECT_EQ( device_->waiting(), 0U );
}

TEST_F( VlanPamMultiplexerTest, FrameWithTwoTagsReachesTheOuterVlanWithItsInnerTag ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    Kiv::Ptr<FakeReader> const innerReader = readerIs( 200 );
    device_->arrive( doublyTaggedFrame( "0064", "a0c8" ) );
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( taggedFrame( "a0c8" ) ) ) );
    EXPECT_EQ( innerReader->signals, 0U );
}

TEST_F( VlanPamMultiplexerTest, ChannelsOfOtherVlansHearNothing ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    Kiv::Ptr<FakeReader> const other = readerIs( 101 );
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( reader->signals, 1U );
    EXPECT_EQ( other->signals, 0U );
}

TEST_F( VlanPamMultiplexerTest, EveryVlanHasRoomForAChannel ) {
    std::vector<Kiv::Ptr<FakeReader>> readers;
    for ( U16 vlanId = 1; vlanId <= 4094; ++vlanId ) {
        readers.push_back( readerIs( vlanId ) );
    }
    for ( U32 vlanId : { 1U, 2048U, 4094U } ) {
        U8 const tag[] = { static_cast<U8>( vlanId >> 8 ), static_cast<U8>( vlanId ) };
        device_->arrive( taggedFrame( hex( tag ) ) );
        EXPECT_EQ( readers[vlanId - 1]->read.size(), 1U );
    }
    EXPECT_EQ( multiplexer_->vlanPams(), 4094U );
}

TEST_F( VlanPamMultiplexerTest, UntaggedFrameIsSkipped ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 0 );
    Support::TraceCapture const trace( "Igmp", 3 );
    device_->arrive( untaggedFrame );
    EXPECT_THAT( trace.texts(), ElementsAre( "Skip untagged pkt on this channel." ) );
    EXPECT_THAT( trace.levels(), ElementsAre( 3 ) );
    EXPECT_EQ( reader->signals, 0U );
    EXPECT_EQ( device_->waiting(), 0U );
}

TEST_F( VlanPamMultiplexerTest, FrameWithVlan0InItsTagIsSkipped ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 0 );
    Support::TraceCapture const trace( "Igmp", 3 );
    device_->arrive( taggedFrame( "e000" ) );
    EXPECT_THAT( trace.texts(), ElementsAre( "Skip untagged pkt on this channel." ) );
    EXPECT_EQ( reader->signals, 0U );
}

TEST_F( VlanPamMultiplexerTest, FrameOfAVlanWithoutAChannelIsIgnored ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    Support::TraceCapture const trace( "Igmp", 9 );
    device_->arrive( taggedFrame( "00c8" ) );
    EXPECT_EQ( trace.texts().back(), "Ignoring pkt for vlan 200 on eth7" );
    EXPECT_EQ( trace.levels().back(), 9 );
    EXPECT_EQ( device_->waiting(), 0U );
}

TEST_F( VlanPamMultiplexerTest, DeliveryIsTraced ) {
    channelIs( 100 );
    Support::TraceCapture const trace( "Igmp", 9 );
    device_->arrive( taggedFrame( "0064" ) );
    ASSERT_GE( trace.texts().size(), 2U );
    EXPECT_THAT( trace.texts()[0], ::testing::EndsWith( " on eth7" ) );
    EXPECT_EQ( trace.levels()[0], 8 );
    EXPECT_EQ( trace.texts()[1], "Delivering pkt for vlan 100" );
    EXPECT_EQ( trace.levels()[1], 9 );
}

TEST_F( VlanPamMultiplexerTest, SignalWithoutAFrameDoesNothing ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    Support::TraceCapture const trace( "Igmp", 7 );
    device_->readableCountInc( 1 );
    EXPECT_THAT( trace.texts(), IsEmpty() );
    EXPECT_EQ( reader->signals, 0U );
}

TEST_F( VlanPamMultiplexerTest, OneSignalTakesOneFrame ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    device_->queue( taggedFrame( "0064" ) );
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( reader->read.size(), 1U );
    EXPECT_EQ( device_->waiting(), 1U );
}

TEST_F( VlanPamMultiplexerTest, FrameShorterThanATagIsSkipped ) {
    Support::TraceCapture const trace( "Igmp", 3 );
    device_->arrive( addresses + "8100 00" );
    EXPECT_THAT( trace.texts(), ElementsAre( "Skip untagged pkt on this channel." ) );
}

TEST_F( VlanPamMultiplexerTest, LaterChannelOfAVlanReplacesTheEarlier ) {
    Kiv::Ptr<FakeReader> const earlier = readerIs( 100 );
    Kiv::Ptr<FakeReader> const later = readerIs( 100 );
    EXPECT_EQ( multiplexer_->vlanPams(), 1U );
    EXPECT_EQ( multiplexer_->vlanPam( 100 ).get(), later->notifier() );
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( earlier->signals, 0U );
    EXPECT_EQ( later->signals, 1U );
}

TEST_F( VlanPamMultiplexerTest, NullChannelIsRefused ) {
    EXPECT_EQ(
        rangeMessage( [this] { multiplexer_->vlanPamIs( nullptr ); } ),
        "null _vlanPam parameter to mutator for Zornet::VlanPamMultiplexer::vlanPam not allowed\""
    );
    EXPECT_EQ( multiplexer_->vlanPams(), 0U );
}

TEST_F( VlanPamMultiplexerTest, ChannelsCanBeTakenOut ) {
    channelIs( 100 );
    channelIs( 200 );
    channelIs( 300 );
    multiplexer_->vlanPamDel( 200 );
    multiplexer_->vlanPamDel( 200 );
    EXPECT_FALSE( multiplexer_->vlanPam( 200 ) );
    EXPECT_EQ( multiplexer_->vlanPams(), 2U );
    multiplexer_->vlanPamDel( multiplexer_->vlanPam().begin() );
    EXPECT_EQ( multiplexer_->vlanPams(), 1U );
    multiplexer_->vlanPamDelAll();
    EXPECT_EQ( multiplexer_->vlanPams(), 0U );
}

TEST_F( VlanPamMultiplexerTest, ChannelStaysUnderTheVlanItCameWith ) {
    Kiv::Ptr<VlanPam> const channel = channelIs( 100 );
    channel->vlanIdIs( 200 );
    EXPECT_EQ( multiplexer_->vlanPam( 100 ), channel );
    EXPECT_FALSE( multiplexer_->vlanPam( 200 ) );
}

TEST_F( VlanPamMultiplexerTest, ChannelSendsWithItsTag ) {
    Kiv::Ptr<VlanPam> const channel = channelIs( 100 );
    Kiv::Ptr<Pkt> const pkt = pktOf( untaggedFrame );
    channel->txPktIs( pkt );
    EXPECT_THAT( device_->sent, ElementsAre( ungrouped( taggedFrame( "0064" ) ) ) );
    EXPECT_EQ( frameOf( pkt ), ungrouped( untaggedFrame ) );
}

TEST_F( VlanPamMultiplexerTest, SendingIsTraced ) {
    Support::TraceCapture const trace( "Igmp", 8 );
    multiplexer_->handleTxPkt( Bridging::VlanId( U16{ 100 } ), pktOf( untaggedFrame ) );
    ASSERT_EQ( trace.texts().size(), 1U );
    EXPECT_THAT( trace.texts()[0], ::testing::EndsWith( " on eth7 for vlan 100" ) );
    EXPECT_THAT( trace.levels(), ElementsAre( 8 ) );
}

TEST_F( VlanPamMultiplexerTest, VlanWithoutAChannelSendsNothing ) {
    channelIs( 100 );
    VlanPam::VlanPamIs( "200", multiplexer_ )->txPktIs( pktOf( untaggedFrame ) );
    EXPECT_THAT( device_->sent, IsEmpty() );
}

TEST_F( VlanPamMultiplexerTest, NullPacketIsNotSent ) {
    channelIs( 100 )->txPktIs( nullptr );
    EXPECT_THAT( device_->sent, IsEmpty() );
}

TEST_F( VlanPamMultiplexerTest, BlockedChangesNeitherDirection ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    multiplexer_->blockedIs( Bridging::VlanId( U16{ 100 } ), true );
    device_->arrive( taggedFrame( "0064" ) );
    reader->notifier()->txPktIs( pktOf( untaggedFrame ) );
    EXPECT_EQ( reader->read.size(), 1U );
    EXPECT_EQ( device_->sent.size(), 1U );
}

TEST_F( VlanPamMultiplexerTest, FrameIsHandledInsideTheDevicesSignal ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    bool insideTheSignal = false;
    bool handledInside = false;
    reader->then = [&] { handledInside = insideTheSignal; };
    insideTheSignal = true;
    device_->arrive( taggedFrame( "0064" ) );
    insideTheSignal = false;
    EXPECT_TRUE( handledInside );
}

TEST_F( VlanPamMultiplexerTest, ReaderThatTakesItsChannelOutInsideTheSignalDoesNoHarm ) {
    Kiv::Ptr<FakeReader> reader = readerIs( 100 );
    reader->then = [&] {
        multiplexer_->vlanPamDel( 100 );
        reader = nullptr;
    };
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( multiplexer_->vlanPams(), 0U );
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( device_->waiting(), 0U );
}

TEST_F( VlanPamMultiplexerTest, MultiplexerAndChannelsStayWhenNobodyElseHoldsThem ) {
    U32 const multiplexers = VlanPktMultiplexer::live();
    U32 const channels = VlanPam::live();
    auto dropped = VlanPamMultiplexer::VlanPamMultiplexerIs( nullptr, IntfId( "eth8" ) );
    VlanPamMultiplexer* const raw = dropped.get();
    dropped->vlanPamIs( VlanPam::VlanPamIs( "100", dropped ) );
    dropped = nullptr;
    EXPECT_EQ( VlanPktMultiplexer::live(), multiplexers + 1 );
    EXPECT_EQ( VlanPam::live(), channels + 1 );

    raw->vlanPamDelAll();
    EXPECT_EQ( VlanPktMultiplexer::live(), multiplexers );
    EXPECT_EQ( VlanPam::live(), channels );
}

TEST_F( VlanPamMultiplexerTest, MultiplexerWithoutChannelsGoesWithItsLastUser ) {
    U32 const before = VlanPktMultiplexer::live();
    auto dropped = VlanPamMultiplexer::VlanPamMultiplexerIs( nullptr, IntfId( "eth8" ) );
    dropped->innerPamIs( device_ );
    dropped = nullptr;
    EXPECT_EQ( VlanPktMultiplexer::live(), before );
}

TEST_F( VlanPamMultiplexerTest, DeferredFrameReachesItsReader ) {
    Kiv::Ptr<FakeReader> const reader = readerIs( 100 );
    deferredDeliveryIs( true );
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( device_->waiting(), 1U );
    settle();
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( untaggedFrame ) ) );
}

TEST_F( VlanPamMultiplexerTest, DeferredFramesOfTwoVlansTakeASignalEach ) {
    Kiv::Ptr<FakeReader> const first = readerIs( 100 );
    Kiv::Ptr<FakeReader> const second = readerIs( 200 );
    deferredDeliveryIs( true );
    device_->arrive( taggedFrame( "0064" ) );
    settle();
    device_->arrive( taggedFrame( "00c8" ) );
    settle();
    EXPECT_EQ( first->read.size(), 1U );
    EXPECT_EQ( second->read.size(), 1U );
}

TEST_F( VlanPamMultiplexerTest, AttributeNumbersAreStable ) {
    EXPECT_EQ( VlanPamMultiplexer::attrVlanPam, 136 );
}

} // namespace Zornet
