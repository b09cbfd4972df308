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
frameIn( mmsghdr const& message ) {
    iovec const& part = *message.msg_hdr.msg_iov;
    U8 const* const bytes = static_cast<U8 const*>( part.iov_base );
    return { bytes, bytes + part.iov_len };
}

using SendBatchTest = ::testing::Test;

} // namespace

TEST_F( SendBatchTest, StartsEmpty ) {
    SendBatch batch;
    EXPECT_TRUE( batch.empty() );
    EXPECT_TRUE( batch.oldest().empty() );
}

TEST_F( SendBatchTest, CopiesWhatItIsGiven ) {
    SendBatch batch;
    Frame frame = frameOf( 46, 1 );
    EXPECT_TRUE( batch.push( 7, frame ) );
    std::fill( frame.begin(), frame.end(), U8{ 9 } );
    ASSERT_EQ( batch.oldest().size(), 1U );
    EXPECT_EQ( frameIn( batch.oldest()[0] ), frameOf( 46, 1 ) );
    EXPECT_EQ( batch.oldestSender(), 7U );
}

TEST_F( SendBatchTest, GivesABurstAtATimeInOrder ) {
    constexpr U64 burst = SendBatch::burst;
    SendBatch batch;
    for ( U64 i = 0; i < burst + 36; ++i ) {
        batch.push( i, frameOf( 40 + i, i ) );
    }
    ASSERT_EQ( batch.oldest().size(), burst );
    EXPECT_EQ( frameIn( batch.oldest()[burst - 1] ), frameOf( 40 + burst - 1, burst - 1 ) );
    batch.pop( burst );
    EXPECT_EQ( batch.size(), 36U );
    ASSERT_EQ( batch.oldest().size(), 36U );
    EXPECT_EQ( frameIn( batch.oldest()[0] ), frameOf( 40 + burst, burst ) );
    EXPECT_EQ( batch.oldestSender(), burst );
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

/// Frames of all sizes go round the region many times, at every depth.
TEST_F( SendBatchTest, KeepsOrderAndBytesRoundAndRound ) {
    SendBatch batch;
    auto const bytesOf = []( U64 i ) { return 14 + i * 7919 % 9000; };
    U64 in = 0;
    U64 out = 0;
    for ( std::size_t const depth : { 1U, 3000U, 10U, 500U, 64U, 2000U } ) {
        for ( int round = 0; round < 3000; ++round ) {
            while ( batch.size() < depth && batch.push( in, frameOf( bytesOf( in ), in ) ) ) {
                ++in;
            }
            std::size_t const going = std::min<std::size_t>( batch.size(), 1 + in % SendBatch::burst );
            auto const messages = batch.oldest();
            for ( std::size_t i = 0; i < going; ++i, ++out ) {
                ASSERT_EQ( frameIn( messages[i] ), frameOf( bytesOf( out ), out ) );
            }
            batch.pop( going );
        }
    }
    EXPECT_EQ( in - out, batch.size() );
}

} // namespace Zornet
