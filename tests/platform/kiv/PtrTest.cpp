#include "platform/kiv/Ptr.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <thread>
#include <vector>

#include "platform/kiv/PtrInterface.h"

namespace {

class Thing : public Kiv::PtrInterface {
  public:
    explicit Thing( bool& destroyed ) : destroyed_( destroyed ) {}
    ~Thing() override {
        if ( lastWord ) {
            lastWord();
        }
        destroyed_ = true;
    }
    std::function<void()> lastWord;
    using VFPtrInterface::flagIs;
    using VFPtrInterface::notificationActiveFlag;

  private:
    bool& destroyed_;
};

/// Runs each test with plain and with atomic counts.
class PtrTest : public ::testing::TestWithParam<bool> {
  protected:
    PtrTest() { Kiv::VFPtrInterface::enableThreadSafePointers = GetParam(); }
    ~PtrTest() override { Kiv::VFPtrInterface::enableThreadSafePointers = false; }

    bool destroyed_ = false;
};

INSTANTIATE_TEST_SUITE_P( Counts, PtrTest, ::testing::Bool(), []( auto const& mode ) {
    return std::string( mode.param ? "Atomic" : "Plain" );
} );

TEST_P( PtrTest, ObjectStartsWithoutReferences ) {
    Kiv::Ptr<Thing> const thing( new Thing( destroyed_ ) );
    EXPECT_EQ( thing->references(), 1U );
    thing->referencesRelease();
    EXPECT_EQ( thing->references(), 0U );
    thing->referencesInc();
}

TEST_P( PtrTest, CopyTakesAReferenceAndDestructionGivesItBack ) {
    Kiv::Ptr<Thing> const thing( new Thing( destroyed_ ) );
    {
        Kiv::Ptr<Thing> const copy = thing;
        Kiv::Ptr<Kiv::PtrInterface const> const wider = thing;
        EXPECT_EQ( thing->references(), 3U );
    }
    EXPECT_EQ( thing->references(), 1U );
}

TEST_P( PtrTest, MoveTakesNoReference ) {
    Kiv::Ptr<Thing> from( new Thing( destroyed_ ) );
    Kiv::Ptr<Thing> const to = std::move( from );
    EXPECT_EQ( to->references(), 1U );
}

TEST_P( PtrTest, LastReferenceDestroys ) {
    Kiv::Ptr<Thing> thing( new Thing( destroyed_ ) );
    Kiv::Ptr<Thing> copy = thing;
    thing = nullptr;
    EXPECT_FALSE( destroyed_ );
    copy = nullptr;
    EXPECT_TRUE( destroyed_ );
}

TEST_P( PtrTest, AssigningItselfKeepsTheObject ) {
    Kiv::Ptr<Thing> thing( new Thing( destroyed_ ) );
    Kiv::Ptr<Thing> const& same = thing;
    thing = same;
    EXPECT_FALSE( destroyed_ );
    EXPECT_EQ( thing->references(), 1U );
}

TEST_P( PtrTest, FlagsAndCountDoNotDisturbEachOther ) {
    Kiv::Ptr<Thing> thing( new Thing( destroyed_ ) );
    thing->kivMarkedForDeletionIs( true );
    thing->flagIs( Thing::notificationActiveFlag, true );
    Kiv::Ptr<Thing> copy = thing;
    copy = nullptr;
    EXPECT_TRUE( thing->kivZombie() );
    EXPECT_TRUE( thing->hasNotificationActive() );
    thing->kivMarkedForDeletionIs( false );
    EXPECT_FALSE( thing->kivZombie() );
    EXPECT_EQ( thing->references(), 1U );
    thing = nullptr;
    EXPECT_TRUE( destroyed_ );
}

TEST_P( PtrTest, PointerMadeInTheDestructorDestroysOnceOnly ) {
    int lastWords = 0;
    Kiv::Ptr<Thing> thing( new Thing( destroyed_ ) );
    thing->lastWord = [&lastWords, raw = thing.get()] {
        ++lastWords;
        Kiv::Ptr<Thing> const forAMoment( raw );
    };
    thing = nullptr;
    EXPECT_EQ( lastWords, 1 );
}

TEST_P( PtrTest, LeakedReferenceKeepsTheObject ) {
    Kiv::Ptr<Thing> thing( new Thing( destroyed_ ) );
    Thing* const raw = thing.get();
    raw->referencesLeak();
    thing = nullptr;
    EXPECT_FALSE( destroyed_ );
    raw->referencesDec();
    EXPECT_TRUE( destroyed_ );
}

TEST_P( PtrTest, NullIsEmptyAndEqualsNull ) {
    Kiv::Ptr<Thing> const null;
    EXPECT_FALSE( null );
    EXPECT_EQ( null, nullptr );
    EXPECT_EQ( null.get(), nullptr );
}

TEST_P( PtrTest, RequiredPointerRaisesWhereItIsNull ) {
    Kiv::Ptr<Thing> const null;
    try {
        Kiv::validPtr( null );
        FAIL();
    } catch ( Kiv::RangeException const& e ) {
        EXPECT_STREQ( e.what(), "null ValidPtr" );
    }
}

TEST_P( PtrTest, RequiredPointerIsThePointer ) {
    Kiv::Ptr<Thing> const thing( new Thing( destroyed_ ) );
    EXPECT_EQ( &Kiv::validPtr( thing ), &thing );
}

using PtrDeathTest = PtrTest;
INSTANTIATE_TEST_SUITE_P( Counts, PtrDeathTest, ::testing::Bool() );

TEST_P( PtrDeathTest, FollowingNullEndsTheProcess ) {
    Kiv::Ptr<Thing> const null;
    EXPECT_DEATH( null->references(), "assertion failed: null Ptr" );
}

TEST( AtomicCounts, CountsOfManyThreadsAddUp ) {
    Kiv::VFPtrInterface::enableThreadSafePointers = true;
    bool destroyed = false;
    {
        Kiv::Ptr<Thing> const thing( new Thing( destroyed ) );
        std::vector<std::thread> threads;
        std::latch start( 4 );
        for ( int i = 0; i < 4; ++i ) {
            threads.emplace_back( [&] {
                start.arrive_and_wait();
                for ( int n = 0; n < 1'000'000; ++n ) {
                    Kiv::Ptr<Thing> const copy = thing;
                }
            } );
        }
        for ( std::thread& thread : threads ) {
            thread.join();
        }
        EXPECT_EQ( thing->references(), 1U );
        EXPECT_FALSE( destroyed );
    }
    EXPECT_TRUE( destroyed );
    Kiv::VFPtrInterface::enableThreadSafePointers = false;
}

} // namespace
