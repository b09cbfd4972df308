#include "tests/lab/QuerierTest.h"

// The ends of memberships, and what is forwarded until then (RFC 3376 sections 6.2, 6.3 and 6.5).

namespace Lab {

class QuerierTimersTest : public QuerierTest {
  protected:
    static constexpr Seconds tick = Kiv::ActivitySm::tick;

    QuerierTimersTest() { start(); }
};

TEST_F( QuerierTimersTest, ExcludedGroupEndsAfterTheMembershipInterval ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( membershipInterval - tick );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    runFor( tick );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierTimersTest, ReportProlongsTheGroup ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( 200.0 );
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( membershipInterval - tick );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    runFor( tick );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierTimersTest, IncludedSourcesEndOneByOneAndTheGroupWithTheLast ) {
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    runFor( 100.0 );
    hear( Record::ALLOW_NEW_SOURCES, { 2 } );
    runFor( membershipInterval - 100.0 - tick );
    EXPECT_EQ( state(), "INCLUDE (1 2)" );
    runFor( tick );
    EXPECT_EQ( state(), "INCLUDE (2)" );
    runFor( 100.0 );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierTimersTest, SourcesThatEndTogetherEndTheGroupOnce ) {
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2, 3 } );
    runFor( membershipInterval );
    EXPECT_EQ( state(), "none" );
    EXPECT_EQ( querier->groupCount(), 0U );
}

TEST_F( QuerierTimersTest, RequestedSourceOfAnExcludedGroupBecomesExcluded ) {
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    runFor( 10.0 );
    hear( Record::MODE_IS_EXCLUDE, { 1 } );
    runFor( membershipInterval - 10.0 - tick );
    EXPECT_EQ( state(), "EXCLUDE (1, )" );
    runFor( tick );
    EXPECT_EQ( state(), "EXCLUDE (, 1)" );
}

TEST_F( QuerierTimersTest, GroupTimerLeavesTheRequestedSourcesInIncludeMode ) {
    hear( Record::MODE_IS_EXCLUDE, { 1, 2 } );
    runFor( 100.0 );
    hear( Record::ALLOW_NEW_SOURCES, { 2, 3 } );
    runFor( membershipInterval - 100.0 );
    EXPECT_EQ( state(), "INCLUDE (2 3)" );
    EXPECT_EQ( group().groupTimerRemaining(), 0.0 );
    EXPECT_TIME( sourceTimer( 2 ), 100.0 );
}

TEST_F( QuerierTimersTest, SourceThatEndsWithTheGroupTimerDoesNotSurviveIt ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    runFor( membershipInterval );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierTimersTest, SourceThatEndsAsTheModeChangesIsNotExcluded ) {
    Kiv::Ptr<Timer> const script( new Timer( wheel(), [this] { hear( Record::MODE_IS_EXCLUDE, { 2 } ); } ) );
    script->remainingIs( membershipInterval ); // armed first, it fires before the source's timer
    hear( Record::MODE_IS_INCLUDE, { 1 } );
    runFor( membershipInterval );
    EXPECT_EQ( state(), "EXCLUDE (, 2)" );
}

TEST_F( QuerierTimersTest, BlockedSourceThatNobodyWantsEndsAfterTheLastMemberQueryTime ) {
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2 } );
    hear( Record::BLOCK_OLD_SOURCES, { 1 } );
    runFor( lastMemberQueryTime - tick );
    EXPECT_EQ( state(), "INCLUDE (1 2)" );
    runFor( tick );
    EXPECT_EQ( state(), "INCLUDE (2)" );
}

TEST_F( QuerierTimersTest, LeaveThatNobodyContradictsEndsTheGroup ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( lastMemberQueryTime - tick );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    runFor( tick );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierTimersTest, LeaveOfAnUnknownGroupLeavesNoState ) {
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    hear( Record::BLOCK_OLD_SOURCES, { 1 } );
    hear( Record::MODE_IS_INCLUDE, {} );
    EXPECT_EQ( querier->groupCount(), 0U );
}

TEST_F( QuerierTimersTest, IncludeModeForwardsTheRequestedSources ) {
    hear( Record::MODE_IS_INCLUDE, { 1 } );
    EXPECT_TRUE( querier->forwards( G, source( 1 ) ) );
    EXPECT_FALSE( querier->forwards( G, source( 2 ) ) );
    EXPECT_FALSE( querier->forwards( otherGroup, source( 1 ) ) );
}

TEST_F( QuerierTimersTest, ExcludeModeForwardsAllButTheExcludedSources ) {
    hear( Record::MODE_IS_EXCLUDE, { 1, 2 } );
    hear( Record::ALLOW_NEW_SOURCES, { 2 } );
    EXPECT_FALSE( querier->forwards( G, source( 1 ) ) );
    EXPECT_TRUE( querier->forwards( G, source( 2 ) ) );
    EXPECT_TRUE( querier->forwards( G, source( 3 ) ) );
}

TEST_F( QuerierTimersTest, GroupsAreApartAndInOrder ) {
    hear( v3Report(
        host, { { Record::MODE_IS_EXCLUDE, otherGroup }, { Record::MODE_IS_INCLUDE, G, sources( { 1 } ) } }
    ) );
    EXPECT_THAT( querier->groups(), ElementsAre( G, otherGroup ) );
    EXPECT_EQ( state( otherGroup ), "EXCLUDE (, )" );
    EXPECT_EQ( state(), "INCLUDE (1)" );
}

TEST_F( QuerierTimersTest, RobustnessAndIntervalsMakeTheMembershipInterval ) {
    QuerierConfig config;
    config.robustness = 3;
    config.queryInterval = 20.0;
    config.queryResponseInterval = 5.0;
    start( config );
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_TIME( group().groupTimerRemaining(), 65.0 );
}

} // namespace Lab
