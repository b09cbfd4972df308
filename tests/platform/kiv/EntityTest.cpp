#include "platform/kiv/Entity.h"

#include <gtest/gtest.h>

#include "tests/platform/kiv/Gauge.h"

namespace {

using Kiv::Ptr;
using Log = Probe::Log;

class EntityTest : public ::testing::Test {
  protected:
    Ptr<Gauge> gauge_{ new Gauge( "tank" ) };
    Log log_;
    Ptr<Probe> probe_ = Probe::on( gauge_, log_ );
};

TEST_F( EntityTest, KnowsItsNameAndStandsAlone ) {
    EXPECT_EQ( gauge_->name(), Kiv::Name( "tank" ) );
    EXPECT_EQ( gauge_->parent(), nullptr );
    EXPECT_EQ( gauge_->parentAttrId(), 0 );
    EXPECT_EQ( probe_->name(), Kiv::Name( "tank" ) );
}

TEST_F( EntityTest, MemberIsMadeOnceAndTold ) {
    Ptr<Gauge::Mark> const made = gauge_->markIs( "a" );
    EXPECT_EQ( gauge_->markIs( "a" ), made );
    EXPECT_EQ( gauge_->mark( "a" ), made );
    EXPECT_EQ( log_, Log{ "mark a" } );
    EXPECT_EQ( gauge_->modificationCount(), 1U );
}

TEST_F( EntityTest, AbsentMemberIsNull ) {
    EXPECT_EQ( gauge_->mark( "a" ), nullptr );
}

TEST_F( EntityTest, MemberKnowsItsParentAndTheAttribute ) {
    Ptr<Gauge::Mark> const mark = gauge_->markIs( "a" );
    EXPECT_EQ( mark->parent(), gauge_.get() );
    EXPECT_EQ( mark->parentAttrId(), Gauge::attrMark );
    EXPECT_EQ( mark->parentAttr(), Gauge::attrMark );
}

TEST_F( EntityTest, LowerFormConstructsWithoutNotification ) {
    EXPECT_NE( gauge_->newMark( "a" ), nullptr );
    EXPECT_TRUE( log_.empty() );
    EXPECT_NE( gauge_->mark( "a" ), nullptr );
}

TEST_F( EntityTest, MemberIsThereWhenItIsTold ) {
    bool there = false;
    probe_->then = [&] { there = gauge_->mark( "a" ) != nullptr; };
    gauge_->markIs( "a" );
    EXPECT_TRUE( there );
}

TEST_F( EntityTest, RemovedMemberIsToldAfterItHasGone ) {
    gauge_->markIs( "a" );
    bool there = true;
    probe_->then = [&] { there = gauge_->mark( "a" ) != nullptr; };
    gauge_->markDel( "a" );
    EXPECT_FALSE( there );
    EXPECT_EQ( log_, ( Log{ "mark a", "mark a" } ) );
}

TEST_F( EntityTest, RemovedMemberHasNoParent ) {
    Ptr<Gauge::Mark> const mark = gauge_->markIs( "a" );
    gauge_->markDel( "a" );
    EXPECT_EQ( mark->parent(), nullptr );
}

TEST_F( EntityTest, MemberThatOutlivesItsEntityHasNoParent ) {
    Ptr<Gauge::Mark> const mark = gauge_->markIs( "a" );
    probe_ = nullptr;
    gauge_ = nullptr;
    EXPECT_EQ( mark->parent(), nullptr );
}

TEST_F( EntityTest, RemovingAnAbsentKeyDoesNothing ) {
    gauge_->markDel( "a" );
    EXPECT_TRUE( log_.empty() );
    EXPECT_EQ( gauge_->modificationCount(), 0U );
}

TEST_F( EntityTest, RemovingAllTellsEachKeyInTheOrderOfTheWalk ) {
    for ( char const* key : { "a", "b", "c", "d", "e" } ) {
        gauge_->markIs( key );
    }
    Log expected;
    for ( Gauge::Mark const& mark : gauge_->mark() ) {
        expected.push_back( "mark " + std::string( mark.name().view() ) );
    }
    log_.clear();
    gauge_->markDelAll();
    EXPECT_EQ( log_, expected );
    EXPECT_EQ( gauge_->mark().size(), 0U );
}

TEST_F( EntityTest, KeyIsToldWithoutAChange ) {
    gauge_->markNotify( "nowhere" );
    EXPECT_EQ( log_, Log{ "mark nowhere" } );
    EXPECT_EQ( gauge_->modificationCount(), 0U );
}

TEST_F( EntityTest, KeyOutlivesTheMemberThatWasNamedByIt ) {
    gauge_->markIs( "a long enough name to be stored apart" );
    gauge_->markDel( gauge_->mark().begin()->fwkKey() );
    EXPECT_EQ( log_.back(), "mark a long enough name to be stored apart" );
}

} // namespace
