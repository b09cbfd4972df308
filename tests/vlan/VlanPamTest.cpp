#include "vlan/VlanPam.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/zornet/RangeMessage.h"
#include "tests/support/SimulatedTest.h"
#include "tests/support/TraceCapture.h"
#include "tests/vlan/FakeReader.h"
#include "vlan/VlanPktMultiplexer.h"

namespace Zornet {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Writes down what a channel gives it to send.
class SendingMultiplexer : public VlanPktMultiplexer {
  public:
    SendingMultiplexer() : VlanPktMultiplexer( nullptr, IntfId( "eth7" ) ) {}

    void handleTxPkt( Bridging::VlanId vlanId, Kiv::Ptr<Pkt> const& pkt ) override {
        sent.push_back( std::to_string( vlanId.value() ) + ( pkt ? " " + frameOf( pkt ) : " null" ) );
    }

    std::vector<std::string> sent;
};

/// Writes down which attributes of a channel are told of, and whether a frame waits then.
class VlanPamWatcher : public VlanPam::Notifiee {
  public:
    explicit VlanPamWatcher( Kiv::Ptr<VlanPam> const& pam ) : Notifiee( pam ) {
        isRegisteredNotifieeIs( true );
    }

    void onReadableCount() override { tell( "readableCount" ); }
    void onInputPkt() override { tell( "inputPkt" ); }
    void onVlanId() override { tell( "vlanId" ); }
    void onInitialized() override { tell( "initialized" ); }

    std::vector<std::string> told;

  private:
    void tell( std::string const& attribute ) {
        told.push_back( attribute + ( notifier()->inputPkt() ? "" : ", empty" ) );
    }
};

class VlanPamTest : public Support::SimulatedTest {
  protected:
    Kiv::Ptr<VlanPam> vlanPamNamed( char const* name ) { return VlanPam::VlanPamIs( name, multiplexer_ ); }

    Kiv::Ptr<SendingMultiplexer> multiplexer_{ Kiv::stateMachineIs<SendingMultiplexer>() };
    Kiv::Ptr<VlanPam> pam_ = vlanPamNamed( "100" );
    Kiv::Ptr<Pkt> pkt_ = pktOf( untaggedFrame );
};

TEST_F( VlanPamTest, NameGivesTheVlan ) {
    EXPECT_EQ( pam_->vlanId(), 100U );
    EXPECT_TRUE( pam_->initialized() );
    EXPECT_FALSE( pam_->inputPkt() );
    EXPECT_EQ( pam_->multiplexer(), multiplexer_ );
}

TEST_F( VlanPamTest, FactoryMakesTheSame ) {
    EXPECT_EQ( vlanPamFactory( "7", multiplexer_ )->vlanId(), 7U );
}

TEST_F( VlanPamTest, NameThatIsNoNumberGivesVlan0WhichCannotSend ) {
    Kiv::Ptr<VlanPam> const pam = vlanPamNamed( "abc" );
    EXPECT_EQ( pam->vlanId(), 0U );
    EXPECT_EQ( rangeMessage( [&] { pam->txPktIs( pkt_ ); } ), "VlanId::value < 1 or > 4094 not allowed" );
    EXPECT_THAT( multiplexer_->sent, IsEmpty() );
}

TEST_F( VlanPamTest, NumberAbove65535IsCut ) {
    EXPECT_EQ( vlanPamNamed( "65537" )->vlanId(), 1U );
    EXPECT_EQ( vlanPamNamed( "-1" )->vlanId(), 65535U );
}

TEST_F( VlanPamTest, NumberEndsAtTheFirstOtherCharacter ) {
    EXPECT_EQ( vlanPamNamed( "12x4" )->vlanId(), 12U );
    EXPECT_EQ( vlanPamNamed( "" )->vlanId(), 0U );
}

TEST_F( VlanPamTest, SendsThroughTheMultiplexerForItsVlan ) {
    pam_->txPktIs( pkt_ );
    pam_->txPktIs( nullptr );
    EXPECT_THAT( multiplexer_->sent, ElementsAre( "100 " + ungrouped( untaggedFrame ), "100 null" ) );
}

TEST_F( VlanPamTest, Vlan4094Sends ) {
    vlanPamNamed( "4094" )->txPktIs( pkt_ );
    EXPECT_EQ( multiplexer_->sent.size(), 1U );
}

TEST_F( VlanPamTest, Vlan4095CannotSend ) {
    Kiv::Ptr<VlanPam> const pam = vlanPamNamed( "4095" );
    EXPECT_EQ( rangeMessage( [&] { pam->txPktIs( pkt_ ); } ), "VlanId::value < 1 or > 4094 not allowed" );
    EXPECT_THAT( multiplexer_->sent, IsEmpty() );
}

TEST_F( VlanPamTest, FrameIsReadBeforeItsArrivalReturns ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    pam_->inputPktIs( pkt_ );
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( untaggedFrame ) ) );
    EXPECT_FALSE( pam_->inputPkt() );
    EXPECT_EQ( pam_->readableCount(), 1U );
}

