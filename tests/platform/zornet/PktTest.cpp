#include "platform/zornet/Pkt.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/PktManager.h"
#include "tests/platform/zornet/AssertionText.h"
#include "tests/platform/zornet/Hex.h"

namespace Zornet {

/// A packet of a manager of its own, so that its buffer is never one that was used before.
class PktTest : public ::testing::Test {
  protected:
    PktTest() : pkt_( freshPkt() ) {}

    static Kiv::Ptr<Pkt> freshPkt() { return Kiv::Ptr<PktManager>( new PktManager )->newPkt(); }
    void fill( std::string_view digits ) {
        auto const bytes = fromHex( digits );
        pkt_->newSharedHeadData( static_cast<U32>( bytes.size() ) );
        std::copy( bytes.begin(), bytes.end(), pkt_->front() );
    }
    std::string frame() const {
        std::vector<U8> bytes( pkt_->bytes() );
        pkt_->copyTo( bytes.data() );
        return hex( bytes );
    }
    std::string window() const { return hex( { pkt_->offsetFront(), pkt_->offsetBytes() } ); }

    Kiv::Ptr<Pkt> pkt_;
};

using PktDeathTest = PktTest;

TEST_F( PktTest, NewPacketIsAnEmptyFrame ) {
    EXPECT_EQ( pkt_->firstIoVec(), 1 );
    EXPECT_EQ( pkt_->bytes(), 0U );
    EXPECT_EQ( pkt_->offsetBytes(), 0U );
}

TEST_F( PktTest, EmptyBufferGrowsToJustWhatIsAskedFor ) {
    pkt_->newSharedHeadData( 1514 );
    EXPECT_EQ( pkt_->bytes(), 1514U );
    EXPECT_EQ( pkt_->sharedBuffer()->size(), 1514U );
}

TEST_F( PktTest, HeadDataWithoutHeadRoomMovesTheData ) {
    fill( "0102030405" );
    auto const before = pkt_->sharedBuffer();
    pkt_->newSharedHeadData( 2 );
    EXPECT_NE( pkt_->sharedBuffer(), before );
    EXPECT_EQ( pkt_->bytes(), 7U );
    EXPECT_EQ( pkt_->front(), pkt_->sharedBuffer()->data() );
    pkt_->front()[0] = 0xaa;
    pkt_->front()[1] = 0xbb;
    EXPECT_EQ( frame(), "aabb0102030405" );
}

TEST_F( PktTest, BufferThatIsTooSmallGrowsByWhatIsAskedFor ) {
    fill( "0102030405" );
    pkt_->delSharedTailData( 3 );
    pkt_->newSharedHeadData( 2 );
    EXPECT_EQ( pkt_->sharedBuffer()->size(), 7U );
    EXPECT_EQ( pkt_->bytes(), 4U );
    EXPECT_TRUE( pkt_->sharedBuffer()->hasHeadRoom( 3 ) );
}

TEST_F( PktTest, HeadDataIntoHeadRoomMovesNothing ) {
    fill( "0102030405060708" );
    U8* const payload = pkt_->front() + 4;
    pkt_->delSharedHeadData( 4 );
    EXPECT_EQ( pkt_->front(), payload );
    EXPECT_EQ( frame(), "05060708" );
    pkt_->newSharedHeadData( 4 );
    EXPECT_EQ( frame(), "0102030405060708" );
    EXPECT_EQ( pkt_->front() + 4, payload );
}

TEST_F( PktTest, HeadRoomIsUsedToItsLastByte ) {
    fill( "01020304" );
    auto const before = pkt_->sharedBuffer();
    pkt_->delSharedHeadData( 4 );
    pkt_->newSharedHeadData( 4 );
    EXPECT_EQ( pkt_->sharedBuffer(), before );
}

TEST_F( PktTest, TailDataComesAndGoes ) {
    fill( "0102030405" );
    auto const buffer = pkt_->sharedBuffer();
    pkt_->delSharedTailData( 3 );
    EXPECT_EQ( frame(), "0102" );
    pkt_->newSharedTailData( 3 );
    EXPECT_EQ( frame(), "0102030405" );
    EXPECT_EQ( pkt_->sharedBuffer(), buffer );
}

TEST_F( PktTest, TailDataCountsWrap ) {
    fill( "0102030405" );
    pkt_->newSharedTailData( 3U - 5U );
    EXPECT_EQ( frame(), "010203" );
}

TEST_F( PktTest, LastRegionMirrorsTheBuffer ) {
    fill( "0102030405" );
    pkt_->delSharedHeadData( 1 );
    pkt_->delSharedTailData( 1 );
    EXPECT_EQ( pkt_->ioVec( 1 ).data, pkt_->sharedBuffer()->data() );
    EXPECT_EQ( pkt_->ioVec( 1 ).bytes, 3U );
}

TEST_F( PktTest, FrameMayBeginInARegionOfItsOwn ) {
    fill( "0304" );
    U8 head[] = { 1, 2 };
    pkt_->headIoVecIs( { head, 2 } );
    EXPECT_EQ( pkt_->firstIoVec(), 0 );
    EXPECT_EQ( pkt_->front(), head );
    EXPECT_EQ( pkt_->bytes(), 4U );
    EXPECT_EQ( frame(), "01020304" );
}

TEST_F( PktTest, FrameWithoutRegionsIsEmpty ) {
    fill( "0304" );
    pkt_->ioVecDelAll();
    EXPECT_EQ( pkt_->firstIoVec(), Pkt::maxIovecs_ );
    EXPECT_EQ( pkt_->bytes(), 0U );
}

TEST_F( PktTest, WindowStartsAtTheBeginOffset ) {
    fill( "0102030405" );
    pkt_->beginOffsetIs( 2 );
    EXPECT_EQ( window(), "030405" );
    pkt_->beginOffsetInc( 1 );
    EXPECT_EQ( window(), "0405" );
    pkt_->beginOffsetInc( -3 );
    EXPECT_EQ( window(), "0102030405" );
}

TEST_F( PktTest, WindowEndsBeforeTheEndOffset ) {
    fill( "0102030405" );
    pkt_->beginOffsetIs( 1 );
    pkt_->endOffsetIs( 2 );
    EXPECT_EQ( window(), "0203" );
    EXPECT_EQ( pkt_->beginOffset() + pkt_->offsetBytes() + pkt_->endOffset(), 5U );
}

TEST_F( PktTest, OffsetsThatMeetGiveAnEmptyWindow ) {
    fill( "0102030405" );
    pkt_->endOffsetIs( 2 );
    pkt_->beginOffsetIs( 3 );
    EXPECT_EQ( pkt_->offsetBytes(), 0U );
}

TEST_F( PktTest, WindowLiesOverTheSharedDataOnly ) {
    fill( "0304" );
    U8 head[] = { 1, 2 };
    pkt_->headIoVecIs( { head, 2 } );
    EXPECT_EQ( window(), "0304" );
}

TEST_F( PktTest, WindowKeepsItsDistanceFromAFrontThatMoves ) {
    fill( "0102030405" );
    pkt_->beginOffsetIs( 2 );
    pkt_->delSharedHeadData( 1 );
    EXPECT_EQ( window(), "0405" );
    pkt_->newSharedHeadData( 1 );
    EXPECT_EQ( window(), "030405" );
}

TEST_F( PktTest, WindowGivesHeadersInPlace ) {
    fill( "01005e010101 020000000001 0800 4500" );
    EXPECT_EQ( pkt_->offsetHeader<EthHdr>()->typeOrLen(), 0x0800 );
    pkt_->offsetHeader<EthHdr>()->typeOrLenIs( ethType8021Q );
    EXPECT_EQ( frame(), "01005e01010102000000000181004500" );
}

TEST_F( PktTest, PacketsMayHoldOneBuffer ) {
    fill( "0102030405" );
    Kiv::Ptr<Pkt> const other = freshPkt();
    other->sharedBufferIs( pkt_->sharedBuffer() );
    pkt_ = nullptr;
    EXPECT_EQ( hex( { other->front(), other->bytes() } ), "0102030405" );
}

TEST_F( PktTest, RegionEndsBehindItsLastByte ) {
    U8 const region[4] = {};
    EXPECT_TRUE( ptrWithinRegion( region, region, 4 ) );
    EXPECT_TRUE( ptrWithinRegion( region + 4, region, 4 ) );
    EXPECT_FALSE( ptrWithinRegion( region, region + 1, 3 ) );
    EXPECT_FALSE( ptrWithinRegion( region + 4, region, 3 ) );
}

TEST_F( PktTest, DataAtTheVeryEndOfTheRegionIsLegal ) {
    fill( "0102" );
    pkt_->delSharedHeadData( 2 );
    EXPECT_EQ( pkt_->bytes(), 0U );
}

TEST_F( PktDeathTest, BeginOffsetMustNotPassTheEnd ) {
    fill( "0102030405" );
    pkt_->endOffsetIs( 2 );
    EXPECT_DEATH( pkt_->beginOffsetIs( 4 ), assertionText( "checkOffsetBounds()" ) );
    EXPECT_DEATH( pkt_->beginOffsetInc( 4 ), assertionText( "checkOffsetBounds()" ) );
}

TEST_F( PktDeathTest, BeginOffsetMustNotPassTheFront ) {
    fill( "0102030405" );
    EXPECT_DEATH( pkt_->beginOffsetInc( -1 ), assertionText( "checkOffsetBounds()" ) );
}

TEST_F( PktDeathTest, EndOffsetMustNotPassTheBegin ) {
    fill( "0102030405" );
    pkt_->beginOffsetIs( 4 );
    EXPECT_DEATH( pkt_->endOffsetIs( 2 ), assertionText( "checkOffsetBounds()" ) );
}

TEST_F( PktDeathTest, WindowMustStillLieInTheData ) {
    fill( "0102030405" );
    pkt_->beginOffsetIs( 4 );
    pkt_->delSharedTailData( 2 );
    EXPECT_DEATH( pkt_->offsetFront(), assertionText( "checkOffsetBounds()" ) );
    EXPECT_DEATH( pkt_->offsetBytes(), assertionText( "checkOffsetBounds()" ) );
}

TEST_F( PktDeathTest, WindowMustHoldTheHeader ) {
    pkt_->newSharedHeadData( 13 );
    EXPECT_DEATH( pkt_->offsetHeader<EthHdr>(), assertionText( "checkOffsetBounds()" ) );
}

TEST_F( PktDeathTest, BoundsAreComparedInSixteenBits ) {
    pkt_->newSharedHeadData( 65536 );
    EXPECT_DEATH( pkt_->beginOffsetIs( 14 ), assertionText( "checkOffsetBounds()" ) );
}

TEST_F( PktTest, OffsetsAreSummedInSixteenBits ) {
    fill( "0102030405" );
    pkt_->endOffsetIs( 1 );
    pkt_->beginOffsetInc( -1 );
    EXPECT_EQ( pkt_->beginOffset(), 0xffff );
}

TEST_F( PktDeathTest, TailDataMustFitTheBuffer ) {
    fill( "0102030405" );
    EXPECT_DEATH(
        pkt_->newSharedTailData( 1 ), assertionText( "ptrWithinRegion( data_ + dataBytes_, buffer_, size_ )" )
    );
}

TEST_F( PktDeathTest, BufferHasNoHeadDataBeyondItsFront ) {
    Kiv::Ptr<Pkt::SharedBuffer> const buffer( new Pkt::SharedBuffer( 4 ) );
    buffer->newHeadData( 4 );
    EXPECT_DEATH( buffer->newHeadData( 1 ), assertionText( "ptrWithinRegion( data_, buffer_, size_ )" ) );
}

TEST_F( PktDeathTest, MoreThanAllDataCannotBeGivenBack ) {
    fill( "0102030405" );
    EXPECT_DEATH(
        pkt_->delSharedTailData( 6 ), assertionText( "ptrWithinRegion( data_ + dataBytes_, buffer_, size_ )" )
    );
    EXPECT_DEATH( pkt_->delSharedHeadData( 6 ), assertionText( "ptrWithinRegion( data_, buffer_, size_ )" ) );
}

TEST_F( PktDeathTest, HeadDataBeyondTheDataIsFoundAtItsEnd ) {
    fill( "0102030405" );
    pkt_->delSharedTailData( 4 );
    EXPECT_DEATH(
        pkt_->delSharedHeadData( 2 ), assertionText( "ptrWithinRegion( data_ + dataBytes_, buffer_, size_ )" )
    );
}

TEST_F( PktDeathTest, SharedDataNeedsABuffer ) {
    Kiv::Ptr<Pkt> const bare( new Pkt );
    EXPECT_DEATH( bare->newSharedHeadData( 1 ), assertionText( "sharedBuffer_ != 0" ) );
    EXPECT_DEATH( bare->delSharedHeadData( 1 ), assertionText( "sharedBuffer_ != 0" ) );
    EXPECT_DEATH( bare->newSharedTailData( 1 ), assertionText( "sharedBuffer_ != 0" ) );
    EXPECT_DEATH( bare->delSharedTailData( 1 ), assertionText( "sharedBuffer_ != 0" ) );
    EXPECT_DEATH( bare->sharedBufferIs( nullptr ), assertionText( "sharedBuffer_ != 0" ) );
}

TEST_F( PktDeathTest, SharedDataNeedsARegionInUse ) {
    fill( "0102030405" );
    pkt_->ioVecDelAll();
    EXPECT_DEATH( pkt_->delSharedHeadData( 1 ), assertionText( "firstIoVec_ != maxIovecs_" ) );
    EXPECT_DEATH( pkt_->delSharedTailData( 1 ), assertionText( "firstIoVec_ != maxIovecs_" ) );
}

} // namespace Zornet
