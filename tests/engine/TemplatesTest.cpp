/// The ready-made packets of a host: their bytes, where their headers lie, and when they are made anew.

#include <set>

#include "tests/platform/zornet/AssertionText.h"
#include "tests/platform/zornet/Hex.h"
#include "tests/support/DeliveryTest.h"
#include "tests/support/FedPam.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Igmp;
using Support::FedPam;
using Support::TraceCapture;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::assertionText;
using Zornet::IpAddr;

constexpr char const* G = "239.1.1.1";

/// A packet manager that gives so many packets and then none.
class StingyManager : public Zornet::PktManager {
  public:
    static constexpr int plenty = 1000000;

    Ptr<Zornet::Pkt> newPkt() override { return left-- > 0 ? PktManager::newPkt() : nullptr; }
    int left = plenty;
};

class TemplatesTest : public Support::DeliveryTest {
  protected:
    TemplatesTest() { globalPktManagerIs( manager ); }
    ~TemplatesTest() override { globalPktManagerIs( outer_ ); }

    void rebuild() {
        host().configVersionIs( host().configVersion() + 1 );
        settle();
    }
    void tag( U16 vlanId ) {
        host().taggedIs( true );
        host().vlanIdIs( vlanId );
    }
    std::vector<unsigned> offsets() {
        return { sm().offsetEtherHeader(), sm().offsetIpHeader(), sm().offsetIgmpReportHeader(),
                 sm().offsetIgmpGroupRecStart() };
    }
    /// The packet's bytes. "xxxx" stands for the IGMP checksum, which nobody has written yet.
    std::string bytesOf( Zornet::Pkt const& pkt ) {
        Lab::Bytes frame( pkt.bytes() );
        pkt.copyTo( frame.data() );
        unsigned const checksum = sm().offsetIgmpReportHeader() + 2U;
        frame[checksum] = frame[checksum + 1] = 0; // not even looked at
        return Zornet::hex( frame ).replace( checksum * 2, 4, "xxxx" );
    }
    /// The same of a version 3 template, which has to be that of version 2 too.
    std::string templateBytes() {
        EXPECT_EQ( bytesOf( *sm().v3ReportPkt() ), bytesOf( *sm().v2ReportPkt() ) );
        return bytesOf( *sm().v3ReportPkt() );
    }
    static std::string text( char const* digits ) { return Zornet::ungrouped( digits ); }

    Ptr<StingyManager> const manager{ new StingyManager };

  private:
    Ptr<Zornet::PktManager> const outer_ = Zornet::globalPktManager();
};
INSTANTIATE_DELIVERY_TESTS( TemplatesTest );

TEST_P( TemplatesTest, UntaggedWithoutRouterAlert ) {
    host().enableRouterAlertIs( false );
    enable();
    EXPECT_THAT( offsets(), ElementsAre( 0, 14, 34, 42 ) );
    EXPECT_EQ(
        templateBytes(), text( "01005e000016 020000000001 0800 45000000000000000102 cfe5 0a000001e0000016 "
                               "2200xxxx00000000" )
    );
}

TEST_P( TemplatesTest, UntaggedWithRouterAlert ) {
    enable();
    EXPECT_THAT( offsets(), ElementsAre( 0, 14, 38, 46 ) );
    EXPECT_EQ(
        templateBytes(), text( "01005e000016 020000000001 0800 46000000000000000102 3ae1 0a000001e0000016 "
                               "94040000 2200xxxx00000000" )
    );
}

TEST_P( TemplatesTest, TaggedWithoutRouterAlert ) {
    tag( 100 );
    host().enableRouterAlertIs( false );
    enable();
    EXPECT_THAT( offsets(), ElementsAre( 0, 18, 38, 46 ) );
    EXPECT_EQ(
        templateBytes(), text( "01005e000016 020000000001 81000064 0800 45000000000000000102 cfe5 "
                               "0a000001e0000016 2200xxxx00000000" )
    );
}

