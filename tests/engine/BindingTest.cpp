/// How a host reaches the wire: a device of its own or an access object from outside, and when the one is
/// exchanged for the other. Tagged hosts have a file of their own.

#include "tests/support/DeliveryTest.h"
#include "tests/support/FedPam.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Igmp;
using Support::FedPam;
using Support::TraceCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::EthDevPam;
using Zornet::IpAddr;

constexpr char const* G = "239.1.1.1";

class BindingTest : public Support::DeliveryTest {
  protected:
    void enabledIs( bool value ) {
        host().enabledIs( value );
        settle();
    }
    void rebind() {
        host().intfConfigVersionIs( host().intfConfigVersion() + 1 );
        settle();
    }
    void externalPamIs( bool value ) {
        host().externalPamIs( value );
        settle();
    }
    void pamIs( Ptr<Zornet::Pam> const& pam ) {
        host().pamIs( pam );
        settle();
    }
    bool isUnbound() { return !sm().txPam() && !sm().rxPam() && !sm().useMux(); }
    /// The one access object behind both directions; null where there is none.
    EthDevPam* bound() {
        EXPECT_EQ( sm().rxPam(), sm().txPam().get() );
        return sm().txPam().get();
    }
    static Lab::Bytes report() { return Lab::v2Report( IpAddr( "10.0.0.7" ), IpAddr( G ) ); }
};
INSTANTIATE_DELIVERY_TESTS( BindingTest );

TEST_P( BindingTest, HostWhoseInterfaceWasNeverSetUpHasATemplateAndNoDevice ) {
    host().intfConfigVersionIs( 0 );
    settle();
    enable();
    EXPECT_TRUE( isUnbound() );
    EXPECT_NE( sm().v2ReportPkt(), nullptr );
    EXPECT_EQ( device().openings, 0U );
    rebind();
    ASSERT_NE( bound(), nullptr );
    EXPECT_TRUE( bound()->deviceOpen() );
}

TEST_P( BindingTest, InterfaceGenerationBackAtZeroUnbinds ) {
    enable();
    host().intfConfigVersionIs( 0 );
    settle();
    EXPECT_TRUE( isUnbound() );
    EXPECT_EQ( device().ports(), 0U );
}

TEST_P( BindingTest, HostWithoutADeviceNameHasNoDevice ) {
    host().deviceNameIs( "" );
    enable();
    EXPECT_TRUE( isUnbound() );
    EXPECT_EQ( device().openings, 0U );
}

TEST_P( BindingTest, DisabledHostHasNoDevice ) {
    rebind();
    EXPECT_TRUE( isUnbound() );
    EXPECT_EQ( device().openings, 0U );
}

TEST_P( BindingTest, UntaggedHostOpensADeviceOfItsOwnForIpv4 ) {
    enable();
    ASSERT_NE( bound(), nullptr );
    EXPECT_EQ( bound()->name(), Kiv::Name( "eth0" ) );
    EXPECT_EQ( bound()->ethProtocol(), 0x0800 );
    EXPECT_EQ( bound()->captureMode(), 1U );
    EXPECT_TRUE( bound()->ns().empty() );
    EXPECT_TRUE( bound()->deviceOpen() );
    EXPECT_FALSE( sm().useMux() );
    EXPECT_EQ( device().ports(), 1U );
}

TEST_P( BindingTest, DeviceIsOpenedInTheHostsNamespace ) {
    host().nsIs( Zornet::NamespaceName( "blue" ) );
    enable();
    EXPECT_EQ( bound()->ns(), Zornet::NamespaceName( "blue" ) );
    EXPECT_EQ( device().ports(), 0U );
    EXPECT_EQ( provider.recording( "eth0", "blue" ).ports(), 1U );
}

TEST_P( BindingTest, UntaggedHostSharesNothingWhateverItIsTold ) {
    host().useMuxIs( true );
    host().intfIdIs( Zornet::IntfId( "trunk" ) );
    enable();
    EXPECT_EQ( bound()->ethProtocol(), 0x0800 );
    EXPECT_FALSE( sm().useMux() );
    EXPECT_EQ( dirSm->multiplexerDirs(), 0U );
    EXPECT_EQ( dirSm->multiplexerRefCounts(), 0U );
}

TEST_P( BindingTest, HostsOnOneDeviceHaveAnAccessObjectEach ) {
    addHost( "b", "10.0.0.2" ).enabledIs( true );
    settle();
    enable();
    EXPECT_NE( sm().txPam(), sm( "b" ).txPam() );
    EXPECT_EQ( device().ports(), 2U );
}

TEST_P( BindingTest, BoundHostHearsAndSends ) {
    enable();
    exclude( G );
    hearReport( G );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    EXPECT_EQ( status().v12ReportReceived(), 1U );
}

