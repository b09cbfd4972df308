#include "platform/zornet/device/SendBatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace Zornet {

namespace {

using Frame = std::vector<U8>;

Frame
frameOf( std::size_t bytes, U64 mark ) {
    Frame frame( bytes, static_cast<U8>( mark ) );
    frame.back() = static_cast<U8>( mark >> 8 );
    return frame;
}

Frame
frameIn( iovec const& part ) {
    U8 const* const bytes = static_cast<U8 const*>( part.iov_base );
    return { bytes, bytes + part.iov_len };
}

class SendBatchTest : public ::testing::Test {
  protected:
    /// The next burst.
    std::span<iovec const> next( SendBatch& batch ) {
        batch.fill( burst_ );
        return burst_.frames();
    }

    static void pushMarks( SendBatch& batch, U64 first, U64 count ) {
        for ( U64 mark = first; mark < first + count; ++mark ) {
            batch.push( mark, frameOf( 40 + mark, mark ) );
        }
    }

  private:
    Burst burst_;
};

} // namespace

TEST_F( SendBatchTest, StartsEmpty ) {
    SendBatch batch;
    EXPECT_TRUE( batch.empty() );
    EXPECT_TRUE( next( batch ).empty() );
}

TEST_F( SendBatchTest, CopiesWhatItIsGiven ) {
    SendBatch batch;
    Frame frame = frameOf( 46, 1 );
    EXPECT_TRUE( batch.push( 7, frame ) );
    std::fill( frame.begin(), frame.end(), U8{ 9 } );
    auto const frames = next( batch );
    ASSERT_EQ( frames.size(), 1U );
    EXPECT_EQ( frameIn( frames[0] ), frameOf( 46, 1 ) );
    EXPECT_EQ( batch.oldestSender(), 7U );
}

TEST_F( SendBatchTest, GivesABurstAtATimeInOrder ) {
    constexpr U64 full = Burst::capacity;
    SendBatch batch;
    pushMarks( batch, 0, full + 36 );
    EXPECT_EQ( batch.outsideBursts(), full + 36 );
    auto const first = next( batch );
    ASSERT_EQ( first.size(), full );
    EXPECT_EQ( frameIn( first[0] ), frameOf( 40, 0 ) );
    EXPECT_EQ( frameIn( first[full - 1] ), frameOf( 40 + full - 1, full - 1 ) );
    EXPECT_EQ( batch.size(), full + 36 );
    EXPECT_EQ( batch.outsideBursts(), 36U );
    auto const second = next( batch );
    ASSERT_EQ( second.size(), 36U );
    EXPECT_EQ( frameIn( second[0] ), frameOf( 40 + full, full ) );
    EXPECT_EQ( batch.oldestSender(), 0U );
    batch.pop( full );
    EXPECT_EQ( batch.size(), 36U );
    EXPECT_EQ( batch.oldestSender(), full );
    EXPECT_TRUE( next( batch ).empty() );
}

TEST_F( SendBatchTest, FramesThatDidNotLeaveAreInTheNextBurstAgain ) {
    constexpr U64 full = Burst::capacity;
    SendBatch batch;
    pushMarks( batch, 0, 3 * full );
    next( batch );
    next( batch );
    batch.pop( 7 );
    batch.emptyBursts();
    EXPECT_EQ( batch.outsideBursts(), 3 * full - 7 );
    EXPECT_EQ( frameIn( next( batch )[0] ), frameOf( 47, 7 ) );
}

TEST_F( SendBatchTest, FrameRemovedWithoutABurstIsInNone ) {
    SendBatch batch;
    pushMarks( batch, 0, 3 );
    batch.pop( 1 );
    auto const frames = next( batch );
    ASSERT_EQ( frames.size(), 2U );
    EXPECT_EQ( frameIn( frames[0] ), frameOf( 41, 1 ) );
}

TEST_F( SendBatchTest, RefusesWhatDoesNotFitAndKeepsTheRest ) {
    SendBatch batch;
    Frame const frame( 1514 );
    U64 taken = 0;
    while ( batch.push( taken, frame ) ) {
        ++taken;
    }
    EXPECT_EQ( taken, SendBatch::capacity / 1536 ); // with its record, in steps of 16
    EXPECT_EQ( batch.size(), taken );
    EXPECT_FALSE( batch.push( taken, frame ) );
    batch.pop( 2 );
    EXPECT_TRUE( batch.push( taken, frame ) );
    EXPECT_EQ( batch.oldestSender(), 2U );
}

/// The place where the region was left early once is an ordinary place the next time round.
TEST_F( SendBatchTest, SmallFramesGoOnWhereALargeOneTurnedBack ) {
    SendBatch batch;
    Frame const large( 1514 );
    U64 in = 0;
    while ( batch.push( in, large ) ) {
        ++in;
    }
    U64 const perRound = in;
    batch.pop( perRound - 1 );
    batch.push( in++, large ); // turns back
    batch.pop( 1 );
    for ( U64 i = 1; i < perRound; ++i ) {
        batch.push( in++, large );
    }
    batch.push( in++, frameOf( 46, 1 ) );
    batch.push( in++, frameOf( 46, 2 ) );
    for ( U64 out = perRound; out < in; ++out, batch.pop( 1 ) ) {
        ASSERT_EQ( batch.oldestSender(), out );
    }
}

/// Frames of all sizes go round the region many times, at every depth, with some of them in bursts meanwhile.
TEST_F( SendBatchTest, KeepsOrderAndBytesRoundAndRound ) {
    SendBatch batch;
    auto const bytesOf = []( U64 i ) { return 14 + i * 7919 % 9000; };
    U64 in = 0;
    U64 inBursts = 0;
    U64 out = 0;
    for ( std::size_t const depth : { 1U, 3000U, 10U, 500U, 64U, 2000U } ) {
        for ( int round = 0; round < 3000; ++round ) {
            while ( batch.size() < depth && batch.push( in, frameOf( bytesOf( in ), in ) ) ) {
                ++in;
            }
            for ( iovec const& frame : next( batch ) ) {
                ASSERT_EQ( frameIn( frame ), frameOf( bytesOf( inBursts ), inBursts ) );
                ++inBursts;
            }
            while ( out < inBursts && batch.size() > in % 700 ) {
                ASSERT_EQ( batch.oldestSender(), out );
                batch.pop( 1 );
                ++out;
            }
            ASSERT_EQ( batch.outsideBursts(), in - inBursts );
        }
    }
    EXPECT_EQ( in - out, batch.size() );
    EXPECT_GT( out, 10000U );
}

} // namespace Zornet
