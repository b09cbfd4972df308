#include "vlan/VlanPktMultiplexer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/zornet/EthDevPam.h"
#include "tests/platform/zornet/AssertionText.h"
#include "tests/platform/zornet/EmptyPktManager.h"
#include "tests/support/SimulatedTest.h"
#include "tests/support/TraceCapture.h"
#include "tests/vlan/FakePam.h"

namespace Zornet {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Counts its signals, and reads nothing.
class CountingMultiplexer : public VlanPktMultiplexer {
  public:
    CountingMultiplexer() : VlanPktMultiplexer( nullptr, IntfId( "eth7" ) ) {}
    void handleRxPkt() override { ++signals; }

    U32 signals = 0;
};

class VlanPktMultiplexerTest : public Support::SimulatedTest {
  protected:
    void send( Kiv::Ptr<Pkt> const& pkt, bool tag = true ) {
        multiplexer_->handleVerifiedTxPkt( Bridging::VlanId( 100 ), pkt, tag );
    }

    Kiv::Ptr<FakePam> device_{ new FakePam };
    Kiv::Ptr<CountingMultiplexer> multiplexer_{ Kiv::stateMachineIs<CountingMultiplexer>() };
    Bridging::VlanId const vlan100_{ U16{ 100 } };
    Bridging::VlanId const vlan200_{ U16{ 200 } };
};

TEST_F( VlanPktMultiplexerTest, NewOneHasItsDefaults ) {
    Kiv::Ptr<VlanPktMultiplexer> const fresh =
        VlanPktMultiplexer::VlanPktMultiplexerIs( Kiv::defaultActivity(), IntfId( "eth7" ) );
    EXPECT_EQ( fresh->intf(), IntfId( "eth7" ) );
    EXPECT_EQ( fresh->kivFwkActivity(), Kiv::defaultActivity() );
    EXPECT_FALSE( fresh->innerPam() );
    EXPECT_FALSE( fresh->innerEthDevPam() );
    EXPECT_EQ( fresh->blocked().size(), 0U );
    EXPECT_TRUE( fresh->copyPktBeforeTx() );
    EXPECT_TRUE( fresh->hasNotificationActive() );
}

TEST_F( VlanPktMultiplexerTest, BaseCannotReceive ) {
    auto const base = VlanPktMultiplexer::VlanPktMultiplexerIs( nullptr, IntfId( "eth7" ) );
    EXPECT_DEATH(
        base->handleRxPkt(), assertionText( R"(0 && "Need to implement handleRxPkt in a derived class")" )
    );
}

TEST_F( VlanPktMultiplexerTest, BaseCannotSend ) {
    auto const base = VlanPktMultiplexer::VlanPktMultiplexerIs( nullptr, IntfId( "eth7" ) );
    EXPECT_DEATH(
        base->handleTxPkt( vlan100_, nullptr ),
        assertionText( R"(0 && "Need to implement handleTxPkt in a derived class")" )
    );
}

TEST_F( VlanPktMultiplexerTest, EachSignalOfTheDeviceIsHandledOnce ) {
    multiplexer_->innerPamIs( device_ );
    device_->arrive( untaggedFrame );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 2U );
    EXPECT_EQ( multiplexer_->innerPam(), device_ );
}

TEST_F( VlanPktMultiplexerTest, FirstDeviceIsNotReadBeforeItSignals ) {
    device_->arrive( untaggedFrame );
    multiplexer_->innerPamIs( device_ );
    EXPECT_EQ( multiplexer_->signals, 0U );
}

TEST_F( VlanPktMultiplexerTest, MoveToAnotherDeviceReadsAtOnce ) {
    Kiv::Ptr<FakePam> const other( new FakePam );
    multiplexer_->innerPamIs( device_ );
    multiplexer_->innerPamIs( other );
    EXPECT_EQ( multiplexer_->signals, 1U );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 1U );
    other->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 2U );
}

TEST_F( VlanPktMultiplexerTest, SameDeviceAgainChangesNothing ) {
    multiplexer_->innerPamIs( device_ );
    multiplexer_->innerPamIs( device_ );
    EXPECT_EQ( multiplexer_->signals, 0U );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 1U );
}