TEST_P( TemplatesTest, TaggedWithRouterAlert ) {
    tag( 100 );
    enable();
    EXPECT_THAT( offsets(), ElementsAre( 0, 18, 42, 50 ) );
    EXPECT_EQ(
        templateBytes(), text( "01005e000016 020000000001 81000064 0800 46000000000000000102 3ae1 "
                               "0a000001e0000016 94040000 2200xxxx00000000" )
    );
}

TEST_P( TemplatesTest, VlanAbove4095LosesItsHighBitsInTheTag ) {
    tag( 0xf064 );
    enable();
    EXPECT_EQ( templateBytes().substr( 24, 8 ), "81000064" );
    host().vlanIdIs( 65535 );
    rebuild();
    EXPECT_EQ( templateBytes().substr( 24, 8 ), "81000fff" );
}

TEST_P( TemplatesTest, WindowStandsBehindTheHeadersAndIsEmpty ) {
    enable();
    for ( Zornet::Pkt const* pkt : { sm().v3ReportPkt().get(), sm().v2ReportPkt().get() } ) {
        EXPECT_EQ( pkt->beginOffset(), 46 );
        EXPECT_EQ( pkt->endOffset(), 0 );
        EXPECT_EQ( pkt->offsetBytes(), 0U );
        EXPECT_EQ( pkt->bytes(), 46U );
    }
}

TEST_P( TemplatesTest, BufferHasRoomForTheMtuAndNoMore ) {
    host().mtuIs( 600 );
    enable();
    Zornet::Pkt& pkt = *sm().v3ReportPkt();
    pkt.newSharedTailData( 600 - 46 );
    EXPECT_EQ( pkt.bytes(), 600U );
    EXPECT_DEATH(
        pkt.newSharedTailData( 1 ), assertionText( "ptrWithinRegion( data_ + dataBytes_, buffer_, size_ )" )
    );
    pkt.delSharedTailData( 600 - 46 );
}

TEST_P( TemplatesTest, NoTwoTemplatesArePutInOneBuffer ) {
    addHost( "b", "10.0.0.2" ).enabledIs( true );
    settle();
    enable();
    std::set<Zornet::U8 const*> const fronts = { sm().v3ReportPkt()->front(), sm().v2ReportPkt()->front(),
                                                 sm( "b" ).v3ReportPkt()->front(),
                                                 sm( "b" ).v2ReportPkt()->front() };
    EXPECT_THAT( fronts, SizeIs( 4 ) );
}

TEST_P( TemplatesTest, FullRebuildCountsTwo ) {
    enable();
    EXPECT_EQ( status().numPacketInitialized(), 2U );
    rebuild();
    EXPECT_EQ( status().numPacketInitialized(), 4U );
}

TEST_P( TemplatesTest, EqualGenerationRebuildsNothing ) {
    enable();
    Ptr<Zornet::Pkt> const v2Pkt = sm().v2ReportPkt();
    host().configVersionIs( host().configVersion() );
    settle();
    EXPECT_EQ( sm().v2ReportPkt(), v2Pkt );
    EXPECT_EQ( status().numPacketInitialized(), 2U );
}

TEST_P( TemplatesTest, GenerationMayMoveAnywhere ) {
    host().configVersionIs( 5 );
    settle();
    enable();
    host().configVersionIs( 0 );
    settle();
    EXPECT_EQ( status().numPacketInitialized(), 4U );
}

TEST_P( TemplatesTest, AttributesAloneChangeNothingUntilTheGenerationMoves ) {
    enable();
    std::string const before = templateBytes();
    host().ipAddrIs( IpAddr( "10.0.0.9" ) );
    host().macAddrIs( Zornet::EthAddr( "02:00:00:00:00:09" ) );
    host().enableRouterAlertIs( false );
    host().mtuIs( 600 );
    tag( 7 );
    settle();
    EXPECT_EQ( templateBytes(), before );
    EXPECT_THAT( sent(), IsEmpty() );
    rebuild();
    EXPECT_EQ(
        templateBytes(), text( "01005e000016 020000000009 81000007 0800 45000000000000000102 cfdd "
                               "0a000009e0000016 2200xxxx00000000" )
    );
    EXPECT_EQ( sm().mtu(), 600U );
}

