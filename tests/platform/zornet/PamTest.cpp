#include "platform/zornet/Pam.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>

#include "platform/zornet/PktManager.h"

namespace Zornet {

/// Gives the packets that a test queues.
class QueuePam : public Pam {
  public:
    QueuePam() : Pam( "queue" ) {}

    void doGetRxPkt() override {
        if ( !queue_.empty() ) {
            rxPktHolderIs( queue_.front() );
            queue_.pop_front();
        }
    }
    void arrive( Kiv::Ptr<Pkt> const& pkt ) {
        queue_.push_back( pkt );
        readableCountInc( 1 );
    }

  private:
    std::deque<Kiv::Ptr<Pkt>> queue_;
};

/// Writes down what it is told, and reads a packet for each signal.
class PamWatcher : public Pam::Notifiee {
  public:
    explicit PamWatcher( Kiv::Ptr<Pam> const& pam ) : Notifiee( pam ) { isRegisteredNotifieeIs( true ); }

    std::vector<std::string> told;
    std::vector<Kiv::Ptr<Pkt>> read;

    void onReadableCount() override {
        told.push_back( "readableCount" );
        read.push_back( notifier()->rxPkt() );
    }
    void onWritableCount() override { told.push_back( "writableCount" ); }
    void onTxDrops() override { told.push_back( "txDrops" ); }
    void onTxErrors() override { told.push_back( "txErrors" ); }
    void onRxErrors() override { told.push_back( "rxErrors" ); }
    void onSavedPacket( U16 index ) override { told.push_back( "savedPacket " + std::to_string( index ) ); }
    void onSavedPacketRx( U16 index ) override {
        told.push_back( "savedPacketRx " + std::to_string( index ) );
    }
};

class PamTest : public ::testing::Test {
  protected:
    Kiv::Ptr<QueuePam> pam_{ new QueuePam };
    Kiv::Ptr<PamWatcher> watcher_{ new PamWatcher( pam_ ) };
    Kiv::Ptr<Pkt> pkt_ = globalPktManager()->newPkt();
};

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F( PamTest, NewOneHasCountedNothing ) {
    EXPECT_EQ( pam_->readableCount() + pam_->writableCount() + pam_->txDrops(), 0U );
    EXPECT_EQ( pam_->txErrors() + pam_->rxErrors(), 0U );
    EXPECT_EQ( pam_->name(), Kiv::Name( "queue" ) );
}

TEST_F( PamTest, ReadsNullWhenNothingIsThere ) {
    EXPECT_FALSE( pam_->rxPkt() );
}

TEST_F( PamTest, SignalOfAFrameReadsThatFrame ) {
    pam_->arrive( pkt_ );
    EXPECT_THAT( watcher_->read, ElementsAre( pkt_ ) );
    EXPECT_EQ( pam_->readableCount(), 1U );
}

TEST_F( PamTest, FrameIsGivenOnce ) {
    pam_->arrive( pkt_ );
    EXPECT_FALSE( pam_->rxPkt() );
}

TEST_F( PamTest, ReadingEmptiesTheHolderFirst ) {
    pam_->rxPktHolderIs( pkt_ );
    EXPECT_FALSE( pam_->rxPkt() );
}

TEST_F( PamTest, HolderKeepsNoReferenceToWhatWasRead ) {
    pam_->arrive( pkt_ );
    watcher_->read.clear();
    EXPECT_EQ( pkt_->references(), 1U );
}

TEST_F( PamTest, CountersTellTheirReactors ) {
    pam_->writableCountInc( 1 );
    pam_->txDropsInc( 2 );
    pam_->txErrorsInc( 3 );
    pam_->rxErrorsInc( 4 );
    EXPECT_THAT( watcher_->told, ElementsAre( "writableCount", "txDrops", "txErrors", "rxErrors" ) );
    EXPECT_EQ( pam_->writableCount(), 1U );
    EXPECT_EQ( pam_->txDrops(), 2U );
    EXPECT_EQ( pam_->txErrors(), 3U );
    EXPECT_EQ( pam_->rxErrors(), 4U );
}

TEST_F( PamTest, EqualValueTellsNobody ) {
    pam_->writableCountIs( 0 );
    pam_->readableCountInc( 0 );
    EXPECT_THAT( watcher_->told, IsEmpty() );
}

TEST_F( PamTest, CounterWraps ) {
    pam_->rxErrorsIs( 0xffffffff );
    pam_->rxErrorsInc( 2 );
    EXPECT_EQ( pam_->rxErrors(), 1U );
}

TEST_F( PamTest, BaseHasNowhereToSendTo ) {
    Kiv::Ptr<Pam> const base( new Pam( "base" ) );
    base->txPktIs( pkt_ );
    EXPECT_EQ( base->txDrops(), 1U );
    EXPECT_FALSE( base->rxPkt() );
}

TEST_F( PamTest, SavedPacketsAreKeptByNumber ) {
    pam_->savedPacketIs( 7, pkt_ );
    EXPECT_EQ( pam_->savedPacket( 7 ), pkt_ );
    EXPECT_FALSE( pam_->savedPacket( 6 ) );
    pam_->savedPacketDel( pam_->savedPackets().begin() );
    EXPECT_FALSE( pam_->savedPacket( 7 ) );
    EXPECT_THAT( watcher_->told, ElementsAre( "savedPacket 7", "savedPacket 7" ) );
}

TEST_F( PamTest, SavedPacketOfEqualValueIsToldAgain ) {
    pam_->savedPacketIs( 7, pkt_ );
    pam_->savedPacketIs( 7, pkt_ );
    EXPECT_THAT( watcher_->told, ElementsAre( "savedPacket 7", "savedPacket 7" ) );
}

TEST_F( PamTest, SavedDirectionsAreKeptByNumber ) {
    pam_->savedPacketRxIs( 7, true );
    EXPECT_TRUE( pam_->savedPacketRx( 7 ) );
    EXPECT_FALSE( pam_->savedPacketRx( 6 ) );
    pam_->savedPacketRxDel( pam_->savedPacketsRx().begin() );
    EXPECT_FALSE( pam_->savedPacketRx( 7 ) );
    EXPECT_THAT( watcher_->told, ElementsAre( "savedPacketRx 7", "savedPacketRx 7" ) );
}

TEST_F( PamTest, NotifyTellsWithoutAChange ) {
    pam_->savedPacketNotify( 3 );
    pam_->savedPacketRxNotify( 4 );
    EXPECT_THAT( watcher_->told, ElementsAre( "savedPacket 3", "savedPacketRx 4" ) );
    EXPECT_EQ( pam_->modificationCount(), 0U );
}

TEST_F( PamTest, DeletingWhatIsNotThereTellsNobody ) {
    pam_->savedPacketDel( U16{ 3 } );
    pam_->savedPacketRxDel( U16{ 3 } );
    EXPECT_THAT( watcher_->told, IsEmpty() );
}

TEST_F( PamTest, AttributeNumbersAreStable ) {
    EXPECT_EQ( Pam::attrReadableCount, 258 );
    EXPECT_EQ( Pam::attrTxPkt, 261 );
    EXPECT_EQ( Pam::attrDoGetRxPkt, 266 );
    EXPECT_EQ( Pam::attrDerived, 386 );
}

} // namespace Zornet
