#include "vlan/VlanTaggingPam.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/zornet/AssertionText.h"
#include "tests/support/SimulatedTest.h"
#include "tests/support/TraceCapture.h"
#include "tests/vlan/FakePam.h"
#include "tests/vlan/FakeReader.h"

namespace Zornet {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Writes down which of its own attributes a tagging access object tells of.
class VlanTaggingPamWatcher : public VlanTaggingPam::Notifiee {
  public:
    explicit VlanTaggingPamWatcher( Kiv::Ptr<VlanTaggingPam> const& pam ) : Notifiee( pam ) {
        isRegisteredNotifieeIs( true );
    }

    void onSm() override { told.push_back( notifier()->sm() ? "sm" : "no sm" ); }
    void onInitialized() override { told.push_back( "initialized" ); }

    std::vector<std::string> told;
};

class VlanTaggingPamTest : public Support::SimulatedTest {
  protected:
    ~VlanTaggingPamTest() override { pam_->smDel(); }

    /// The frame that the object gives for one that arrives, or "null".
    static std::string readOf( U16 vlanId, std::string const& frame ) {
        Kiv::Ptr<FakePam> const device( new FakePam );
        Kiv::Ptr<VlanTaggingPam> const pam( new VlanTaggingPam( "eth7", vlanId, device ) );
        Kiv::Ptr<FakeReader> const reader( new FakeReader( pam ) );
        device->arrive( frame );
        EXPECT_EQ( device->waiting(), 0U );
        pam->smDel();
        return reader->read.at( 0 );
    }

    Kiv::Ptr<FakePam> device_{ new FakePam };
    Kiv::Ptr<VlanTaggingPam> pam_{ new VlanTaggingPam( "eth7", 100, device_ ) };
};

TEST_F( VlanTaggingPamTest, NewOneIsReady ) {
    EXPECT_EQ( pam_->name(), Kiv::Name( "eth7" ) );
    EXPECT_EQ( pam_->vlanId(), 100U );
    EXPECT_EQ( pam_->innerPam(), device_ );
    EXPECT_TRUE( pam_->initialized() );
    ASSERT_TRUE( pam_->sm() );
    EXPECT_EQ( pam_->sm()->outerPam(), pam_ );
}

TEST_F( VlanTaggingPamTest, SurvivesItsOwnStartUp ) {
    U32 const before = VlanTaggingPam::live();
    Kiv::Ptr<VlanTaggingPam> const another( new VlanTaggingPam( "eth7", 100, nullptr ) );
    EXPECT_EQ( VlanTaggingPam::live(), before + 1 );
    EXPECT_EQ( another->references(), 2U ); // this test and the state machine
    another->smDel();
}

TEST_F( VlanTaggingPamTest, StartsWithOneSignalThatNobodyHears ) {
    EXPECT_EQ( pam_->readableCount(), 1U );
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    EXPECT_EQ( reader->signals, 0U );
}

TEST_F( VlanTaggingPamTest, CountStandsOneAboveTheSignalsOfTheInnerOne ) {
    for ( int i = 0; i < 5; ++i ) {
        device_->arrive( taggedFrame( "0064" ) );
    }
    EXPECT_EQ( pam_->readableCount(), device_->readableCount() + 1 );
}

TEST_F( VlanTaggingPamTest, InnerStepOfSeveralIsOneSignal ) {
    device_->readableCountInc( 3 );
    EXPECT_EQ( pam_->readableCount(), 2U );
}

TEST_F( VlanTaggingPamTest, FrameOfItsVlanIsReadWithoutItsTag ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    U32 const before = pam_->readableCount();
    device_->arrive( taggedFrame( "e064" ) );
    EXPECT_EQ( pam_->readableCount(), before + 1 );
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( untaggedFrame ) ) );
}

TEST_F( VlanTaggingPamTest, FrameOfAnotherVlanIsUsedUpAndGivesNull ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    device_->arrive( taggedFrame( "00c8" ) );
    EXPECT_EQ( reader->signals, 1U );
    EXPECT_THAT( reader->read, ElementsAre( "null" ) );
    EXPECT_EQ( device_->waiting(), 0U );
}

TEST_F( VlanTaggingPamTest, UntaggedFrameIsDropped ) {
    EXPECT_EQ( readOf( 100, untaggedFrame ), "null" );
}

TEST_F( VlanTaggingPamTest, FrameWithTwoTagsKeepsTheInnerOne ) {
    EXPECT_EQ( readOf( 100, doublyTaggedFrame( "0064", "a0c8" ) ), ungrouped( taggedFrame( "a0c8" ) ) );
    EXPECT_EQ( readOf( 200, doublyTaggedFrame( "0064", "a0c8" ) ), "null" );
}