TEST_F( VlanPktMultiplexerTest, NullDeviceEndsTheSignals ) {
    multiplexer_->innerPamIs( device_ );
    multiplexer_->innerPamIs( nullptr );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 0U );
    EXPECT_FALSE( multiplexer_->innerPam() );
    EXPECT_EQ( device_->references(), 1U );
}

TEST_F( VlanPktMultiplexerTest, InactiveOneHearsNothingUntilItIsActiveAgain ) {
    multiplexer_->innerPamIs( device_ );
    multiplexer_->hasNotificationActiveIs( false );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 0U );
    multiplexer_->hasNotificationActiveIs( true );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 1U );
}

TEST_F( VlanPktMultiplexerTest, ZombieHearsNothing ) {
    multiplexer_->innerPamIs( device_ );
    multiplexer_->kivDoZombieReactors( true );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 0U );
}

TEST_F( VlanPktMultiplexerTest, ZombieReadsNothingWhenItMoves ) {
    multiplexer_->innerPamIs( device_ );
    multiplexer_->kivDoZombieReactors( true );
    multiplexer_->innerPamIs( Kiv::Ptr<FakePam>( new FakePam ) );
    EXPECT_EQ( multiplexer_->signals, 0U );
}

TEST_F( VlanPktMultiplexerTest, DeferredSignalsAreHandledOnceOnTheNextTurn ) {
    deferredDeliveryIs( true );
    multiplexer_->innerPamIs( device_ );
    device_->arrive( untaggedFrame );
    device_->arrive( untaggedFrame );
    EXPECT_EQ( multiplexer_->signals, 0U );
    settle();
    EXPECT_EQ( multiplexer_->signals, 1U );
}

TEST_F( VlanPktMultiplexerTest, DeferredSignalDiesWithTheMultiplexer ) {
    deferredDeliveryIs( true );
    multiplexer_->innerPamIs( device_ );
    device_->arrive( untaggedFrame );
    multiplexer_ = nullptr;
    settle();
    EXPECT_FALSE( device_->hasNotifiees() );
    EXPECT_EQ( device_->references(), 1U );
}

TEST_F( VlanPktMultiplexerTest, KeepsTheDeviceByItsType ) {
    Kiv::Ptr<EthDevPam> const device = EthDevPamIs( "lan0" );
    multiplexer_->innerPamIs( device );
    multiplexer_->innerEthDevPamIs( device );
    EXPECT_EQ( multiplexer_->innerEthDevPam(), device );
    EXPECT_EQ( multiplexer_->innerPam(), device );
}

TEST_F( VlanPktMultiplexerTest, BlockedIsStoredByVlan ) {
    multiplexer_->blockedIs( vlan100_, true );
    multiplexer_->blockedIs( vlan200_, true );
    multiplexer_->blockedIs( vlan200_, false );
    EXPECT_TRUE( multiplexer_->blocked( vlan100_ ) );
    EXPECT_FALSE( multiplexer_->blocked( vlan200_ ) );
    EXPECT_EQ( multiplexer_->blocked().size(), 2U );
    multiplexer_->blockedNotify( vlan100_ );
    multiplexer_->blockedDel( vlan100_ );
    EXPECT_FALSE( multiplexer_->blocked( vlan100_ ) );
    multiplexer_->blockedDel( multiplexer_->blocked().begin() );
    EXPECT_EQ( multiplexer_->blocked().size(), 0U );
}

TEST_F( VlanPktMultiplexerTest, SendsACopyAndLeavesTheCallersPacket ) {
    multiplexer_->innerPamIs( device_ );
    Kiv::Ptr<Pkt> const pkt = pktOf( taggedFrame( "a0c8" ) );
    send( pkt );
    EXPECT_THAT( device_->sent, ElementsAre( ungrouped( taggedFrame( "a064" ) ) ) );
    EXPECT_EQ( frameOf( pkt ), ungrouped( taggedFrame( "a0c8" ) ) );
    EXPECT_NE( device_->sentPkts[0], pkt );
}

