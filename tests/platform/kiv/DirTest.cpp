#include "platform/kiv/Dir.h"

#include <gtest/gtest.h>

namespace {

using Kiv::Ptr;

class Leaf : public Kiv::Entity {
  public:
    explicit Leaf( Kiv::Name const& name ) : Entity( name ) {}
};

class DirTest : public ::testing::Test {
  protected:
    Ptr<Kiv::Dir> dir_{ new Kiv::Dir( "root" ) };
    Ptr<Leaf> leaf_{ new Leaf( "hosts" ) };
};

TEST_F( DirTest, FindsAChildByItsName ) {
    dir_->entryIs( leaf_ );
    EXPECT_EQ( dir_->entry( "hosts" ), Ptr<Kiv::Entity>( leaf_ ) );
    EXPECT_EQ( dir_->entry( "status" ), nullptr );
    EXPECT_EQ( dir_->entries(), 1U );
}

TEST_F( DirTest, ChildKnowsItsDirectory ) {
    dir_->entryIs( leaf_ );
    EXPECT_EQ( leaf_->parent(), dir_.get() );
}

TEST_F( DirTest, SameChildAgainChangesNothing ) {
    dir_->entryIs( leaf_ );
    dir_->entryIs( leaf_ );
    EXPECT_EQ( dir_->entries(), 1U );
    EXPECT_EQ( dir_->modificationCount(), 1U );
}

TEST_F( DirTest, NameIsTakenByOneChild ) {
    dir_->entryIs( leaf_ );
    EXPECT_THROW( dir_->entryIs( new Leaf( "hosts" ) ), Kiv::NameInUseException );
    EXPECT_EQ( dir_->entry( "hosts" ), Ptr<Kiv::Entity>( leaf_ ) );
}

TEST_F( DirTest, NullIsNoChild ) {
    EXPECT_THROW( dir_->entryIs( nullptr ), Kiv::RangeException );
}

TEST_F( DirTest, RemovedChildHasNoDirectory ) {
    dir_->entryIs( leaf_ );
    dir_->entryDel( "hosts" );
    dir_->entryDel( "hosts" );
    EXPECT_EQ( dir_->entry( "hosts" ), nullptr );
    EXPECT_EQ( leaf_->parent(), nullptr );
    EXPECT_EQ( dir_->modificationCount(), 2U );
}

TEST_F( DirTest, ChildOutlivesItsDirectory ) {
    dir_->entryIs( leaf_ );
    dir_ = nullptr;
    EXPECT_EQ( leaf_->parent(), nullptr );
    EXPECT_EQ( leaf_->references(), 1U );
}

} // namespace
