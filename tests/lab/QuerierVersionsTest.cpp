#include "tests/lab/QuerierTest.h"

// Queriers of versions 1 and 2 (RFC 1112 appendix I, RFC 2236 section 7).

namespace Lab {

class QuerierVersionsTest : public QuerierTest {};

TEST_F( QuerierVersionsTest, Version1UnderstandsReportsOfVersion1Only ) {
    startVersion( 1 );
    hear( v2Report( host, G ) );
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_EQ( state(), "none" );
    hear( v1Report( host, G ) );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    EXPECT_EQ( querier->counters().messagesNotUnderstood, 2U );
}

TEST_F( QuerierVersionsTest, Version1KnowsNoLeave ) {
    startVersion( 1 );
    hear( v1Report( host, G ) );
    hear( v2Leave( host, G ) );
    runFor( 10.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval - 10.0 );
}

TEST_F( QuerierVersionsTest, Version1AsksAtItsIntervals ) {
    startVersion( 1 );
    runFor( 31.25 + 125.0 );
    EXPECT_THAT( sent(), ElementsAre( "31.250 Q", "156.250 Q" ) );
}

TEST_F( QuerierVersionsTest, Version2UnderstandsReportsOfVersions1And2 ) {
    startVersion( 2 );
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_EQ( state(), "none" );
    hear( v2Report( host, G ) );
    hear( v1Report( host, otherGroup ) );
    EXPECT_THAT( querier->groups(), ElementsAre( G, otherGroup ) );
    EXPECT_EQ( querier->counters().messagesNotUnderstood, 1U );
}

TEST_F( QuerierVersionsTest, Version2AsksTwiceAfterALeave ) {
    startVersion( 2 );
    hear( v2Report( host, G ) );
    hear( v2Leave( host, G ) );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)", "1.000 Q(G)" ) );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierVersionsTest, Version2StopsAskingWhenSomebodyAnswers ) {
    startVersion( 2 );
    hear( v2Report( host, G ) );
    hear( v2Leave( host, G ) );
    runFor( 0.5 );
    hear( v2Report( otherHost, G ) );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)" ) );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval - 10.0 );
}

TEST_F( QuerierVersionsTest, Version2PassesLeavesOverWhileThereAreVersion1Hosts ) {
    startVersion( 2 );
    hear( v1Report( host, G ) );
    hear( v2Report( otherHost, G ) );
    hear( v2Leave( otherHost, G ) );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( group().compatibilityVersion(), 1 );
}

TEST_F( QuerierVersionsTest, LeaveOfAnUnknownGroupIsPassedOver ) {
    startVersion( 2 );
    hear( v2Leave( host, G ) );
    EXPECT_EQ( state(), "none" );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( querier->counters().v2Leaves, 1U );
}

TEST_F( QuerierVersionsTest, CountsReportsByVersionWhateverItsOwn ) {
    startVersion( 1 );
    hear( v1Report( host, G ) );
    hear( v2Report( host, G ) );
    hear( v2Report( host, G ) );
    hear( Record::MODE_IS_EXCLUDE, {} );
    QuerierCounters const& counters = querier->counters();
    EXPECT_EQ( counters.v1Reports, 1U );
    EXPECT_EQ( counters.v2Reports, 2U );
    EXPECT_EQ( counters.v3Reports, 1U );
}

} // namespace Lab