TEST_P( BindingTest, MoveOfTheInterfaceGenerationClosesAndReopens ) {
    enable();
    Ptr<EthDevPam> const first = sm().txPam();
    rebind();
    EXPECT_FALSE( first->deviceOpen() );
    EXPECT_NE( sm().txPam(), first );
    EXPECT_TRUE( bound()->deviceOpen() );
    EXPECT_EQ( device().openings, 2U );
    EXPECT_EQ( device().closings, 1U );
}

TEST_P( BindingTest, OldDeviceIsClosedBeforeTheNewOneOpens ) {
    enable();
    unsigned portsAtOpening = 0;
    device().onOpening = [&] { portsAtOpening = static_cast<unsigned>( device().ports() ); };
    rebind();
    EXPECT_EQ( portsAtOpening, 1U );
    EXPECT_EQ( device().ports(), 1U );
}

TEST_P( BindingTest, AttributesOfTheBindingAloneDoNothing ) {
    enable();
    EthDevPam const* const first = bound();
    host().deviceNameIs( "eth1" );
    host().nsIs( Zornet::NamespaceName( "blue" ) );
    host().intfIdIs( Zornet::IntfId( "trunk" ) );
    host().useMuxIs( true );
    host().taggedIs( true );
    host().vlanIdIs( 100 );
    settle();
    EXPECT_EQ( bound(), first );
    EXPECT_EQ( device().openings, 1U );
}

TEST_P( BindingTest, MoveOfTheInterfaceGenerationTakesTheNewDevice ) {
    enable();
    host().deviceNameIs( "eth1" );
    rebind();
    EXPECT_EQ( device().ports(), 0U );
    EXPECT_EQ( device( "eth1" ).ports(), 1U );
}

TEST_P( BindingTest, MoveOfTheInterfaceGenerationRebuildsTheTemplatesToo ) {
    enable();
    host().ipAddrIs( IpAddr( "10.0.0.9" ) );
    Ptr<Zornet::Pkt> const old = sm().v2ReportPkt();
    rebind();
    EXPECT_NE( sm().v2ReportPkt(), old );
    EXPECT_EQ( status().numPacketInitialized(), 4U );
}

TEST_P( BindingTest, RebindingLeavesGroupsTimersAndStatusAlone ) {
    enable();
    exclude( G );
    Ptr<IgmpHostGroupTimerSm> const timer = sm().groupTimerSm( IpAddr( G ) );
    Kiv::Seconds const remaining = timer->responseDelayRemaining();
    Ptr<IgmpHostStatus> const kept( &status() );
    host().deviceNameIs( "eth1" );
    rebind();
    EXPECT_EQ( &status(), kept.get() );
    EXPECT_EQ( sm().groupTimerSm( IpAddr( G ) ), timer );
    EXPECT_EQ( timer->responseDelayRemaining(), remaining );
    runFor( 20.0 );
    EXPECT_THAT( sent(), SizeIs( 1 ) );
    EXPECT_THAT( device( "eth1" ).sent, SizeIs( 1 ) );
}

TEST_P( BindingTest, DisablingClosesTheDevice ) {
    enable();
    Ptr<EthDevPam> const first = sm().txPam();
    enabledIs( false );
    EXPECT_TRUE( isUnbound() );
    EXPECT_FALSE( first->deviceOpen() );
    EXPECT_EQ( device().closings, 1U );
}

TEST_P( BindingTest, PamFromOutsideServesBothDirections ) {
    Ptr<FedPam> const fed( new FedPam );
    externalPamIs( true );
    pamIs( fed );
    enable();
    EXPECT_EQ( bound(), fed.get() );
    exclude( G );
    EXPECT_THAT( fed->sent, SizeIs( 1 ) );
    fed->feed( report() );
    settle();
    EXPECT_EQ( status().v12ReportReceived(), 1U );
    EXPECT_EQ( device().openings, 0U );
}

TEST_P( BindingTest, PamFromOutsideIsNeitherOpenedNorConfigured ) {
    Ptr<EthDevPam> const outside = Zornet::EthDevPamIs( "eth1" );
    externalPamIs( true );
    pamIs( outside );
    enable();
    EXPECT_FALSE( outside->deviceOpen() );
    EXPECT_EQ( outside->ethProtocol(), EthDevPam::everyProtocol );
}

TEST_P( BindingTest, PamFromOutsideNeedsNeitherGenerationNorDeviceNorEnabling ) {
    Ptr<FedPam> const fed( new FedPam );
    host().deviceNameIs( "" );
    host().intfConfigVersionIs( 0 );
    settle();
    externalPamIs( true );
    pamIs( fed );
    EXPECT_FALSE( host().enabled() );
    EXPECT_EQ( bound(), fed.get() );
}

