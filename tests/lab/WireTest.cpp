#include "tests/lab/WireTest.h"

namespace Lab {

TEST_F( WireTest, FrameReachesEveryOtherDeviceOfTheSegment ) {
    Bytes const sent = v2Report( IpAddr( "10.0.0.1" ), IpAddr( "239.1.1.1" ) );
    a->send( sent );
    settle();
    EXPECT_THAT( b->frames, ElementsAre( sent ) );
    EXPECT_THAT( c->frames, ElementsAre( sent ) );
    EXPECT_THAT( a->frames, IsEmpty() );
}

TEST_F( WireTest, NothingIsDeliveredInsideTheSendCall ) {
    a->send( "x" );
    EXPECT_EQ( b->heard, "" );
    EXPECT_EQ( lan().inFlight(), 1U );
    settle();
    EXPECT_EQ( b->heard, "x" );
    EXPECT_EQ( lan().inFlight(), 0U );
}

TEST_F( WireTest, PacketMayBeChangedOnceItIsSent ) {
    Kiv::Ptr<Zornet::Pkt> const pkt = Zornet::pktWithBytes( frame( 'x' ) );
    a->pam->txPktIs( pkt );
    pkt->front()[13] = 'y';
    a->pam->txPktIs( pkt );
    settle();
    EXPECT_EQ( b->heard, "xy" );
}

TEST_F( WireTest, AnswerTravelsInALaterTurn ) {
    b->reaction = [this] { b->send( "r" ); };
    a->send( "q" );
    runFor( 1.0 );
    EXPECT_EQ( a->heard, "r" );
    EXPECT_EQ( c->heard, "qr" );
    EXPECT_NEAR( a->times.at( 0 ) - b->times.at( 0 ), turn, 1e-9 );
}

TEST_F( WireTest, FramesKeepTheirOrder ) {
    a->send( "12" );
    c->send( "3" );
    a->send( "4" );
    settle();
    EXPECT_EQ( b->heard, "1234" );
}

TEST_F( WireTest, TwoAccessObjectsOfOneDeviceDoNotHearEachOther ) {
    auto const second = node( "a" );
    a->send( "x" );
    second->send( "y" );
    b->send( "z" );
    settle();
    EXPECT_EQ( a->heard, "z" );
    EXPECT_EQ( second->heard, "z" );
    EXPECT_EQ( b->heard, "xy" );
}

TEST_F( WireTest, SegmentsAreApart ) {
    wire.attach( ns(), "d", "other" );
    auto const d = node( "d" );
    a->send( "x" );
    d->send( "y" );
    settle();
    EXPECT_EQ( b->heard, "x" );
    EXPECT_EQ( d->heard, "" );
}

TEST_F( WireTest, SameNameInAnotherNamespaceIsAnotherDevice ) {
    wire.attach( ns( "blue" ), "a", "lan" );
    auto const blue = node( "a", "blue" );
    a->send( "x" );
    settle();
    EXPECT_EQ( blue->heard, "x" );
}

TEST_F( WireTest, DeviceThatNobodyAttachedIsMissing ) {
    auto const d = node( "d" );
    EXPECT_EQ( d->pam->txErrors(), 1U );
    EXPECT_EQ( d->pam->rxErrors(), 1U );
    d->send( "x" );
    a->send( "y" );
    settle();
    EXPECT_EQ( d->pam->txDrops(), 1U );
    EXPECT_EQ( d->heard, "" );
}

TEST_F( WireTest, MissingDeviceComesToLifeWhenItIsAttached ) {
    auto const d = node( "d" );
    wire.attach( ns(), "d", "lan" );
    d->send( "x" );
    a->send( "y" );
    settle();
    EXPECT_EQ( a->heard, "x" );
    EXPECT_EQ( d->heard, "y" );
}

TEST_F( WireTest, UnknownDeviceLandsOnTheDefaultSegmentWhereThereIsOne ) {
    wire.defaultSegmentIs( "lan" );
    auto const d = node( "d" );
    a->send( "y" );
    settle();
    EXPECT_EQ( d->heard, "y" );
    EXPECT_EQ( d->pam->rxErrors(), 0U );
}

TEST_F( WireTest, AttachedDeviceDoesNotLandOnTheDefaultSegment ) {
    wire.defaultSegmentIs( "lan" );
    wire.attach( ns(), "d", "other" );
    auto const d = node( "d" );
    a->send( "y" );
    settle();
    EXPECT_EQ( d->heard, "" );
}

TEST_F( WireTest, DeviceMovesToAnotherSegment ) {
    wire.attach( ns(), "b", "other" );
    a->send( "x" );
    settle();
    EXPECT_EQ( b->heard, "" );
    EXPECT_EQ( c->heard, "x" );
}

TEST_F( WireTest, LinkThatIsDownNeitherSendsNorHears ) {
    wire.linkUpIs( ns(), "b", false );
    EXPECT_EQ( b->pam->txErrors(), 1U );
    EXPECT_EQ( b->pam->rxErrors(), 1U );
    b->send( "x" );
    a->send( "y" );
    settle();
    EXPECT_EQ( b->pam->txDrops(), 1U );
    EXPECT_EQ( b->heard, "" );
    EXPECT_EQ( c->heard, "y" );
}

TEST_F( WireTest, LinkThatComesUpAgainWorksAgain ) {
    wire.linkUpIs( ns(), "b", false );
    a->send( "x" );
    settle();
    wire.linkUpIs( ns(), "b", true );
    a->send( "y" );
    b->send( "z" );
    settle();
    EXPECT_EQ( b->heard, "y" );
    EXPECT_EQ( a->heard, "z" );
}

TEST_F( WireTest, LinkUpDoesNotStandInForASegment ) {
    wire.detach( ns(), "b" );
    wire.linkUpIs( ns(), "b", true );
    b->send( "x" );
    settle();
    EXPECT_EQ( b->pam->txDrops(), 1U );
}

TEST_F( WireTest, RemovedDeviceIsToldOnceAndItsFramesStillArrive ) {
    b->send( "x" );
    wire.detach( ns(), "b" );
    wire.detach( ns(), "b" );
    a->send( "y" );
    settle();
    EXPECT_EQ( b->pam->rxErrors(), 1U );
    EXPECT_EQ( b->heard, "" );
    EXPECT_EQ( a->heard, "x" );
}

TEST_F( WireTest, DeviceMayGoWhileAFrameIsBeingHandedOver ) {
    b->reaction = [this] { wire.detach( ns(), "b" ); };
    a->send( "xy" );
    settle();
    EXPECT_EQ( b->heard, "x" );
    EXPECT_EQ( c->heard, "xy" );
}

TEST_F( WireTest, DeviceThatComesWhileAFrameIsBeingHandedOverHearsTheNext ) {
    Kiv::Ptr<WireNode> d;
    b->reaction = [&, this] {
        if ( !d ) {
            wire.attach( ns(), "d", "lan" );
            d = node( "d" );
        }
    };
    a->send( "xy" );
    settle();
    EXPECT_EQ( d->heard, "y" );
    EXPECT_EQ( c->heard, "xy" );
}

TEST_F( WireTest, FrameShorterThanAnEthernetHeaderIsRefused ) {
    a->send( Bytes( 13 ) );
    settle();
    EXPECT_EQ( a->pam->txDrops(), 1U );
    EXPECT_THAT( b->frames, IsEmpty() );
}

TEST_F( WireTest, TagsStayInTheFrame ) {
    Manner manner;
    manner.tag = U16{ 100 };
    IpAddr const group( "239.1.1.1" );
    Bytes const message = igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, group );
    Bytes const tagged = igmpFrame( IpAddr( "10.0.0.1" ), group, message, manner );
    a->send( tagged );
    settle();
    EXPECT_THAT( b->frames, ElementsAre( tagged ) );
}

TEST_F( WireTest, AccessObjectOutlivesItsWire ) {
    Kiv::Ptr<Zornet::EthDevPam> const pam = Zornet::EthDevPamIs( "x" );
    {
        Wire inner( wheel() );
        inner.attach( ns(), "x", "lan" );
        Zornet::DeviceProviderScope const innerScope( inner );
        pam->deviceOpenIs( true );
    }
    pam->txPktIs( Zornet::pktWithBytes( frame( 'x' ) ) );
    settle();
    EXPECT_EQ( pam->txDrops(), 1U );
    EXPECT_EQ( pam->rxErrors(), 1U );
}

TEST_F( WireTest, WorksWhereTheActivityDefersNotifications ) {
    deferredDeliveryIs( true );
    a->send( "x" );
    runFor( 1.0 );
    EXPECT_EQ( b->heard, "x" );
}

TEST_F( WireTest, CountsWhatCrossesASegment ) {
    a->send( "xy" );
    settle();
    EXPECT_EQ( lan().counters().sent, 2U );
    EXPECT_EQ( lan().counters().received, 4U );
    EXPECT_EQ( lan().counters().lost, 0U );
}

} // namespace Lab
