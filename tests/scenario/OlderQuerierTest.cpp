#include "tests/scenario/ScenarioTest.h"

namespace Agent {

namespace {

/// Hosts of version 3 that meet a querier of an older version, and the other way round.
class OlderQuerier : public ScenarioTest {
  protected:
    void fiveHostsAre( int version ) {
        hostsAre(
            "hosts: [ { name: a, count: 5, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, "
            "igmpVersion: " +
            std::to_string( version ) +
            ", groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude, count: 4 } ] } ]"
        );
    }
    Igmp::IgmpVersion versionInForce() { return status( "a-3" ).igmpVersion(); }
};

TEST_F( OlderQuerier, OfVersion2IsAnsweredInVersion2 ) {
    querierIs( 2 );
    fiveHostsAre( 3 );
    runFor( 2 * hour );
    EXPECT_EQ( versionInForce(), Igmp::igmpVersion2 );
    EXPECT_THAT( faults(), IsEmpty() );
    EXPECT_GT( querier().counters().v2Reports, 0U );
}

TEST_F( OlderQuerier, OfVersion1IsAnsweredInVersion1 ) {
    querierIs( 1 );
    fiveHostsAre( 3 );
    runFor( 2 * hour );
    EXPECT_EQ( versionInForce(), Igmp::igmpVersion1 );
    EXPECT_THAT( faults(), IsEmpty() );
}

TEST_F( OlderQuerier, IsForgottenOnceANewerOneHasTakenItsPlace ) {
    querierIs( 2 );
    fiveHostsAre( 3 );
    runFor( hour );
    querierIs( 3 );
    runFor( hour );
    EXPECT_EQ( versionInForce(), Igmp::igmpVersion3 );
    EXPECT_THAT( faults(), IsEmpty() );
    EXPECT_GT( querier().counters().v3Reports, 0U );
}

TEST_F( OlderQuerier, NewerOneLearnsOlderHosts ) {
    querierIs( 3 );
    fiveHostsAre( 1 );
    runFor( 2 * hour );
    EXPECT_EQ( versionInForce(), Igmp::igmpVersion1 );
    EXPECT_THAT( faults(), IsEmpty() );
}

} // namespace

} // namespace Agent
