#include "platform/zornet/EthDevPam.h"

#include <gtest/gtest.h>

#include "../EmptyPktManager.h"
#include "../RangeMessage.h"
#include "FakeDevice.h"
#include "platform/zornet/PktManager.h"

namespace Zornet {

namespace {

/// A reactor that keeps the ids of the attributes without callbacks of their own.
class AttributeReader : public Pam::Notifiee {
  public:
    explicit AttributeReader( Kiv::Ptr<Pam> const& pam ) : Notifiee( pam ) { isRegisteredNotifieeIs( true ); }
    void onAttribute( Kiv::AttributeId id ) override { ids.push_back( id ); }
    std::vector<Kiv::AttributeId> ids;
};

class EthDevPamTest : public ::testing::Test {
  protected:
    FakeDevice& device( char const* name = "eth0", char const* ns = "" ) {
        return static_cast<FakeDevice&>( *provider_.device( NamespaceName( ns ), name ) );
    }
    Kiv::Ptr<EthDevPam> openPam() {
        auto const pam = EthDevPamIs( "eth0" );
        pam->deviceOpenIs( true );
        return pam;
    }
    U8 nextMark( EthDevPam& pam ) { return bytesOf( *pam.rxPkt() ).back(); }

  private:
    FakeProvider provider_;
    DeviceProviderScope scope_{ provider_ };
};

} // namespace

TEST_F( EthDevPamTest, StartsClosedAndHearingEveryProtocol ) {
    auto const pam = EthDevPamIs( "eth0" );
    EXPECT_FALSE( pam->deviceOpen() );
    EXPECT_EQ( pam->ethProtocol(), EthDevPam::everyProtocol );
    EXPECT_EQ( pam->captureMode(), 1U );
    EXPECT_EQ( pam->name(), Kiv::Name( "eth0" ) );
    EXPECT_EQ( device().ports(), 0U );
}

TEST_F( EthDevPamTest, OpensTheDeviceOfItsNameInItsNamespace ) {
    auto const pam = EthDevPamIs( "eth1" );
    pam->nsIs( NamespaceName( "blue" ) );
    pam->deviceOpenIs( true );
    EXPECT_EQ( pam->device().get(), &device( "eth1", "blue" ) );
    EXPECT_EQ( device( "eth1", "blue" ).ports(), 1U );
    EXPECT_EQ( device( "eth1" ).ports(), 0U );
}

TEST_F( EthDevPamTest, OpensOnceAndClosesOnce ) {
    auto const pam = openPam();
    pam->deviceOpenIs( true );
    EXPECT_EQ( device().ports(), 1U );
    pam->deviceOpenIs( false );
    pam->deviceOpenIs( false );
    EXPECT_EQ( device().ports(), 0U );
    EXPECT_FALSE( pam->deviceOpen() );
}

TEST_F( EthDevPamTest, DestructionCloses ) {
    openPam();
    EXPECT_EQ( device().ports(), 0U );
    EXPECT_EQ( device().noPorts, 1 );
}

TEST_F( EthDevPamTest, NamespaceTakesEffectWithTheNextOpening ) {
    auto const pam = openPam();
    pam->nsIs( NamespaceName( "blue" ) );
    EXPECT_EQ( pam->device().get(), &device() );
    pam->deviceOpenIs( false );
    pam->deviceOpenIs( true );
    EXPECT_EQ( pam->device().get(), &device( "eth0", "blue" ) );
}

TEST_F( EthDevPamTest, KnowsTwoProtocols ) {
    auto const pam = EthDevPamIs( "eth0" );
    pam->ethProtocolIs( 0x0800 );
    EXPECT_EQ(
        rangeMessage( [&] { pam->ethProtocolIs( 0x0806 ); } ),
        "EthDevPam::ethProtocol other than 3 and 0x0800 not allowed"
    );
    EXPECT_EQ( pam->ethProtocol(), 0x0800 );
}

TEST_F( EthDevPamTest, ProtocolChangedWhileOpenTakesEffectAtOnce ) {
    auto const pam = openPam();
    pam->ethProtocolIs( ethTypeIp );
    device().hear( frameOf( ethType8021Q ) );
    EXPECT_EQ( pam->readableCount(), 0U );
    EXPECT_EQ( device().ports(), 1U );
    pam->deviceOpenIs( false );
    EXPECT_EQ( device().ports(), 0U );
}

TEST_F( EthDevPamTest, ProtocolInForceLeavesTheQueue ) {
    auto const pam = openPam();
    device().hear( frameOf( ethTypeIp, 1 ) );
    pam->ethProtocolIs( EthDevPam::everyProtocol );
    EXPECT_EQ( nextMark( *pam ), 1 );
}

TEST_F( EthDevPamTest, TellsReactorsOfItsOwnAttributes ) {
    auto const pam = EthDevPamIs( "eth0" );
    Kiv::Ptr<AttributeReader> const reader( new AttributeReader( pam ) );
    pam->ethProtocolIs( ethTypeIp );
    pam->captureModeIs( 1 );
    pam->captureModeIs( 0 );
    pam->nsIs( NamespaceName( "blue" ) );
    pam->deviceOpenIs( true );
    pam->deviceOpenIs( false );
    EXPECT_EQ( reader->ids, ( std::vector<Kiv::AttributeId>{ 386, 387, 388, 389, 389 } ) );
    EXPECT_EQ( pam->modificationCount(), 5U );
}

TEST_F( EthDevPamTest, EachFrameRaisesReadableCountByOne ) {
    auto const pam = openPam();
    device().hear( frameOf( ethTypeIp ) );
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( pam->readableCount(), 2U );
    pam->rxPkt();
    EXPECT_EQ( pam->readableCount(), 2U );
}

TEST_F( EthDevPamTest, FrameIsThereWhenTheSignalComes ) {
    auto const pam = openPam();
    Kiv::Ptr<PamReader> const reader( new PamReader( pam ) );
    device().hear( frameOf( ethTypeIp, 9 ) );
    ASSERT_EQ( reader->pkts.size(), 1U );
    EXPECT_EQ( bytesOf( *reader->pkts[0] ), frameOf( ethTypeIp, 9 ) );
}

TEST_F( EthDevPamTest, GivesFramesOldestFirstAndThenNull ) {
    auto const pam = openPam();
    for ( U8 mark = 1; mark <= 3; ++mark ) {
        device().hear( frameOf( ethTypeIp, mark ) );
    }
    EXPECT_EQ( nextMark( *pam ), 1 );
    EXPECT_EQ( nextMark( *pam ), 2 );
    device().hear( frameOf( ethTypeIp, 4 ) );
    EXPECT_EQ( nextMark( *pam ), 3 );
    EXPECT_EQ( nextMark( *pam ), 4 );
    EXPECT_EQ( pam->rxPkt(), nullptr );
}

TEST_F( EthDevPamTest, FullQueueLosesTheOldestAndStillSignals ) {
    auto const pam = openPam();
    for ( std::size_t i = 0; i < PktQueue::maxPkts + 2; ++i ) {
        device().hear( frameOf( ethTypeIp, static_cast<U8>( i ) ) );
    }
    EXPECT_EQ( pam->rxErrors(), 2U );
    EXPECT_EQ( pam->readableCount(), PktQueue::maxPkts + 2 );
    for ( std::size_t i = 2; i < PktQueue::maxPkts + 2; ++i ) {
        EXPECT_EQ( nextMark( *pam ), static_cast<U8>( i ) );
    }
    EXPECT_EQ( pam->rxPkt(), nullptr );
}

TEST_F( EthDevPamTest, ClosedByAReactorOnALossItSignalsNothing ) {
    class Closer : public PamReader {
      public:
        explicit Closer( Kiv::Ptr<EthDevPam> const& pam ) : PamReader( pam ), pam_( *pam ) {}
        void onRxErrors() override { pam_.deviceOpenIs( false ); }

      private:
        EthDevPam& pam_;
    };
    auto const pam = openPam();
    for ( std::size_t i = 0; i < PktQueue::maxPkts; ++i ) {
        device().hear( frameOf( ethTypeIp ) );
    }
    Kiv::Ptr<Closer> const closer( new Closer( pam ) );
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( closer->signals, 0U );
    EXPECT_EQ( pam->rxPkt(), nullptr );
}

TEST_F( EthDevPamTest, ClosingEmptiesTheQueue ) {
    auto const pam = openPam();
    device().hear( frameOf( ethTypeIp ) );
    device().hear( frameOf( ethTypeIp ) );
    pam->deviceOpenIs( false );
    EXPECT_EQ( pam->rxPkt(), nullptr );
    pam->deviceOpenIs( true );
    EXPECT_EQ( pam->rxPkt(), nullptr );
    EXPECT_EQ( pam->readableCount(), 2U );
}

TEST_F( EthDevPamTest, MissingPacketCountsAsReceiveErrorWithoutASignal ) {
    auto const pam = openPam();
    auto const manager = globalPktManager();
    globalPktManagerIs( new EmptyPktManager );
    device().hear( frameOf( ethTypeIp ) );
    globalPktManagerIs( manager );
    EXPECT_EQ( pam->rxErrors(), 1U );
    EXPECT_EQ( pam->readableCount(), 0U );
}

TEST_F( EthDevPamTest, SendsFromTheFirstByteWhereverTheWindowStands ) {
    auto const pam = openPam();
    auto const pkt = pktWithBytes( frameOf( ethTypeIp, 5 ) );
    pkt->beginOffsetIs( 14 );
    pkt->endOffsetIs( 1 );
    pam->txPktIs( pkt );
    EXPECT_EQ( device().sent, std::vector<Frame>{ frameOf( ethTypeIp, 5 ) } );
    EXPECT_EQ( pkt->beginOffset(), 14 );
}

TEST_F( EthDevPamTest, SendsAFrameOfTwoRegionsInOnePiece ) {
    auto const pam = openPam();
    Frame head{ 1, 2, 3 };
    auto const pkt = pktWithBytes( Frame{ 4, 5 } );
    pkt->headIoVecIs( { head.data(), 3 } );
    pam->txPktIs( pkt );
    EXPECT_EQ( device().sent, ( std::vector<Frame>{ { 1, 2, 3, 4, 5 } } ) );
}

TEST_F( EthDevPamTest, FrameThatIsNotTakenIsDropped ) {
    auto const pam = openPam();
    device().takes = false;
    pam->txPktIs( pktWithBytes( frameOf( ethTypeIp ) ) );
    EXPECT_EQ( pam->txDrops(), 1U );
    EXPECT_EQ( pam->txErrors(), 0U );
}

TEST_F( EthDevPamTest, ClosedItDropsWhatItIsGivenToSend ) {
    auto const pam = openPam();
    pam->deviceOpenIs( false );
    pam->txPktIs( pktWithBytes( frameOf( ethTypeIp ) ) );
    EXPECT_EQ( pam->txDrops(), 1U );
    EXPECT_TRUE( device().sent.empty() );
}

TEST_F( EthDevPamTest, KeepsItsDeviceWhenAnotherProviderIsInForce ) {
    auto const pam = openPam();
    FakeProvider other;
    DeviceProviderScope const scope( other );
    auto const later = openPam();
    pam->txPktIs( pktWithBytes( frameOf( ethTypeIp ) ) );
    EXPECT_EQ( device().sent.size(), 1U );
    EXPECT_NE( later->device(), pam->device() );
}

TEST_F( EthDevPamTest, AnswersFromWithinASignal ) {
    auto const pam = openPam();
    Kiv::Ptr<PamReader> const reader( new PamReader( pam ) );
    reader->onSignal = [&] { pam->txPktIs( pam->rxPkt() ); };
    device().hear( frameOf( ethTypeIp, 3 ) );
    EXPECT_EQ( device().sent, std::vector<Frame>{ frameOf( ethTypeIp, 3 ) } );
}

} // namespace Zornet