TEST_F( VlanPamTest, ReadingWithNothingWaitingGivesNull ) {
    EXPECT_FALSE( pam_->rxPkt() );
    EXPECT_EQ( pam_->readableCount(), 0U );
    EXPECT_EQ( pam_->modificationCount(), vlanPamNamed( "100" )->modificationCount() );
}

TEST_F( VlanPamTest, FrameArrivingWhileTheReaderIsBlockedIsReplacedByTheNext ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    reader->blocked = true;
    pam_->inputPktIs( pkt_ );
    EXPECT_EQ( pam_->inputPkt(), pkt_ );
    Kiv::Ptr<Pkt> const next = pktOf( untaggedFrame );
    pam_->inputPktIs( next );
    EXPECT_EQ( pam_->readableCount(), 2U );
    EXPECT_EQ( pkt_->references(), 1U );
    EXPECT_EQ( pam_->rxPkt(), next );
    EXPECT_FALSE( pam_->rxPkt() );
}

TEST_F( VlanPamTest, ArrivalCountsAsTwoModifications ) {
    U32 const modifications = pam_->modificationCount();
    pam_->inputPktIs( pkt_ );
    EXPECT_EQ( pam_->modificationCount(), modifications + 2 ); // the frame and the signal
}

TEST_F( VlanPamTest, FrameThatWaitsAlreadyIsNoArrival ) {
    pam_->inputPktIs( pkt_ );
    U32 const modifications = pam_->modificationCount();
    pam_->inputPktIs( pkt_ );
    EXPECT_EQ( pam_->readableCount(), 1U );
    EXPECT_EQ( pam_->modificationCount(), modifications );
}

TEST_F( VlanPamTest, NullOnAnEmptySlotDoesNothing ) {
    Kiv::Ptr<VlanPamWatcher> const watcher( new VlanPamWatcher( pam_ ) );
    U32 const modifications = pam_->modificationCount();
    pam_->inputPktIs( nullptr );
    EXPECT_THAT( watcher->told, IsEmpty() );
    EXPECT_EQ( pam_->modificationCount(), modifications );
    EXPECT_EQ( pam_->readableCount(), 0U );
}

TEST_F( VlanPamTest, NullOnAFrameThatWaitsTakesItWithoutASignal ) {
    pam_->inputPktIs( pkt_ );
    pam_->inputPktIs( nullptr );
    EXPECT_FALSE( pam_->inputPkt() );
    EXPECT_EQ( pam_->readableCount(), 1U );
}

TEST_F( VlanPamTest, SignalComesBeforeTheChangeIsTold ) {
    Kiv::Ptr<VlanPamWatcher> const watcher( new VlanPamWatcher( pam_ ) );
    pam_->inputPktIs( pkt_ );
    EXPECT_THAT( watcher->told, ElementsAre( "readableCount", "inputPkt" ) );
}

TEST_F( VlanPamTest, ReadingInsideTheArrivalTellsOfBothChanges ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    Kiv::Ptr<VlanPamWatcher> const watcher( new VlanPamWatcher( pam_ ) );
    pam_->inputPktIs( pkt_ );
    EXPECT_THAT( watcher->told, ElementsAre( "inputPkt, empty", "readableCount, empty", "inputPkt, empty" ) );
}

