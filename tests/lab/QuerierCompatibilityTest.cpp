#include "tests/lab/QuerierTest.h"

// RFC 3376 section 7.3.2: a version 3 querier among hosts of older versions.

namespace Lab {

class QuerierCompatibilityTest : public QuerierTest {
  protected:
    static constexpr Seconds olderHostPresentInterval = membershipInterval;
    static constexpr Seconds tick = Kiv::ActivitySm::tick;

    QuerierCompatibilityTest() { start(); }
};

TEST_F( QuerierCompatibilityTest, GroupOfVersion3HostsIsInVersion3 ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_EQ( group().compatibilityVersion(), 3 );
}

TEST_F( QuerierCompatibilityTest, OlderReportStandsForAnExcludeRecordWithoutSources ) {
    hear( v2Report( host, G ) );
    hear( v1Report( host, otherGroup ) );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    EXPECT_EQ( state( otherGroup ), "EXCLUDE (, )" );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_TIME( querier->group( otherGroup )->groupTimerRemaining(), membershipInterval );
}

TEST_F( QuerierCompatibilityTest, OlderReportDropsTheSourcesOfTheGroup ) {
    hear( Record::MODE_IS_INCLUDE, { 1, 2 } );
    hear( v2Report( otherHost, G ) );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    EXPECT_TRUE( querier->forwards( G, source( 3 ) ) );
}

TEST_F( QuerierCompatibilityTest, Version2ReportHoldsTheGroupInVersion2ForItsInterval ) {
    hear( v2Report( host, G ) );
    runFor( 200.0 );
    hear( Record::MODE_IS_EXCLUDE, {} ); // keeps the group and not its mode
    runFor( olderHostPresentInterval - 200.0 - tick );
    EXPECT_EQ( group().compatibilityVersion(), 2 );
    runFor( tick );
    EXPECT_EQ( group().compatibilityVersion(), 3 );
}

TEST_F( QuerierCompatibilityTest, Version1HostsComeBeforeVersion2Hosts ) {
    hear( v1Report( host, G ) );
    runFor( 100.0 );
    hear( v2Report( host, G ) );
    EXPECT_EQ( group().compatibilityVersion(), 1 );
    runFor( olderHostPresentInterval - 100.0 );
    EXPECT_EQ( group().compatibilityVersion(), 2 );
}

TEST_F( QuerierCompatibilityTest, ModeIsOfTheGroupAndNotOfTheLink ) {
    hear( v2Report( host, G ) );
    hear( v3Report( host, { { Record::MODE_IS_EXCLUDE, otherGroup } } ) );
    EXPECT_EQ( querier->group( otherGroup )->compatibilityVersion(), 3 );
}

TEST_F( QuerierCompatibilityTest, BlockIsPassedOverInVersion2 ) {
    hear( v2Report( host, G ) );
    hear( Record::BLOCK_OLD_SOURCES, { 1 }, otherHost );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( QuerierCompatibilityTest, ChangeToExcludeLosesItsSourcesInVersion2 ) {
    hear( v2Report( host, G ) );
    hear( Record::CHANGE_TO_EXCLUDE_MODE, { 1, 2 }, otherHost );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( QuerierCompatibilityTest, ChangeToIncludeWorksInVersion2 ) {
    hear( v2Report( host, G ) );
    hear( Record::CHANGE_TO_INCLUDE_MODE, { 1 }, otherHost );
    EXPECT_EQ( state(), "EXCLUDE (1, )" );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)" ) );
}

TEST_F( QuerierCompatibilityTest, LeaveStandsForAChangeToInclude ) {
    hear( v2Report( host, G ) );
    hear( v2Leave( host, G ) );
    EXPECT_TIME( group().groupTimerRemaining(), lastMemberQueryTime );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)", "1.000 Q(G)" ) );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierCompatibilityTest, LeaveIsObeyedInVersion3Too ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( v2Leave( host, G ) );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)" ) );
}

TEST_F( QuerierCompatibilityTest, LeavesBlocksAndChangesToIncludeArePassedOverInVersion1 ) {
    hear( v1Report( host, G ) );
    hear( v2Leave( otherHost, G ) );
    hear( Record::CHANGE_TO_INCLUDE_MODE, { 1 }, otherHost );
    hear( Record::BLOCK_OLD_SOURCES, { 1 }, otherHost );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( QuerierCompatibilityTest, ChangeToExcludeLosesItsSourcesInVersion1 ) {
    hear( v1Report( host, G ) );
    hear( Record::CHANGE_TO_EXCLUDE_MODE, { 1 }, otherHost );
    EXPECT_EQ( state(), "EXCLUDE (, )" );
}

TEST_F( QuerierCompatibilityTest, CurrentStateRecordsKeepTheirSources ) {
    hear( v2Report( host, G ) );
    hear( Record::MODE_IS_INCLUDE, { 1 }, otherHost );
    hear( Record::ALLOW_NEW_SOURCES, { 2 }, otherHost );
    EXPECT_EQ( state(), "EXCLUDE (1 2, )" );
}

TEST_F( QuerierCompatibilityTest, GroupThatEndsForgetsItsOlderHosts ) {
    hear( v2Report( host, G ) );
    hear( v2Leave( host, G ) );
    runFor( lastMemberQueryTime );
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_EQ( group().compatibilityVersion(), 3 );
}

} // namespace Lab
