#include "vlan/VTaggingInnerPamSm.h"

#include <gtest/gtest.h>

#include "tests/support/SimulatedTest.h"
#include "tests/vlan/FakePam.h"
#include "vlan/VlanTaggingPam.h"

namespace Zornet {

/// A second watcher for an outer object whose own has been cut.
class VTaggingInnerPamSmTest : public Support::SimulatedTest {
  protected:
    VTaggingInnerPamSmTest() {
        outer_->smDel();
        sm_ = VTaggingInnerPamSm::VTaggingInnerPamSmIs( nullptr, outer_, inner_ );
    }

    Kiv::Ptr<FakePam> inner_{ new FakePam };
    Kiv::Ptr<VlanTaggingPam> outer_{ new VlanTaggingPam( "eth7", 100, nullptr ) };
    Kiv::Ptr<VTaggingInnerPamSm> sm_;
};

TEST_F( VTaggingInnerPamSmTest, SignalsOnceWhenItIsMade ) {
    EXPECT_EQ( outer_->readableCount(), 1U );
    EXPECT_EQ( sm_->innerPam(), inner_ );
    EXPECT_EQ( sm_->outerPam(), outer_ );
    EXPECT_TRUE( sm_->hasNotificationActive() );
}

TEST_F( VTaggingInnerPamSmTest, PassesEachSignalUpAndReadsNothing ) {
    inner_->arrive( taggedFrame( "0064" ) );
    inner_->arrive( untaggedFrame );
    EXPECT_EQ( outer_->readableCount(), 3U );
    EXPECT_EQ( inner_->waiting(), 2U );
}

TEST_F( VTaggingInnerPamSmTest, NothingBeneathMeansNoSignal ) {
    auto const idle = VTaggingInnerPamSm::VTaggingInnerPamSmIs( nullptr, outer_, nullptr );
    EXPECT_EQ( outer_->readableCount(), 1U );
    EXPECT_FALSE( idle->innerPam() );
}

TEST_F( VTaggingInnerPamSmTest, HoldsBothObjectsUntilItGoes ) {
    U32 const inner = inner_->references();
    U32 const outer = outer_->references();
    sm_ = nullptr;
    EXPECT_EQ( inner_->references(), inner - 1 );
    EXPECT_EQ( outer_->references(), outer - 1 );
    inner_->arrive( untaggedFrame );
    EXPECT_EQ( outer_->readableCount(), 1U );
}

TEST_F( VTaggingInnerPamSmTest, InactiveOneAndZombiePassNothingUp ) {
    sm_->hasNotificationActiveIs( false );
    inner_->arrive( untaggedFrame );
    sm_->hasNotificationActiveIs( true );
    inner_->arrive( untaggedFrame );
    EXPECT_EQ( outer_->readableCount(), 2U );
    sm_->kivDoZombieReactors( true );
    inner_->arrive( untaggedFrame );
    EXPECT_EQ( outer_->readableCount(), 2U );
}

TEST_F( VTaggingInnerPamSmTest, MoveOfTheReactorToAnotherObjectSignalsAtOnce ) {
    Kiv::Ptr<VTaggingInnerPamSm::KivInnerPam> const reactor(
        new VTaggingInnerPamSm::KivInnerPam( inner_, sm_.get() )
    );
    reactor->notifierIs( inner_ );
    EXPECT_EQ( outer_->readableCount(), 1U );
    reactor->notifierIs( Kiv::Ptr<FakePam>( new FakePam ) );
    EXPECT_EQ( outer_->readableCount(), 2U );
    reactor->notifierIs( nullptr );
    EXPECT_EQ( outer_->readableCount(), 2U );
    reactor->kivDoZombieReactors( true );
    reactor->notifierIs( inner_ );
    EXPECT_EQ( outer_->readableCount(), 2U );
}

TEST_F( VTaggingInnerPamSmTest, AttributeNumbersAreStable ) {
    EXPECT_EQ( VTaggingInnerPamSm::attrKivFwkActivity, 130 );
    EXPECT_EQ( VTaggingInnerPamSm::attrOuterPam, 131 );
    EXPECT_EQ( VTaggingInnerPamSm::attrInnerPam, 132 );
}

} // namespace Zornet
