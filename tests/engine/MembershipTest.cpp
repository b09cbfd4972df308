/// Joins and leaves of versions 1 and 2: what a change of a group's record makes a host do.

#include "tests/engine/EngineTest.h"
#include "tests/support/FedPam.h"

namespace {

using namespace Igmp;
using Support::nextDrawIs;
using Support::TraceCapture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Zornet::IpAddr;

constexpr double tolerance = 1e-9;

class Membership : public EngineDeliveryTest {
  protected:
    IgmpV3GroupRecord& record( char const* group = G ) { return *host().v3group( IpAddr( group ) ); }
    void raiseRecord() {
        raise( record() );
        settle();
    }
    /// Turns G into a record that is no membership.
    void emptyRecord() {
        record().filterModeIs( IgmpV3GroupRecord::include );
        record().sourceDel();
        raiseRecord();
    }
};
INSTANTIATE_DELIVERY_TESTS( Membership );

// Joins.

TEST_P( Membership, ExcludeRecordJoinsWithOneReportAtOnceAndOneWithinTheInterval ) {
    enable();
    exclude( G );
    EXPECT_TRUE( timer().joined() );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    runFor( 0.9999 );
    EXPECT_THAT( takeSent(), IsEmpty() );
    runFor( 9.1 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
    runFor( 1000.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_EQ( status().v2ReportsSent(), 2U );
}

TEST_P( Membership, RecordWithASourceJoins ) {
    enable();
    include( G, { "10.9.9.1" } );
    EXPECT_TRUE( timer().joined() );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Membership, ExcludeRecordWithSourcesJoins ) {
    enable();
    exclude( G, { "10.9.9.1" } );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Membership, RepeatIsDrawnFromTheIntervalInForce ) {
    enable();
    status().unsolicitedReportIntervalIs( 4.0 );
    nextDrawIs( 0.75 );
    exclude( G );
    EXPECT_NEAR( timer().responseDelayRemaining(), 3.0, tolerance );
}

TEST_P( Membership, RobustnessDoesNotChangeTheTwoReports ) {
    enable();
    host().robustnessIs( 7 );
    exclude( G );
    runFor( 100.0 );
    EXPECT_THAT( takeSent(), SizeIs( 2 ) );
}

TEST_P( Membership, Version1HostJoinsWithVersion1Reports ) {
    enable( igmpVersion1 );
    exclude( G );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v1report 239.1.1.1", "v1report 239.1.1.1" ) );
}

TEST_P( Membership, JoinMakesTheLastReporter ) {
    enable();
    include( G, {} );
    hearReport( G );
    EXPECT_FALSE( timer().lastReporter() );
    exclude( G );
    EXPECT_TRUE( timer().lastReporter() );
}

TEST_P( Membership, EmptyRecordMakesAMachineAndJoinsNothing ) {
    enable();
    include( G, {} );
    EXPECT_TRUE( hasTimer() );
    EXPECT_FALSE( timer().joined() );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Membership, FirstSourceOfAnEmptyRecordJoins ) {
    enable();
    include( G, {} );
    include( G, { "10.9.9.1" } );
    EXPECT_TRUE( timer().joined() );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Membership, FurtherChangeOfAJoinedRecordSendsNothing ) {
    joinAndRest();
    exclude( G, { "10.9.9.1" } );
    include( G, { "10.9.9.1", "10.9.9.2" } );
    EXPECT_TRUE( timer().joined() );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Membership, RecordThatWasNeverRaisedDoesNotJoinUntilItIs ) {
    enable();
    auto const added = host().v3groupIs( IpAddr( G ) );
    added->filterModeIs( IgmpV3GroupRecord::exclude );
    settle();
    sm().handleGroup( IpAddr( G ) );
    EXPECT_TRUE( hasTimer() );
    EXPECT_FALSE( timer().joined() );
    EXPECT_THAT( takeSent(), IsEmpty() );
    raiseRecord();
    EXPECT_TRUE( timer().joined() );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

// Leaves.

TEST_P( Membership, LastReporterLeavesWithAPacket ) {
    joinAndRest();
    removeGroup();
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
    EXPECT_EQ( status().v2LeavesSent(), 1U );
    EXPECT_FALSE( hasTimer() );
}

TEST_P( Membership, LeaveOfARecordThatLivesOnKeepsTheMachine ) {
    joinAndRest();
    emptyRecord();
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
    ASSERT_TRUE( hasTimer() );
    EXPECT_FALSE( timer().joined() );
    EXPECT_FALSE( timer().lastReporter() );
}

TEST_P( Membership, SecondLeaveDoesNotHappen ) {
    joinAndRest();
    emptyRecord();
    sent().clear();
    raiseRecord();
    removeGroup();
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_EQ( status().v2LeavesSent(), 1U );
}

TEST_P( Membership, HostThatHeardAReportLeavesSilently ) {
    joinAndRest();
    hearReport( G );
    removeGroup();
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_EQ( status().v2LeavesSent(), 0U );
    EXPECT_FALSE( hasTimer() );
}

TEST_P( Membership, OwnAnswerAfterAReportHeardMakesTheLeaveSpeakAgain ) {
    joinAndRest();
    hearReport( G );
    hearQuery( 100 );
    runFor( 10.0 );
    sent().clear();
    removeGroup();
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
}

TEST_P( Membership, HostBelowAVersion1QuerierLeavesSilently ) {
    joinAndRest();
    hearV1Query();
    runFor( 10.0 );
    ASSERT_TRUE( timer().lastReporter() );
    sent().clear();
    emptyRecord();
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_EQ( status().v2LeavesSent(), 0U );
    EXPECT_TRUE( timer().lastReporter() );
    EXPECT_FALSE( timer().joined() );
}

TEST_P( Membership, HostOfVersion1LeavesSilently ) {
    joinAndRest( igmpVersion1 );
    removeGroup();
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_EQ( status().v2LeavesSent(), 0U );
}

TEST_P( Membership, LeaveAtVersion3IsVoidButClearsLastReporter ) {
    joinAndRest( igmpVersion3 );
    ASSERT_TRUE( timer().joined() );
    TraceCapture const trace( "IgmpHost", 9 );
    emptyRecord();
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host leave grp with leave pkt 239.1.1.1" ) );
    EXPECT_EQ( status().v2LeavesSent(), 0U );
    EXPECT_FALSE( timer().lastReporter() );
    EXPECT_FALSE( timer().joined() );
}

TEST_P( Membership, SilentLeaveAtVersion3LeavesLastReporterAlone ) {
    joinAndRest( igmpVersion3 );
    hearReport( G );
    TraceCapture const trace( "IgmpHost", 9 );
    emptyRecord();
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host leaving group silently239.1.1.1" ) );
    EXPECT_FALSE( timer().joined() );
}

TEST_P( Membership, RecordOfVersion0DoesNotLeave ) {
    joinAndRest();
    record().filterModeIs( IgmpV3GroupRecord::include );
    record().versionIs( 0 );
    settle();
    EXPECT_TRUE( timer().joined() );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Membership, RemovedRecordOfVersion0Leaves ) {
    joinAndRest();
    record().versionIs( 0 );
    settle();
    removeGroup();
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
}

TEST_P( Membership, LeaveDoesNotCancelAPendingAnswer ) {
    joinAndRest();
    hearQuery( 100 );
    emptyRecord();
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2", "v2report 239.1.1.1" ) );
}

TEST_P( Membership, GroupThatWasLeftAnswersTheQueriersGroupQuery ) {
    joinAndRest();
    emptyRecord();
    sent().clear();
    hearQuery( 10, G );
    runFor( 1.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Membership, PendingAnswerDiesWithTheRecord ) {
    joinAndRest();
    hearQuery( 100 );
    removeGroup();
    sent().clear();
    runFor( 20.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
    EXPECT_FALSE( hasTimer() );
}

TEST_P( Membership, RemovingARecordThatWasNotJoinedRemovesTheMachineSilently ) {
    enable();
    include( G, {} );
    removeGroup();
    EXPECT_FALSE( hasTimer() );
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Membership, LaterRecordOfTheSameGroupStartsAfresh ) {
    joinAndRest();
    hearReport( G );
    removeGroup();
    exclude( G );
    EXPECT_TRUE( timer().lastReporter() );
    EXPECT_TRUE( timer().joined() );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Membership, RejoinOfTheSameRecordReportsAgain ) {
    joinAndRest();
    emptyRecord();
    sent().clear();
    exclude( G );
    EXPECT_TRUE( timer().lastReporter() );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1", "v2report 239.1.1.1" ) );
}

// Under every version and on hosts that cannot send.

TEST_P( Membership, Version3HostMovesTheMachineSilently ) {
    enable( igmpVersion3 );
    exclude( G );
    EXPECT_TRUE( timer().joined() );
    EXPECT_EQ( timer().responseDelayTimerState(), pending );
    runFor( 10.0 );
    EXPECT_EQ( timer().responseDelayTimerState(), idle );
    EXPECT_EQ( status().v1ReportsSent() + status().v2ReportsSent(), 0U );
}

TEST_P( Membership, FallBackFindsTheGroupJoinedAndDoesNotJoinAfresh ) {
    joinAndRest( igmpVersion3 );
    hearQuery( 100, unknownGroup );
    ASSERT_EQ( status().igmpVersion(), igmpVersion2 );
    raiseRecord();
    runFor( 20.0 );
    EXPECT_THAT( takeSent(), IsEmpty() );
    removeGroup();
    EXPECT_THAT( takeSent(), ElementsAre( "leave 239.1.1.1 to 224.0.0.2" ) );
}

TEST_P( Membership, RepeatOfAVersion3JoinSpeaksAfterAFallBack ) {
    enable( igmpVersion3 );
    exclude( G );
    sent().clear();
    hearQuery( 100, unknownGroup );
    runFor( 10.0 );
    EXPECT_THAT( takeSent(), ElementsAre( "v2report 239.1.1.1" ) );
}

TEST_P( Membership, BlockedHostCountsAsJoined ) {
    enable();
    host().blockedIs( true );
    exclude( G );
    EXPECT_TRUE( timer().joined() );
    EXPECT_EQ( status().v2ReportsSent(), 1U );
    EXPECT_THAT( takeSent(), IsEmpty() );
    host().blockedIs( false );
    raiseRecord();
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Membership, HostWithoutADeviceCountsAsJoined ) {
    host().deviceNameIs( "" );
    enable();
    exclude( G );
    ASSERT_EQ( sm().txPam(), nullptr );
    EXPECT_TRUE( timer().joined() );
    EXPECT_EQ( status().v2ReportsSent(), 1U );
}

TEST_P( Membership, DisabledHostDoesNothingAtAll ) {
    exclude( G );
    TraceCapture const trace( "IgmpHost", 9 );
    sm().handleGroup( IpAddr( G ) );
    sm().handleGroup();
    EXPECT_FALSE( hasTimer() );
    EXPECT_THAT( trace.texts(), IsEmpty() );
}

TEST_P( Membership, EnablingJoinsWhatIsConfigured ) {
    exclude( G );
    exclude( "239.1.1.2" );
    include( "239.1.1.3", {} );
    enable();
    EXPECT_THAT( takeSent(), ::testing::UnorderedElementsAre( "v2report 239.1.1.1", "v2report 239.1.1.2" ) );
}

TEST_P( Membership, DisablingSendsNoLeave ) {
    joinAndRest();
    host().enabledIs( false );
    settle();
    EXPECT_THAT( takeSent(), IsEmpty() );
}

TEST_P( Membership, SweepTakesUpEveryGroup ) {
    enable();
    host().processV3GroupChangeIs( false );
    settle();
    exclude( G );
    exclude( "239.1.1.2" );
    EXPECT_THAT( takeSent(), IsEmpty() );
    sm().handleGroup();
    EXPECT_THAT( takeSent(), ::testing::UnorderedElementsAre( "v2report 239.1.1.1", "v2report 239.1.1.2" ) );
}

TEST_P( Membership, UnknownGroupIsNoMatter ) {
    enable();
    auto const before = changes();
    sm().handleGroup( IpAddr( unknownGroup ) );
    EXPECT_FALSE( hasTimer( unknownGroup ) );
    EXPECT_THAT( before.list(), IsEmpty() );
}

// What is said.

TEST_P( Membership, SaysThatItJoins ) {
    enable();
    TraceCapture const trace( "IgmpHost", 9 );
    exclude( G );
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host handleGroup 239.1.1.1" ) );
    EXPECT_THAT( trace.texts(), Contains( "Creating IgmpHostGroupTimerSm for group : 239.1.1.1" ) );
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host joining group 239.1.1.1" ) );
}

TEST_P( Membership, SaysThatItLeavesWithAPacket ) {
    joinAndRest();
    TraceCapture const trace( "IgmpHost", 9 );
    removeGroup();
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host leave grp with leave pkt 239.1.1.1" ) );
}

TEST_P( Membership, SaysThatItLeavesSilently ) {
    joinAndRest();
    hearReport( G );
    TraceCapture const trace( "IgmpHost", 9 );
    removeGroup();
    EXPECT_THAT( trace.texts(), Contains( "IgmpHost host leaving group silently239.1.1.1" ) );
}

// Between the steps of a join and of a leave.

class MembershipInline : public EngineTest {
  protected:
    MembershipInline() {
        host().externalPamIs( true );
        host().pamIs( pam );
        enable();
    }
    Kiv::Ptr<Support::FedPam> pam{ new Support::FedPam };
};

TEST_F( MembershipInline, JoinSchedulesTheRepeatBeforeItSends ) {
    include( G, {} );
    timer().lastReporterIs( false );
    pam->onSend = [&] {
        EXPECT_EQ( timer().responseDelayTimerState(), pending );
        EXPECT_TRUE( timer().lastReporter() );
        EXPECT_FALSE( timer().joined() );
    };
    exclude( G );
    EXPECT_THAT( pam->sent, SizeIs( 1 ) );
    EXPECT_TRUE( timer().joined() );
}

TEST_F( MembershipInline, LeaveIsSentBeforeTheMachineForgets ) {
    exclude( G );
    runFor( 20.0 );
    pam->sent.clear();
    pam->onSend = [&] {
        EXPECT_TRUE( timer().lastReporter() );
        EXPECT_TRUE( timer().joined() );
    };
    removeGroup();
    EXPECT_THAT( pam->sent, SizeIs( 1 ) );
}

TEST_F( MembershipInline, GroupMayGoWhileItIsJoined ) {
    pam->onSend = [&] { host().v3groupDel( IpAddr( G ) ); };
    exclude( G );
    EXPECT_FALSE( hasTimer() );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

} // namespace