TEST_F( VlanPktMultiplexerTest, CopyTakesTheWholeFrameAndNoOffsets ) {
    multiplexer_->innerPamIs( device_ );
    Kiv::Ptr<Pkt> const pkt = pktOf( untaggedFrame );
    pkt->beginOffsetIs( 14 );
    send( pkt );
    EXPECT_THAT( device_->sent, ElementsAre( ungrouped( taggedFrame( "0064" ) ) ) );
    EXPECT_EQ( device_->sentPkts[0]->beginOffset(), 0U );
}

TEST_F( VlanPktMultiplexerTest, WithoutACopyTheCallersPacketIsRetaggedAndSent ) {
    multiplexer_->innerPamIs( device_ );
    multiplexer_->copyPktBeforeTxIs( false );
    Kiv::Ptr<Pkt> const pkt = pktOf( taggedFrame( "a0c8" ) );
    send( pkt );
    EXPECT_EQ( frameOf( pkt ), ungrouped( taggedFrame( "a064" ) ) );
    EXPECT_THAT( device_->sentPkts, ElementsAre( pkt ) );
}

TEST_F( VlanPktMultiplexerTest, SendsUntaggedWhenAskedTo ) {
    multiplexer_->innerPamIs( device_ );
    send( pktOf( taggedFrame( "a0c8" ) ), false );
    EXPECT_THAT( device_->sent, ElementsAre( ungrouped( untaggedFrame ) ) );
}

TEST_F( VlanPktMultiplexerTest, CannotSendTheFrameWithTwoTagsUntagged ) {
    multiplexer_->innerPamIs( device_ );
    Kiv::Ptr<Pkt> const pkt = pktOf( doublyTaggedFrame( "0064", "00c8" ) );
    EXPECT_DEATH( send( pkt, false ), assertionText( "vlanIdFromEthPkt( pktCopy ) == 0" ) );
}

TEST_F( VlanPktMultiplexerTest, NullPacketCannotBeCopied ) {
    multiplexer_->innerPamIs( device_ );
    EXPECT_DEATH( send( nullptr ), assertionText( "0" ) );
}

TEST_F( VlanPktMultiplexerTest, LackOfAPacketToCopyToIsFatal ) {
    multiplexer_->innerPamIs( device_ );
    Kiv::Ptr<Pkt> const pkt = pktOf( untaggedFrame );
    EXPECT_DEATH(
        {
            globalPktManagerIs( new EmptyPktManager );
            send( pkt );
        },
        assertionText( "null Ptr" )
    );
}

TEST_F( VlanPktMultiplexerTest, SendingIsTracedAsLinkLocal ) {
    multiplexer_->innerPamIs( device_ );
    Support::TraceCapture const trace( "LinkLocalTrace", 9 );
    send( pktOf( untaggedFrame ) );
    ASSERT_EQ( trace.texts().size(), 2U );
    EXPECT_EQ( trace.texts()[1], "done" );
    EXPECT_THAT( trace.levels(), Each( 8 ) );
}

TEST_F( VlanPktMultiplexerTest, SendingIsNoIgmpTrace ) {
    multiplexer_->innerPamIs( device_ );
    Support::TraceCapture const trace( "Igmp", 9 );
    send( pktOf( untaggedFrame ) );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_F( VlanPktMultiplexerTest, LiveOnesAreCounted ) {
    U32 const before = VlanPktMultiplexer::live();
    auto another = VlanPktMultiplexer::VlanPktMultiplexerIs( nullptr, IntfId( "eth8" ) );
    EXPECT_EQ( VlanPktMultiplexer::live(), before + 1 );
    another = nullptr;
    EXPECT_EQ( VlanPktMultiplexer::live(), before );
}

TEST_F( VlanPktMultiplexerTest, AttributeNumbersAreStable ) {
    EXPECT_EQ( VlanPktMultiplexer::attrKivFwkActivity, 130 );
    EXPECT_EQ( VlanPktMultiplexer::attrIntf, 131 );
    EXPECT_EQ( VlanPktMultiplexer::attrInnerPam, 132 );
    EXPECT_EQ( VlanPktMultiplexer::attrInnerEthDevPam, 133 );
    EXPECT_EQ( VlanPktMultiplexer::attrBlocked, 134 );
    EXPECT_EQ( VlanPktMultiplexer::attrCopyPktBeforeTx, 135 );
}

} // namespace Zornet
