#include "tests/lab/QuerierTest.h"

// RFC 3376 section 6.4, router state INCLUDE (A): each row with A = {1 2} and B = {2 3}. A hundred seconds
// lie between the record that made A and the one with B, so that timers tell which of them set them.

namespace Lab {

class IncludeTableTest : public QuerierTest {
  protected:
    static constexpr Seconds age = 100.0;
    static constexpr Seconds kept = membershipInterval - age;

    IncludeTableTest() {
        start();
        hear( Record::MODE_IS_INCLUDE, { 1, 2 } );
        runFor( age );
        mark();
    }
};

TEST_F( IncludeTableTest, IsInAddsTheSources ) {
    hear( Record::MODE_IS_INCLUDE, { 2, 3 } );
    EXPECT_EQ( state(), "INCLUDE (1 2 3)" );
    EXPECT_TIME( sourceTimer( 1 ), kept );
    EXPECT_TIME( sourceTimer( 2 ), membershipInterval );
    EXPECT_TIME( sourceTimer( 3 ), membershipInterval );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( IncludeTableTest, IsExExcludesTheNewSourcesAndDropsTheOthers ) {
    hear( Record::MODE_IS_EXCLUDE, { 2, 3 } );
    EXPECT_EQ( state(), "EXCLUDE (2, 3)" );
    EXPECT_TIME( sourceTimer( 2 ), kept );
    EXPECT_EQ( sourceTimer( 3 ), 0.0 );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( IncludeTableTest, AllowAddsTheSources ) {
    hear( Record::ALLOW_NEW_SOURCES, { 2, 3 } );
    EXPECT_EQ( state(), "INCLUDE (1 2 3)" );
    EXPECT_TIME( sourceTimer( 1 ), kept );
    EXPECT_TIME( sourceTimer( 2 ), membershipInterval );
    EXPECT_TIME( sourceTimer( 3 ), membershipInterval );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( IncludeTableTest, BlockAsksAboutTheSourcesThatAreRequested ) {
    hear( Record::BLOCK_OLD_SOURCES, { 2, 3 } );
    EXPECT_EQ( state(), "INCLUDE (1 2)" );
    EXPECT_TIME( sourceTimer( 1 ), kept );
    EXPECT_TIME( sourceTimer( 2 ), lastMemberQueryTime );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,2)" ) );
}

TEST_F( IncludeTableTest, ToExExcludesTheNewSourcesAndAsksAboutTheKept ) {
    hear( Record::CHANGE_TO_EXCLUDE_MODE, { 2, 3 } );
    EXPECT_EQ( state(), "EXCLUDE (2, 3)" );
    EXPECT_TIME( sourceTimer( 2 ), lastMemberQueryTime );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,2)" ) );
}

TEST_F( IncludeTableTest, ToInAddsTheSourcesAndAsksAboutTheOthers ) {
    hear( Record::CHANGE_TO_INCLUDE_MODE, { 2, 3 } );
    EXPECT_EQ( state(), "INCLUDE (1 2 3)" );
    EXPECT_TIME( sourceTimer( 1 ), lastMemberQueryTime );
    EXPECT_TIME( sourceTimer( 2 ), membershipInterval );
    EXPECT_TIME( sourceTimer( 3 ), membershipInterval );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1)" ) );
}

TEST_F( IncludeTableTest, LeaveOfAGroupInIncludeModeAsksAboutItsSources ) {
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    EXPECT_EQ( state(), "INCLUDE (1 2)" );
    EXPECT_THAT( sent(), ElementsAre( "0.000 Q(G,1 2)" ) );
}

} // namespace Lab