TEST_P( TemplatesTest, DisabledHostRebuildsWithoutACount ) {
    enable();
    Ptr<IgmpHostStatus> const kept( &status() );
    host().enabledIs( false );
    settle();
    Ptr<Zornet::Pkt> const v3Pkt = sm().v3ReportPkt();
    Ptr<Zornet::Pkt> const v2Pkt = sm().v2ReportPkt();
    rebuild();
    EXPECT_NE( sm().v3ReportPkt(), v3Pkt );
    EXPECT_NE( sm().v2ReportPkt(), v2Pkt );
    EXPECT_EQ( kept->numPacketInitialized(), 2U );
    EXPECT_EQ( statusDir->igmpHostStatus( "host" ), nullptr );
}

TEST_P( TemplatesTest, RebuiltTemplatesCarryNothingOfWhatWasSent ) {
    enable( igmpVersion3 );
    std::string const fresh = templateBytes();
    exclude( G );
    runFor( 20.0 );
    host().igmpVersionIs( igmpVersion2 );
    settle();
    exclude( "239.1.1.2" );
    ASSERT_THAT( sent(), SizeIs( 3 ) );
    rebuild();
    EXPECT_EQ( templateBytes(), fresh );
}

TEST_P( TemplatesTest, OldPacketStaysAsItIsForWhoeverHoldsIt ) {
    enable();
    exclude( G );
    Ptr<Zornet::Pkt> const old = sm().v2ReportPkt();
    std::string const before = bytesOf( *old );
    rebuild();
    exclude( "239.1.1.2" );
    EXPECT_EQ( bytesOf( *old ), before );
}

TEST_P( TemplatesTest, AllocationIsTracedWithItsSizes ) {
    host().mtuIs( 600 );
    TraceCapture const trace( "IgmpHost", 5 );
    rebuild();
    EXPECT_THAT(
        trace.texts(), ElementsAre(
                           "Packet buffer allocated, size 600, mtu 600, Pkt size: 600",
                           "Packet buffer allocated, size 600, mtu 600, Pkt size: 600"
                       )
    );
    EXPECT_THAT( trace.levels(), Each( 5 ) );
}

TEST_P( TemplatesTest, FailureOfTheFirstPacketLeavesBothTemplates ) {
    enable();
    Ptr<Zornet::Pkt> const v3Pkt = sm().v3ReportPkt();
    Ptr<Zornet::Pkt> const v2Pkt = sm().v2ReportPkt();
    manager->left = 0;
    TraceCapture const trace( "IgmpHost", 1 );
    rebuild();
    EXPECT_EQ( sm().v3ReportPkt(), v3Pkt );
    EXPECT_EQ( sm().v2ReportPkt(), v2Pkt );
    EXPECT_EQ( manager->left, -1 ); // no second packet was asked for
    EXPECT_EQ( status().numPacketInitialized(), 2U );
    EXPECT_THAT( trace.texts(), ElementsAre( "Packet allocation failed in IgmpV3HostReportPkt " ) );
    EXPECT_THAT( trace.levels(), ElementsAre( 1 ) );
}

TEST_P( TemplatesTest, FailureOfTheSecondPacketLeavesTheVersion2Template ) {
    enable();
    Ptr<Zornet::Pkt> const v3Pkt = sm().v3ReportPkt();
    Ptr<Zornet::Pkt> const v2Pkt = sm().v2ReportPkt();
    manager->left = 1;
    TraceCapture const trace( "IgmpHost", 1 );
    rebuild();
    EXPECT_NE( sm().v3ReportPkt(), v3Pkt );
    EXPECT_EQ( sm().v2ReportPkt(), v2Pkt );
    EXPECT_EQ( status().numPacketInitialized(), 3U );
    EXPECT_THAT( trace.texts(), ElementsAre( "Packet allocation failed in IgmpV3HostReportPkt " ) );
}