TEST_P( BindingTest, DisabledHostKeepsThePamFromOutside ) {
    Ptr<FedPam> const fed( new FedPam );
    fed->deviceOpenIs( true );
    externalPamIs( true );
    pamIs( fed );
    enable();
    enabledIs( false );
    EXPECT_EQ( bound(), fed.get() );
    EXPECT_TRUE( fed->deviceOpen() );
}

TEST_P( BindingTest, PamFromOutsideIsTraced ) {
    externalPamIs( true );
    TraceCapture const trace( "IgmpHost", 8 );
    pamIs( new FedPam );
    EXPECT_THAT( trace.texts(), ElementsAre( " Setting pam to external parameter host" ) );
    EXPECT_THAT( trace.levels(), ElementsAre( 8 ) );
}

TEST_P( BindingTest, MissingPamFromOutsideIsTraced ) {
    TraceCapture const trace( "IgmpHost", 8 );
    externalPamIs( true );
    EXPECT_THAT( trace.texts(), ElementsAre( " External Pam is NULL host" ) );
    EXPECT_THAT( trace.levels(), ElementsAre( 8 ) );
}

TEST_P( BindingTest, MissingPamFromOutsideLeavesTheHostDeafAndMute ) {
    enable();
    externalPamIs( true );
    EXPECT_TRUE( isUnbound() );
    TraceCapture const trace( "IgmpHost", 9 );
    exclude( G );
    hearReport( G );
    EXPECT_TRUE( trace.contains( "IgmpHost host no pam to send report" ) );
    EXPECT_EQ( status().v12ReportReceived(), 0U );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_P( BindingTest, PamFromOutsideClosesNothingThatTheHostHadOpened ) {
    enable();
    Ptr<EthDevPam> const own = sm().txPam();
    externalPamIs( true );
    pamIs( new FedPam );
    EXPECT_TRUE( own->deviceOpen() );
    EXPECT_FALSE( own->hasNotifiees() );
}

TEST_P( BindingTest, DeviceThatNobodyElseHoldsGoesWhenThePamFromOutsideComes ) {
    enable();
    externalPamIs( true );
    EXPECT_EQ( device().ports(), 0U );
}

TEST_P( BindingTest, LeavingThePamFromOutsideClosesItAndOpensTheDevice ) {
    Ptr<FedPam> const fed( new FedPam );
    fed->deviceOpenIs( true );
    externalPamIs( true );
    pamIs( fed );
    enable();
    externalPamIs( false );
    EXPECT_FALSE( fed->deviceOpen() );
    EXPECT_EQ( bound()->name(), Kiv::Name( "eth0" ) );
    EXPECT_TRUE( bound()->deviceOpen() );
}

TEST_P( BindingTest, OtherPamFromOutsideTakesThePlaceOfTheFirst ) {
    Ptr<FedPam> const first( new FedPam );
    Ptr<FedPam> const second( new FedPam );
    first->deviceOpenIs( true );
    externalPamIs( true );
    pamIs( first );
    enable();
    pamIs( second );
    EXPECT_EQ( bound(), second.get() );
    EXPECT_TRUE( first->deviceOpen() );
    first->feed( report() );
    settle();
    EXPECT_EQ( status().v12ReportReceived(), 0U );
    EXPECT_EQ( first->waiting(), 1U );
}

TEST_P( BindingTest, PamThatIsNotUsedStillRebuildsTheBinding ) {
    enable();
    EthDevPam const* const first = bound();
    Ptr<EthDevPam> const kept = sm().txPam();
    pamIs( new FedPam );
    EXPECT_NE( bound(), first );
    EXPECT_FALSE( kept->deviceOpen() );
    EXPECT_EQ( device().openings, 2U );
    EXPECT_EQ( device().closings, 1U );
}

TEST_P( BindingTest, SwitchToAndFromThePamFromOutsideLeavesTheTemplatesAlone ) {
    enable();
    Ptr<Zornet::Pkt> const v2Pkt = sm().v2ReportPkt();
    externalPamIs( true );
    pamIs( new FedPam );
    externalPamIs( false );
    EXPECT_EQ( sm().v2ReportPkt(), v2Pkt );
    EXPECT_EQ( status().numPacketInitialized(), 2U );
}

TEST_P( BindingTest, InterfaceGenerationOfAHostWithAPamFromOutsideRebuildsItsTemplatesOnly ) {
    Ptr<FedPam> const fed( new FedPam );
    externalPamIs( true );
    pamIs( fed );
    enable();
    rebind();
    EXPECT_EQ( bound(), fed.get() );
    EXPECT_EQ( status().numPacketInitialized(), 4U );
}

} // namespace
