#include "tests/lab/QuerierTest.h"

// When a querier asks: RFC 3376 sections 8.6, 8.7 and 6.6.3, RFC 2236 section 7.

namespace Lab {

class QuerierQueriesTest : public QuerierTest {
  protected:
    /// Starts and keeps what the start sends.
    void startAndWatch( QuerierConfig const& config = {} ) {
        querier = std::make_unique<Querier>( config, pam, wheel() );
        mark();
        querier->enabledIs( true );
    }
};

TEST_F( QuerierQueriesTest, StartsWithTwoQueriesAQuarterOfTheIntervalApart ) {
    startAndWatch();
    runFor( 31.25 + 125.0 + 125.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q", "31.250 Q", "156.250 Q", "281.250 Q" ) );
}

TEST_F( QuerierQueriesTest, StartupCountAndIntervalCanBeSet ) {
    QuerierConfig config;
    config.startupQueryCountSet = 4;
    config.startupQueryIntervalSet = 3.0;
    startAndWatch( config );
    runFor( 100.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q", "3.000 Q", "6.000 Q", "9.000 Q" ) );
    runFor( 34.0 );
    EXPECT_EQ( sent().back(), "134.000 Q" );
}

TEST_F( QuerierQueriesTest, SingleStartupQueryIsFollowedByTheInterval ) {
    QuerierConfig config;
    config.startupQueryCountSet = 1;
    startAndWatch( config );
    runFor( 125.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q", "125.000 Q" ) );
}

TEST_F( QuerierQueriesTest, DisabledItIsSilentAndForgets ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    querier->enabledIs( false );
    EXPECT_EQ( querier->groupCount(), 0U );
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_EQ( querier->groupCount(), 0U );
    runFor( 500.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( QuerierQueriesTest, EnabledAgainItStartsAgain ) {
    start();
    querier->enabledIs( false );
    querier->enabledIs( true );
    runFor( 32.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q", "31.250 Q" ) );
}

TEST_F( QuerierQueriesTest, GeneralQueryOnDemandDoesNotMoveTheRegularOnes ) {
    startAndWatch();
    runFor( 10.0 );
    querier->sendGeneralQuery();
    runFor( 30.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q", "10.000 Q", "31.250 Q" ) );
}

TEST_F( QuerierQueriesTest, LeaveIsFollowedByAsManyGroupQueriesAsAreSet ) {
    QuerierConfig config;
    config.lastMemberQueryCountSet = 3;
    config.lastMemberQueryInterval = 0.5;
    start( config );
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    EXPECT_TIME( group().groupTimerRemaining(), 1.5 );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)", "0.500 Q(G)", "1.000 Q(G)" ) );
}

TEST_F( QuerierQueriesTest, SingleGroupQueryIsNotRepeated ) {
    QuerierConfig config;
    config.lastMemberQueryCountSet = 1;
    start( config );
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)" ) );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierQueriesTest, RepetitionAfterAnAnswerCarriesTheSuppressFlag ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 0.5 );
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)", "1.000 Q(G) S" ) );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval - 10.0 );
}

TEST_F( QuerierQueriesTest, FurtherLeavesDoNotAskAgainWhileARoundIsOnItsWay ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 1.5 );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 0.5 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)", "1.000 Q(G)" ) );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierQueriesTest, LeaveAfterAnAnswerBeginsANewRound ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 0.25 );
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( 0.25 );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)", "0.500 Q(G)", "1.500 Q(G)" ) );
}

TEST_F( QuerierQueriesTest, LeaveShortlyBeforeTheGroupEndsStillAsks ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( membershipInterval - 1.5 );
    mark();
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)" ) );
    EXPECT_TIME( group().groupTimerRemaining(), 1.5 );
}

TEST_F( QuerierQueriesTest, LeaveShortlyBeforeTheEndAsksThoughAnEarlierOneDid ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( membershipInterval - 1.5 );
    mark();
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)" ) );
}