TEST_F( VlanTaggingPamTest, Vlan0ReadsUntaggedFrames ) {
    EXPECT_EQ( readOf( 0, untaggedFrame ), ungrouped( untaggedFrame ) );
    EXPECT_EQ( readOf( 0, taggedFrame( "0064" ) ), "null" );
}

TEST_F( VlanTaggingPamTest, Vlan0ReadsPriorityTaggedFramesWithoutTheirTag ) {
    EXPECT_EQ( readOf( 0, taggedFrame( "e000" ) ), ungrouped( untaggedFrame ) );
}

TEST_F( VlanTaggingPamTest, VlanAbove4095SendsItsLow12BitsAndReadsNothing ) {
    EXPECT_EQ( readOf( 4196, taggedFrame( "0064" ) ), "null" );
    Kiv::Ptr<VlanTaggingPam> const pam( new VlanTaggingPam( "eth7", 4196, device_ ) );
    pam->txPktIs( pktOf( untaggedFrame ) );
    EXPECT_THAT( device_->sent, ElementsAre( ungrouped( taggedFrame( "0064" ) ) ) );
    pam->smDel();
}

TEST_F( VlanTaggingPamTest, NothingToReadGivesNull ) {
    EXPECT_FALSE( pam_->rxPkt() );
}

TEST_F( VlanTaggingPamTest, OneReadTakesOneFrame ) {
    device_->queue( taggedFrame( "00c8" ) );
    device_->queue( taggedFrame( "0064" ) );
    EXPECT_FALSE( pam_->rxPkt() );
    EXPECT_TRUE( pam_->rxPkt() );
}

TEST_F( VlanTaggingPamTest, UninitializedOneLeavesTheInnerOneAlone ) {
    device_->queue( taggedFrame( "0064" ) );
    pam_->initializedIs( false );
    EXPECT_FALSE( pam_->rxPkt() );
    EXPECT_EQ( device_->waiting(), 1U );
}

TEST_F( VlanTaggingPamTest, SendsTheCallersPacketWithATag ) {
    Kiv::Ptr<Pkt> const pkt = pktOf( untaggedFrame );
    pam_->txPktIs( pkt );
    EXPECT_THAT( device_->sentPkts, ElementsAre( pkt ) );
    EXPECT_EQ( frameOf( pkt ), ungrouped( taggedFrame( "0064" ) ) );
}

TEST_F( VlanTaggingPamTest, TaggedFrameIsSentWithASecondTag ) {
    pam_->txPktIs( pktOf( taggedFrame( "a0c8" ) ) );
    EXPECT_THAT( device_->sent, ElementsAre( ungrouped( doublyTaggedFrame( "0064", "a0c8" ) ) ) );
}

TEST_F( VlanTaggingPamTest, NullInnerOneNeverSignalsAndIsFatalToUse ) {
    Kiv::Ptr<VlanTaggingPam> const pam( new VlanTaggingPam( "eth7", 100, nullptr ) );
    EXPECT_EQ( pam->readableCount(), 0U );
    EXPECT_FALSE( pam->sm()->innerPam() );
    EXPECT_DEATH( pam->rxPkt(), assertionText( "null Ptr" ) );
    EXPECT_DEATH( pam->txPktIs( pktOf( untaggedFrame ) ), assertionText( "null Ptr" ) );
    pam->smDel();
}

TEST_F( VlanTaggingPamTest, StateMachineIsKeptForTheSameArguments ) {
    Kiv::Ptr<VTaggingInnerPamSm> const sm = pam_->sm();
    EXPECT_EQ( pam_->smIs( nullptr, pam_, device_ ), sm );
    EXPECT_EQ( pam_->readableCount(), 1U );
}

TEST_F( VlanTaggingPamTest, StateMachineIsReplacedForOtherArguments ) {
    Kiv::Ptr<FakePam> const other( new FakePam );
    pam_->smIs( nullptr, pam_, other );
    U32 const before = pam_->readableCount();
    device_->arrive( untaggedFrame );
    EXPECT_EQ( pam_->readableCount(), before );
    other->arrive( untaggedFrame );
    EXPECT_EQ( pam_->readableCount(), before + 1 );
}

TEST_F( VlanTaggingPamTest, StateMachineIsBoundToItsActivityAndItsOuterObject ) {
    Kiv::Ptr<VlanTaggingPam> const other( new VlanTaggingPam( "eth7", 200, nullptr ) );
    EXPECT_EQ(
        pam_->smIs( Kiv::defaultActivity(), pam_, device_ )->kivFwkActivity(), Kiv::defaultActivity()
    );
    EXPECT_EQ( pam_->smIs( Kiv::defaultActivity(), other, device_ )->outerPam(), other );
    other->smDel();
}

