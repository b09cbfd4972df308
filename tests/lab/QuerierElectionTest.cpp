#include "tests/lab/QuerierTest.h"

// Several queriers on a link: RFC 3376 sections 6.6.1 and 6.6.2, RFC 2236 section 7. This one is 10.0.0.254.

namespace Lab {

class QuerierElectionTest : public QuerierTest {
  protected:
    static constexpr Seconds otherQuerierPresentInterval = 255.0;
    inline static IpAddr const lower{ "10.0.0.250" };
    inline static IpAddr const higher{ "10.0.0.255" };
    inline static IpAddr const none{};

    QuerierElectionTest() {
        config.electionEnabled = true;
        start( config );
    }
    void hearV3Query(
        IpAddr const& from, IpAddr const& asked = none, std::vector<int> const& numbers = {},
        bool suppress = false, U8 qrv = 2, U8 qqic = 125
    ) {
        Bytes const message = v3QueryMessage( asked, sources( numbers ), 10, suppress, qrv, qqic );
        hear( igmpFrame( from, asked.isZero() ? allSystems : asked, message ) );
    }
    void hearV2Query( IpAddr const& from, IpAddr const& asked = none, U8 code = 10 ) {
        Bytes const message = igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, asked );
        hear( igmpFrame( from, asked.isZero() ? allSystems : asked, message ) );
    }

    QuerierConfig config;
};

TEST_F( QuerierElectionTest, YieldsToALowerAddress ) {
    hearV3Query( lower );
    EXPECT_FALSE( querier->isQuerier() );
    EXPECT_EQ( querier->querierAddr(), lower );
    runFor( 200.0 );
    EXPECT_THAT( sent(), IsEmpty() );
}

TEST_F( QuerierElectionTest, YieldsToAVersion2QuerierToo ) {
    hearV2Query( lower );
    EXPECT_FALSE( querier->isQuerier() );
}

TEST_F( QuerierElectionTest, DoesNotYieldToAHigherAddressItsOwnOrNone ) {
    hearV2Query( higher );
    hearV3Query( higher );
    hearV3Query( config.ipAddr );
    hearV3Query( none );
    EXPECT_TRUE( querier->isQuerier() );
    EXPECT_EQ( querier->querierAddr(), config.ipAddr );
}

TEST_F( QuerierElectionTest, DoesNotYieldToAVersion1Querier ) {
    hearV2Query( lower, none, 0 );
    EXPECT_TRUE( querier->isQuerier() );
    EXPECT_EQ( querier->counters().v1Queries, 1U );
}

TEST_F( QuerierElectionTest, DoesNotYieldWithoutElection ) {
    start();
    hearV3Query( lower );
    EXPECT_TRUE( querier->isQuerier() );
}

TEST_F( QuerierElectionTest, Version2QuerierDoesNotUnderstandVersion3Queries ) {
    config.version = 2;
    start( config );
    hearV3Query( lower );
    EXPECT_TRUE( querier->isQuerier() );
    EXPECT_EQ( querier->counters().v3Queries, 1U );
}

TEST_F( QuerierElectionTest, TakesOverWhenTheOtherHasBeenSilentForItsInterval ) {
    hearV3Query( lower );
    runFor( 100.0 );
    hearV3Query( lower );
    mark();
    runFor( otherQuerierPresentInterval - Kiv::ActivitySm::tick );
    EXPECT_FALSE( querier->isQuerier() );
    runFor( Kiv::ActivitySm::tick );
    EXPECT_TRUE( querier->isQuerier() );
    runFor( 125.0 );
    EXPECT_THAT( sent(), ElementsAre( "255.000 Q", "380.000 Q" ) );
}

TEST_F( QuerierElectionTest, GoesByTheOthersNumbersUntilItTakesOver ) {
    hearV3Query( lower, none, {}, false, 3, 20 );
    EXPECT_EQ( querier->configInForce().robustness, 3U );
    EXPECT_EQ( querier->configInForce().queryInterval, 20.0 );
    hear( Record::MODE_IS_EXCLUDE, {} );
    EXPECT_TIME( group().groupTimerRemaining(), 70.0 );
    runFor( 65.0 );
    EXPECT_TRUE( querier->isQuerier() );
    EXPECT_EQ( querier->configInForce().robustness, 2U );
    EXPECT_EQ( querier->configInForce().queryInterval, 125.0 );
}

TEST_F( QuerierElectionTest, ZeroesOfTheOtherTellNothing ) {
    hearV3Query( lower, none, {}, false, 0, 0 );
    EXPECT_EQ( querier->configInForce().robustness, 2U );
    EXPECT_EQ( querier->configInForce().queryInterval, 125.0 );
}

TEST_F( QuerierElectionTest, ObservesButDoesNotAskAboutLeaves ) {
    hearV3Query( lower );
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( state(), "EXCLUDE (1, )" );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_TIME( sourceTimer( 1 ), membershipInterval );
}

TEST_F( QuerierElectionTest, GroupQueryOfTheOtherLowersTheGroupTimer ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    hearV3Query( lower, G );
    EXPECT_TIME( group().groupTimerRemaining(), lastMemberQueryTime );
    runFor( 1.0 );
    hearV3Query( lower, G );
    EXPECT_TIME( group().groupTimerRemaining(), 1.0 );
}

TEST_F( QuerierElectionTest, Version2GroupQueryOfTheOtherLowersTheGroupTimer ) {
    hear( v2Report( host, G ) );
    hearV2Query( lower, G, 20 );
    EXPECT_TIME( group().groupTimerRemaining(), 4.0 );
}

TEST_F( QuerierElectionTest, SourceQueryOfTheOtherLowersTheSourceTimers ) {
    hear( Record::ALLOW_NEW_SOURCES, { 1, 2 } );
    hearV3Query( lower, G, { 2, 3 } );
    EXPECT_TIME( sourceTimer( 1 ), membershipInterval );
    EXPECT_TIME( sourceTimer( 2 ), lastMemberQueryTime );
    EXPECT_EQ( state(), "INCLUDE (1 2)" );
}

TEST_F( QuerierElectionTest, QueryWithTheSuppressFlagLowersNothing ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    hearV3Query( lower, G, {}, true );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
    EXPECT_FALSE( querier->isQuerier() );
}

TEST_F( QuerierElectionTest, QueryOfALoserLowersNothing ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    hearV3Query( higher, G );
    EXPECT_TIME( group().groupTimerRemaining(), membershipInterval );
}

TEST_F( QuerierElectionTest, RoundInProgressEndsWhenItYields ) {
    hear( Record::MODE_IS_EXCLUDE, {} );
    hear( Record::ALLOW_NEW_SOURCES, { 1 } );
    hear( Record::CHANGE_TO_INCLUDE_MODE, {} );
    mark();
    hearV3Query( lower );
    runFor( 10.0 );
    EXPECT_THAT( sent(), IsEmpty() );
    EXPECT_EQ( state(), "none" );
}

TEST_F( QuerierElectionTest, GeneralQueryOnDemandIsForTheQuerierOnly ) {
    hearV3Query( lower );
    querier->sendGeneralQuery();
    EXPECT_THAT( sent(), IsEmpty() );
}

} // namespace Lab
