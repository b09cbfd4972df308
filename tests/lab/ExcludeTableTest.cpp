#include "tests/lab/QuerierTest.h"

// RFC 3376 section 6.4, router state EXCLUDE (X,Y): each row with X = {1 2 3}, Y = {4 5} and A = {3 5 6}. A
// hundred seconds lie between the records that made the state and the one with A, so that timers tell which
// of them set them.

namespace Lab {

class ExcludeTableTest : public QuerierTest {
  protected:
    static constexpr Seconds age = 100.0;
    static constexpr Seconds kept = membershipInterval - age;

    ExcludeTableTest() {
        start();
        hear( Record::MODE_IS_EXCLUDE, { 4, 5 } );
        hear( Record::ALLOW_NEW_SOURCES, { 1, 2, 3 } );
        runFor( age );
        mark();
    }
};

TEST_F( ExcludeTableTest, StartsAsSaid ) {
    EXPECT_EQ( state(), "EXCLUDE (1 2 3, 4 5)" );
    EXPECT_TIME( sourceTimer( 1 ), kept );
    EXPECT_TIME( group().groupTimerRemaining(), kept );
}

TEST_F( ExcludeTableTest, IsInRequestsTheSources ) {
    hear( Record::MODE_IS_INCLUDE, { 3, 5, 6 } );
    EXPECT_EQ( state(), "EXCLUDE (1 2 3 5 6, 4)" );
    EXPECT_TIME( sourceTimer( 1 ), kept );
    EXPECT_TIME( sourceTimer( 3 ), membershipInterval );
    EXPECT_TIME( sourceTimer( 5 ), membershipInterval );
    EXPECT_TIME( sourceTimer( 6 ), membershipInterval );
    EXPECT_TIME( group().groupTimerRemaining(), kept );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( ExcludeTableTest, IsExDropsWhatItDoesNotName ) {
    hear( Record::MODE_IS_EXCLUDE, { 3, 5, 6 } );
    EXPECT_EQ( state(), "EXCLUDE (3 6, 5)" );
    EXPECT_TIME( sourceTimer( 3 ), kept );
    EXPECT_TIME( sourceTimer( 6 ), membershipInterval );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( ExcludeTableTest, AllowRequestsTheSources ) {
    hear( Record::ALLOW_NEW_SOURCES, { 3, 5, 6 } );
    EXPECT_EQ( state(), "EXCLUDE (1 2 3 5 6, 4)" );
    EXPECT_TIME( sourceTimer( 1 ), kept );
    EXPECT_TIME( sourceTimer( 5 ), membershipInterval );
    EXPECT_TIME( group().groupTimerRemaining(), kept );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( ExcludeTableTest, BlockAsksAboutAllThatIsNotExcludedYet ) {
    hear( Record::BLOCK_OLD_SOURCES, { 3, 5, 6 } );
    EXPECT_EQ( state(), "EXCLUDE (1 2 3 6, 4 5)" );
    EXPECT_TIME( sourceTimer( 1 ), kept );
    EXPECT_TIME( sourceTimer( 3 ), lastMemberQueryTime );
    EXPECT_TIME( sourceTimer( 6 ), lastMemberQueryTime );
    EXPECT_TIME( group().groupTimerRemaining(), kept );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,3 6)" ) );
}

TEST_F( ExcludeTableTest, ToExDropsWhatItDoesNotNameAndAsksAboutTheRest ) {
    hear( Record::CHANGE_TO_EXCLUDE_MODE, { 3, 5, 6 } );
    EXPECT_EQ( state(), "EXCLUDE (3 6, 5)" );
    EXPECT_TIME( sourceTimer( 3 ), lastMemberQueryTime );
    EXPECT_TIME( sourceTimer( 6 ), lastMemberQueryTime );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,3 6)" ) );
}

TEST_F( ExcludeTableTest, ToInRequestsTheSourcesAndAsksAboutTheOthersAndTheGroup ) {
    hear( Record::CHANGE_TO_INCLUDE_MODE, { 3, 5, 6 } );
    EXPECT_EQ( state(), "EXCLUDE (1 2 3 5 6, 4)" );
    EXPECT_TIME( sourceTimer( 1 ), lastMemberQueryTime );
    EXPECT_TIME( sourceTimer( 2 ), lastMemberQueryTime );
    EXPECT_TIME( sourceTimer( 3 ), membershipInterval );
    EXPECT_TIME( sourceTimer( 5 ), membershipInterval );
    EXPECT_TIME( group().groupTimerRemaining(), lastMemberQueryTime );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1 2)", "0.000 Q(G)" ) );
}

TEST_F( ExcludeTableTest, BlockedSourceLastsNoLongerThanTheGroup ) {
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} ); // the group has 2 seconds left
    runFor( 1.0 );
    hear( Record::BLOCK_OLD_SOURCES, { 6 } );
    EXPECT_TIME( sourceTimer( 6 ), 1.0 );
}

} // namespace Lab