TEST_F( QuerierQueriesTest, RepetitionEndsWhenOnlySourcesAreLeft ) {
    QuerierConfig config;
    config.lastMemberQueryCountSet = 3;
    start( config );
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( membershipInterval - 1.5 );
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    mark();
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 2.5 );
    EXPECT_EQ( state(), "INCLUDE (1)" );
    EXPECT_THAT(
        sent(), ElementsAre( "0.000 Q(G,1)", "0.000 Q(G)", "1.000 Q(G,1)", "1.000 Q(G)", "2.000 Q(G,1)" )
    );
}

TEST_F( QuerierQueriesTest, RepetitionEndsWithTheGroup ) {
    QuerierConfig config;
    config.lastMemberQueryCountSet = 5;
    start( config );
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( membershipInterval - 1.5 );
    mark();
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G)", "1.000 Q(G)" ) );
}

TEST_F( QuerierQueriesTest, BlockIsFollowedByRepeatedSourceQueries ) {
    start();
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2, 3 } );
    hear( Record::BLOCK_OLD_SOURCES, { 1, 3 } );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1 3)", "1.000 Q(G,1 3)" ) );
    EXPECT_EQ( state(), "INCLUDE (2)" );
}

TEST_F( QuerierQueriesTest, SourcesThatWereAnsweredGoIntoAQueryWithTheSuppressFlag ) {
    start();
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2, 3 } );
    hear( Record::BLOCK_OLD_SOURCES, { 1, 2, 3 } );
    runFor( 0.5 );
    hear( Record::MODE_IS_INCLUDE, { 2 }, otherHost );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1 2 3)", "1.000 Q(G,2) S", "1.000 Q(G,1 3)" ) );
    EXPECT_EQ( state(), "INCLUDE (2)" );
}

TEST_F( QuerierQueriesTest, SourceThatIsBeingAskedAboutIsNotAskedAboutAgain ) {
    start();
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    hear( Record::BLOCK_OLD_SOURCES, { 1 } );
    runFor( 0.5 );
    hear( Record::BLOCK_OLD_SOURCES, { 1 } );
    runFor( 1.5 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1)", "1.000 Q(G,1)" ) );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierQueriesTest, NewSourceTakesThePendingOnesAlong ) {
    QuerierConfig config;
    config.lastMemberQueryCountSet = 3;
    start( config );
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2 } );
    hear( Record::BLOCK_OLD_SOURCES, { 1 } );
    runFor( 0.25 );
    hear( Record::BLOCK_OLD_SOURCES, { 2 } );
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1)", "0.250 Q(G,1 2)", "1.250 Q(G,1 2)", "2.250 Q(G,2)" ) );
}

TEST_F( QuerierQueriesTest, DroppedSourceIsNotAskedAboutAnyMore ) {
    start();
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2 } );
    hear( Record::BLOCK_OLD_SOURCES, { 1, 2 } );
    hear( Record::MODE_IS_EXCLUDE, { 2 } ); // drops 1
    runFor( 10.0 );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1 2)", "1.000 Q(G,2)" ) );
}

TEST_F( QuerierQueriesTest, MoreSourcesThanFitGoIntoSeveralQueries ) {
    QuerierConfig config;
    config.mtu = 68; // room for 8 sources
    start( config );
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2, 3, 4, 5, 6, 7, 8, 9 } );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1 2 3 4 5 6 7 8)", "0.000 Q(G,9)" ) );
    EXPECT_EQ( querier->counters().groupSourceQueriesSent, 2U );
}

TEST_F( QuerierQueriesTest, CountsWhatItSends ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    EXPECT_EQ( querier->counters().generalQueriesSent, 1U );
    EXPECT_EQ( querier->counters().groupQueriesSent, 1U );
    EXPECT_EQ( querier->counters().groupSourceQueriesSent, 1U );
}

TEST_F( QuerierQueriesTest, QuerierMayGoInTheMiddleOfARound ) {
    start();
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    std::size_t const before = pam->sent.size();
    querier.reset();
    hear( Record::MODE_IS_EXCLUDE, {} );
    runFor( 1000.0 );
    EXPECT_EQ( pam->sent.size(), before );
    EXPECT_EQ( wheel()->armedTimers(), 0U );
}

} // namespace Lab