TEST_F( VlanPamTest, UninitializedOneTakesAFrameWithoutASignal ) {
    pam_->initializedIs( false );
    pam_->inputPktIs( pkt_ );
    EXPECT_EQ( pam_->readableCount(), 0U );
    EXPECT_EQ( pam_->inputPkt(), pkt_ );
}

TEST_F( VlanPamTest, PlainMutatorsTellOfAChangeOnly ) {
    Kiv::Ptr<VlanPamWatcher> const watcher( new VlanPamWatcher( pam_ ) );
    pam_->vlanIdIs( 100 );
    pam_->initializedIs( true );
    EXPECT_THAT( watcher->told, IsEmpty() );
    pam_->vlanIdIs( 101 );
    pam_->initializedIs( false );
    EXPECT_THAT( watcher->told, ElementsAre( "vlanId, empty", "initialized, empty" ) );
}

TEST_F( VlanPamTest, OwnAttributesAreNoSignalToAPlainReader ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    pam_->vlanIdIs( 101 );
    EXPECT_EQ( reader->signals, 0U );
}

TEST_F( VlanPamTest, HoldsItsMultiplexerAndWhatWaits ) {
    pam_->inputPktIs( pkt_ );
    EXPECT_EQ( multiplexer_->references(), 2U );
    EXPECT_EQ( pkt_->references(), 2U );
    pam_ = nullptr;
    EXPECT_EQ( multiplexer_->references(), 1U );
    EXPECT_EQ( pkt_->references(), 1U );
}

TEST_F( VlanPamTest, LiveOnesAreCounted ) {
    U32 const before = VlanPam::live();
    Kiv::Ptr<VlanPam> another = vlanPamNamed( "200" );
    EXPECT_EQ( VlanPam::live(), before + 1 );
    another = nullptr;
    EXPECT_EQ( VlanPam::live(), before );
}

TEST_F( VlanPamTest, ReaderThatDropsTheChannelInsideTheSignalDoesNoHarm ) {
    Kiv::Ptr<FakeReader> reader( new FakeReader( pam_ ) );
    Kiv::Ptr<VlanPam> const held = pam_;
    reader->then = [&] {
        reader = nullptr;
        pam_ = nullptr;
    };
    held->inputPktIs( pkt_ );
    EXPECT_EQ( held->references(), 1U );
}

TEST_F( VlanPamTest, DeferredSignalReadsTheFrame ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    deferredDeliveryIs( true );
    pam_->inputPktIs( pkt_ );
    EXPECT_THAT( reader->read, IsEmpty() );
    settle();
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( untaggedFrame ) ) );
}

TEST_F( VlanPamTest, DeferredSignalsOfTwoFramesFindTheLastOne ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    deferredDeliveryIs( true );
    pam_->inputPktIs( pktOf( untaggedFrame + "01" ) );
    pam_->inputPktIs( pktOf( untaggedFrame + "02" ) );
    settle();
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( untaggedFrame + "02" ) ) );
    EXPECT_EQ( pam_->readableCount(), 2U );
}

TEST_F( VlanPamTest, OperationsAreTraced ) {
    Support::TraceCapture const trace( "Igmp", 8 );
    Kiv::Ptr<VlanPam> const pam = vlanPamNamed( "300" );
    pam->inputPktIs( pkt_ );
    pam->rxPkt();
    pam->txPktIs( pkt_ );
    EXPECT_THAT( trace.levels(), ::testing::Each( 8 ) );
    EXPECT_TRUE( trace.contains( "handleInitialized" ) );
    EXPECT_TRUE( trace.contains( "handleInput" ) );
    EXPECT_TRUE( trace.contains( "doGetRxPkt for 300" ) );
    EXPECT_TRUE( trace.contains( "txPktIs" ) );
}

TEST_F( VlanPamTest, AttributeNumbersAreStable ) {
    EXPECT_EQ( VlanPam::attrMultiplexer, 386 );
    EXPECT_EQ( VlanPam::attrInputPkt, 387 );
    EXPECT_EQ( VlanPam::attrVlanId, 388 );
    EXPECT_EQ( VlanPam::attrInitialized, 389 );
}

} // namespace Zornet