TEST_F( VlanTaggingPamTest, SecondStartUpMakesNoSecondStateMachine ) {
    pam_->smDel();
    pam_->handleInitialized();
    EXPECT_FALSE( pam_->sm() );
}

TEST_F( VlanTaggingPamTest, OwnAttributesTellOfAChangeOnly ) {
    Kiv::Ptr<VlanTaggingPamWatcher> const watcher( new VlanTaggingPamWatcher( pam_ ) );
    pam_->initializedIs( true );
    EXPECT_THAT( watcher->told, IsEmpty() );
    pam_->initializedIs( false );
    pam_->smDel();
    pam_->smDel();
    pam_->smIs( nullptr, pam_, device_ );
    EXPECT_THAT( watcher->told, ElementsAre( "initialized", "no sm", "sm" ) );
}

TEST_F( VlanTaggingPamTest, CutPairGoesWithItsLastUser ) {
    U32 const before = VlanTaggingPam::live();
    Kiv::Ptr<VlanTaggingPam> pam( new VlanTaggingPam( "eth7", 200, device_ ) );
    U32 const users = device_->references();
    pam->smDel();
    pam = nullptr;
    EXPECT_EQ( VlanTaggingPam::live(), before );
    EXPECT_EQ( device_->references(), users - 2 ); // the pair's own and its watcher's
}

TEST_F( VlanTaggingPamTest, CutPairSignalsNoMore ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    pam_->smDel();
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( reader->signals, 0U );
    EXPECT_FALSE( device_->hasNotifiees() );
}

TEST_F( VlanTaggingPamTest, ReaderThatUnbindsInsideTheSignalDoesNoHarm ) {
    U32 const before = VlanTaggingPam::live();
    Kiv::Ptr<VlanTaggingPam> pam( new VlanTaggingPam( "eth7", 100, device_ ) );
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam ) );
    U32 liveInside = 0;
    reader->then = [&] {
        pam->smDel();
        pam = nullptr;
        reader->notifierIs( nullptr );
        liveInside = VlanTaggingPam::live();
    };
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( liveInside, before + 1 ); // it goes when its signal is over
    EXPECT_EQ( VlanTaggingPam::live(), before );
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( reader->signals, 1U );
}

TEST_F( VlanTaggingPamTest, DeferredFrameReachesItsReader ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    deferredDeliveryIs( true );
    device_->arrive( taggedFrame( "0064" ) );
    EXPECT_EQ( pam_->readableCount(), 1U );
    settle();
    EXPECT_THAT( reader->read, ElementsAre( ungrouped( untaggedFrame ) ) );
    EXPECT_EQ( pam_->readableCount(), 2U );
}

TEST_F( VlanTaggingPamTest, DeferredSignalsOfTwoFramesPassUpAsOne ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    deferredDeliveryIs( true );
    device_->arrive( taggedFrame( "0064" ) );
    device_->arrive( taggedFrame( "0064" ) );
    settle();
    EXPECT_EQ( reader->read.size(), 1U );
    EXPECT_EQ( device_->waiting(), 1U );
}

TEST_F( VlanTaggingPamTest, DeferredSignalDiesWithThePair ) {
    Kiv::Ptr<FakeReader> const reader( new FakeReader( pam_ ) );
    deferredDeliveryIs( true );
    device_->arrive( taggedFrame( "0064" ) );
    pam_->smDel();
    settle();
    EXPECT_EQ( reader->signals, 0U );
}

TEST_F( VlanTaggingPamTest, OperationsAreTraced ) {
    Support::TraceCapture const trace( "Igmp", 8 );
    Kiv::Ptr<VlanTaggingPam> const pam( new VlanTaggingPam( "eth7", 100, device_ ) );
    pam->rxPkt();
    pam->txPktIs( pktOf( untaggedFrame ) );
    pam->smDel();
    EXPECT_THAT( trace.levels(), ::testing::Each( 8 ) );
    EXPECT_TRUE( trace.contains( "VlanTaggingPam::handleInitialized" ) );
    EXPECT_TRUE( trace.contains( "VTaggingInnerPamSm::handleInput" ) );
    EXPECT_TRUE( trace.contains( "doGetRxPkt" ) );
    EXPECT_TRUE( trace.contains( "txPktIs for vlan 100" ) );
}

TEST_F( VlanTaggingPamTest, AttributeNumbersAreStable ) {
    EXPECT_EQ( VlanTaggingPam::attrVlanId, 386 );
    EXPECT_EQ( VlanTaggingPam::attrInnerPam, 387 );
    EXPECT_EQ( VlanTaggingPam::attrSm, 388 );
    EXPECT_EQ( VlanTaggingPam::attrInitialized, 389 );
}

} // namespace Zornet