TEST_P( TemplatesTest, HostThatGotNoPacketSendsTheOldTemplate ) {
    enable();
    host().ipAddrIs( IpAddr( "10.0.0.9" ) );
    manager->left = 0;
    rebuild();
    exclude( G );
    ASSERT_THAT( sent(), SizeIs( 1 ) );
    EXPECT_EQ( sent()[0].bytes, Lab::v2Report( IpAddr( "10.0.0.1" ), IpAddr( G ) ) );
}

TEST_P( TemplatesTest, MtuIsTakenEvenWhereNoPacketIsToBeHad ) {
    enable( igmpVersion3 );
    host().mtuIs( 1600 );
    manager->left = 0;
    rebuild();
    EXPECT_EQ( sm().mtu(), 1600U );
    EXPECT_DEATH( exclude( G ), assertionText( "ptrWithinRegion( data_ + dataBytes_, buffer_, size_ )" ) );
}

TEST_P( TemplatesTest, ManagerIsToldHowManyPacketsToKeep ) {
    manager->pktLimitIs( 5 );
    rebuild();
    EXPECT_EQ( manager->pktLimit(), 10000U );
}

TEST_P( TemplatesTest, HostWithAPamFromOutsideLeavesTheManagersLimit ) {
    host().externalPamIs( true );
    settle();
    manager->pktLimitIs( 5 );
    rebuild();
    EXPECT_EQ( manager->pktLimit(), 5U );
}

TEST_P( TemplatesTest, TagIsHonouredForAPamFromOutside ) {
    Ptr<FedPam> const fed( new FedPam );
    tag( 100 );
    host().externalPamIs( true );
    settle();
    host().pamIs( fed );
    settle();
    enable( igmpVersion3 );
    exclude( G );
    ASSERT_THAT( fed->sent, SizeIs( 1 ) );
    EXPECT_EQ( Zornet::hex( fed->sent[0] ).substr( 24, 12 ), "810000640800" );
}

TEST_P( TemplatesTest, MtuOfTheHeadersIsEnough ) {
    host().mtuIs( 46 );
    enable();
    EXPECT_EQ( sm().v3ReportPkt()->bytes(), 46U );
}

TEST_P( TemplatesTest, MtuBelowTheHeadersEndsTheProcess ) {
    for ( U32 const mtu : { 0U, 13U, 33U, 37U, 45U } ) {
        EXPECT_DEATH(
            {
                host().mtuIs( mtu );
                rebuild();
            },
            assertionText( "checkOffsetBounds()" )
        ) << mtu;
    }
}

TEST_P( TemplatesTest, MtuThatDoesNotFitIn16BitsEndsTheProcess ) {
    EXPECT_DEATH(
        {
            host().mtuIs( 65536 );
            rebuild();
        },
        assertionText( "checkOffsetBounds()" )
    );
}

TEST_P( TemplatesTest, PacketWithoutABufferEndsTheProcess ) {
    Ptr<Zornet::Pkt> const bare( new Zornet::Pkt );
    EXPECT_DEATH( sm().pktBufferInitialize( bare ), assertionText( "sharedBuffer_ != 0" ) );
}

TEST_P( TemplatesTest, PacketThatIsInPlaceBeforeTheCountMoves ) {
    class Onlooker : public IgmpHostStatus::Notifiee {
      public:
        Onlooker( Ptr<IgmpHostStatus> const& status, IgmpHostSm& machine )
            : Notifiee( status ), machine_( machine ) {
            isRegisteredNotifieeIs( true );
        }
        void onNumPacketInitialized() override {
            seen.push_back( machine_.v3ReportPkt() );
            seen.push_back( machine_.v2ReportPkt() );
        }
        std::vector<Ptr<Zornet::Pkt>> seen;

      private:
        IgmpHostSm& machine_;
    };
    enable();
    Ptr<Zornet::Pkt> const oldV2Pkt = sm().v2ReportPkt();
    Ptr<Onlooker> const onlooker( new Onlooker( &status(), sm() ) );
    rebuild();
    EXPECT_THAT(
        onlooker->seen, ElementsAre( sm().v3ReportPkt(), oldV2Pkt, sm().v3ReportPkt(), sm().v2ReportPkt() )
    );
}

} // namespace
