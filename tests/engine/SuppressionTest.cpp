/// Reports heard from other hosts: they cancel the answer that is pending and make this host's leave silent.

#include "tests/engine/EngineTest.h"

namespace {

using namespace Igmp;
using Support::TraceCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zornet::IpAddr;

class Suppression : public EngineDeliveryTest {
  protected:
    void hearReportOfType( Zornet::IgmpMessageType type, char const* group, char const* sender ) {
        device().hear(
            Lab::igmpFrame( IpAddr( sender ), IpAddr( group ), Lab::igmpMessage( type, 0, IpAddr( group ) ) )
        );
        settle();
    }
};
INSTANTIATE_DELIVERY_TESTS( Suppression );

TEST_P( Suppression, ReportCancelsThePendingAnswer ) {
    joinAndRest();
    hearQuery( 100 );
    hearReport( G );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_FALSE( timer().lastReporter() );
    runFor( 20.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Suppression, ReportCancelsTheRepeatOfAJoin ) {
    enable();
    exclude( G );
    hearReport( G );
    runFor( 20.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Suppression, ReportWhileNothingIsPendingClearsLastReporterAlone ) {
    joinAndRest();
    auto const before = changes();
    hearReport( G );
    EXPECT_FALSE( timer().lastReporter() );
    EXPECT_TRUE( timer().joined() );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
    EXPECT_THAT( before.list(), ElementsAre( "v12ReportReceived=1" ) );
}

TEST_P( Suppression, ReportForAGroupThatIsNotJoinedActsAsWell ) {
    enable();
    include( G, {} );
    hearQuery( 100, G );
    ASSERT_EQ( timer().responseDelayTimerState(), pending );
    hearReport( G );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_FALSE( timer().lastReporter() );
}

TEST_P( Suppression, ReportForAnotherGroupChangesNothing ) {
    joinAndRest();
    exclude( "239.1.1.2" );
    hearQuery( 100 );
    hearReport( "239.1.1.2" );
    EXPECT_EQ( timer( G ).responseDelayTimerState(), pending );
    EXPECT_TRUE( timer( G ).lastReporter() );
}

TEST_P( Suppression, ReportForAnUnknownGroupIsCountedAndMakesNoMachine ) {
    joinAndRest();
    TraceCapture const trace( "IgmpHost", 9 );
    hearReport( unknownGroup );
    EXPECT_EQ( status().v12ReportReceived(), 1U );
    EXPECT_FALSE( hasTimer( unknownGroup ) );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( Suppression, Version1ReportSuppressesAVersion2Host ) {
    joinAndRest();
    hearQuery( 100 );
    hearReportOfType( Zornet::IgmpMessageType::v1MembershipReport, G, "10.0.0.9" );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
}

TEST_P( Suppression, SenderIsNotLookedAt ) {
    joinAndRest();
    hearQuery( 100 );
    hearReportOfType( Zornet::IgmpMessageType::v2MembershipReport, G, "10.0.0.1" );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
}

TEST_P( Suppression, ReportActsOnTheMachineAtVersion3Too ) {
    joinAndRest( igmpVersion3 );
    timer().doSetTimer( 5.0 );
    hearReport( G );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_FALSE( timer().lastReporter() );
}

TEST_P( Suppression, LaterQueryIsAnsweredAgain ) {
    joinAndRest();
    hearQuery( 100 );
    hearReport( G );
    hearQuery( 100 );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    EXPECT_TRUE( timer().lastReporter() );
}

TEST_P( Suppression, SaysWhichGroupItSuppresses ) {
    joinAndRest();
    TraceCapture const trace( "IgmpHost", 9 );
    hearReport( G );
    EXPECT_EQ( trace.texts().back(), "IgmpHost host suppress report for group 239.1.1.1" );
}

using SuppressionDeathTest = EngineTest;

TEST_F( SuppressionDeathTest, ReportAtADisabledHost ) {
    Lab::Bytes report = Lab::igmpMessage( Zornet::IgmpMessageType::v2MembershipReport, 0, IpAddr( G ) );
    auto* const hdr = reinterpret_cast<Zornet::IgmpV12Hdr*>( report.data() );
    EXPECT_DEATH( sm().handleV12Report( hdr ), "assertion failed: igmpHost\\(\\)->enabled\\(\\)\n" );
}

} // namespace
