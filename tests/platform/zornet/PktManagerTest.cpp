#include "platform/zornet/PktManager.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/platform/zornet/EmptyPktManager.h"
#include "tests/platform/zornet/Hex.h"

namespace Zornet {

class PktManagerTest : public ::testing::Test {
  protected:
    ~PktManagerTest() override { globalPktManagerIs( outer_ ); }

    std::vector<Kiv::Ptr<Pkt>> newPkts( std::size_t count ) {
        std::vector<Kiv::Ptr<Pkt>> pkts;
        for ( std::size_t i = 0; i < count; ++i ) {
            pkts.push_back( manager_->newPkt() );
        }
        return pkts;
    }

    Kiv::Ptr<PktManager> manager_{ new PktManager };
    Kiv::Ptr<PktManager> outer_ = globalPktManager();
};

TEST_F( PktManagerTest, LimitIsNoCapOnPacketsInUse ) {
    manager_->pktLimitIs( 2 );
    for ( auto const& pkt : newPkts( 10 ) ) {
        EXPECT_TRUE( pkt );
    }
}

TEST_F( PktManagerTest, KeepsAtMostTheLimitForReuse ) {
    manager_->pktLimitIs( 3 );
    newPkts( 5 );
    EXPECT_EQ( manager_->freePkts(), 3U );
}

TEST_F( PktManagerTest, LowerLimitFreesWhatIsAboveIt ) {
    newPkts( 5 );
    manager_->pktLimitIs( 1 );
    EXPECT_EQ( manager_->freePkts(), 1U );
}

TEST_F( PktManagerTest, LimitOfZeroKeepsNothing ) {
    manager_->pktLimitIs( 0 );
    newPkts( 2 );
    EXPECT_EQ( manager_->freePkts(), 0U );
}

TEST_F( PktManagerTest, ReusesAPacketWithItsBuffer ) {
    Kiv::Ptr<Pkt> pkt = manager_->newPkt();
    pkt->newSharedHeadData( 1514 );
    Pkt const* const first = pkt.get();
    auto const* const buffer = pkt->sharedBuffer().get();
    pkt = nullptr;
    pkt = manager_->newPkt();
    pkt->newSharedHeadData( 1514 );
    EXPECT_EQ( pkt.get(), first );
    EXPECT_EQ( pkt->sharedBuffer().get(), buffer );
    EXPECT_EQ( manager_->freePkts(), 0U );
}

TEST_F( PktManagerTest, ReusedPacketIsAsNew ) {
    Kiv::Ptr<Pkt> pkt = manager_->newPkt();
    pkt->newSharedHeadData( 100 );
    pkt->beginOffsetIs( 20 );
    pkt->endOffsetIs( 10 );
    pkt->ioVecDelAll();
    pkt = nullptr;
    pkt = manager_->newPkt();
    EXPECT_EQ( pkt->bytes(), 0U );
    EXPECT_EQ( pkt->firstIoVec(), 1 );
    EXPECT_EQ( pkt->beginOffset(), 0 );
    EXPECT_EQ( pkt->endOffset(), 0 );
    EXPECT_EQ( pkt->ioVec( 1 ).bytes, 0U );
}

TEST_F( PktManagerTest, ReusedBufferHasNoTailRoom ) {
    manager_->newPkt()->newSharedHeadData( 100 );
    Kiv::Ptr<Pkt> const pkt = manager_->newPkt();
    pkt->newSharedHeadData( 60 );
    EXPECT_EQ( pkt->front() + 60, pkt->sharedBuffer()->data() + pkt->sharedBuffer()->dataBytes() );
    EXPECT_TRUE( pkt->sharedBuffer()->hasHeadRoom( 40 ) );
    EXPECT_FALSE( pkt->sharedBuffer()->hasHeadRoom( 41 ) );
}

TEST_F( PktManagerTest, BufferThatAnotherPacketHoldsIsLeftToIt ) {
    Kiv::Ptr<Pkt> pkt = manager_->newPkt();
    pkt->newSharedHeadData( 4 );
    Kiv::Ptr<Pkt::SharedBuffer> const shared = pkt->sharedBuffer();
    pkt = nullptr;
    pkt = manager_->newPkt();
    EXPECT_NE( pkt->sharedBuffer(), shared );
    EXPECT_EQ( shared->dataBytes(), 4U );
}

TEST_F( PktManagerTest, PacketMayOutliveEveryOtherHoldOfItsManager ) {
    Kiv::Ptr<Pkt> pkt = manager_->newPkt();
    manager_ = nullptr;
    pkt->newSharedHeadData( 4 );
    pkt = nullptr;
    EXPECT_FALSE( pkt );
}

TEST_F( PktManagerTest, ProcessHasOneManager ) {
    EXPECT_EQ( globalPktManager(), globalPktManager() );
    globalPktManagerIs( manager_ );
    EXPECT_EQ( globalPktManager(), manager_ );
}

TEST_F( PktManagerTest, NullManagerIsRefused ) {
    EXPECT_THROW( globalPktManagerIs( nullptr ), Kiv::RangeException );
    EXPECT_EQ( globalPktManager(), outer_ );
}

TEST_F( PktManagerTest, PacketOfBytesHasHeadRoomForTags ) {
    auto const frame = fromHex( "0102030405" );
    Kiv::Ptr<Pkt> const pkt = pktWithBytes( frame );
    EXPECT_EQ( hex( { pkt->front(), pkt->bytes() } ), "0102030405" );
    U8 const* const payload = pkt->front();
    pkt->newSharedHeadData( 8 );
    EXPECT_EQ( pkt->front() + 8, payload );
}

TEST_F( PktManagerTest, PacketOfBytesIsACopy ) {
    auto frame = fromHex( "0102030405" );
    Kiv::Ptr<Pkt> const pkt = pktWithBytes( frame, 0 );
    frame[0] = 0xff;
    EXPECT_EQ( hex( { pkt->front(), pkt->bytes() } ), "0102030405" );
    EXPECT_EQ( pktWithBytes( {} )->bytes(), 0U );
}

TEST_F( PktManagerTest, NoPacketOfBytesWithoutAPacket ) {
    globalPktManagerIs( new EmptyPktManager );
    EXPECT_FALSE( pktWithBytes( fromHex( "01" ) ) );
}

} // namespace Zornet
