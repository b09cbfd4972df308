#include "tests/scenario/ScenarioTest.h"

namespace Agent {

namespace {

/// Two hosts in one group, and what each answers to the queries of ten minutes.
class Suppression : public ScenarioTest {
  protected:
    static constexpr U32 rounds = 4;

    void twoHostsAre( std::string const& version, std::string const& secondDevice ) {
        std::string const groups =
            version + ", groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude } ] }\n";
        querierIs( static_cast<Zornet::U8>( version.back() - '0' ) );
        hostsAre(
            "hosts:\n"
            "  - { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, " +
            groups + "  - { name: b, ipAddr: 10.0.0.2, macAddr: '02:00:00:00:00:02', deviceName: " +
            secondDevice + ", " + groups
        );
        runUntilElapsed( startupQueryInterval + queryInterval / 2 ); // joins and their repeats are over
        a_ = counted( "a" );
        b_ = counted( "b" );
        runFor( rounds * queryInterval );
    }
    U32 answersOfA() { return counted( "a" ) - a_; }
    U32 answersOfB() { return counted( "b" ) - b_; }

  private:
    U32 counted( char const* name ) {
        Igmp::IgmpHostStatus const& host = status( name );
        return host.v1ReportsSent() + host.v2ReportsSent() + host.v3CurrentStateReportSent();
    }

    U32 a_ = 0;
    U32 b_ = 0;
};

TEST_F( Suppression, OneOfTwoHostsOnTwoDevicesAnswersInVersion2 ) {
    twoHostsAre( "igmpVersion: 2", "eth1" );
    EXPECT_EQ( answersOfA() + answersOfB(), rounds );
    EXPECT_THAT( faults(), IsEmpty() );
}

TEST_F( Suppression, OneOfTwoHostsOnTwoDevicesAnswersInVersion1 ) {
    twoHostsAre( "igmpVersion: 1", "eth1" );
    EXPECT_EQ( answersOfA() + answersOfB(), rounds );
    EXPECT_THAT( faults(), IsEmpty() );
}

TEST_F( Suppression, BothHostsOfOneDeviceAnswer ) {
    twoHostsAre( "igmpVersion: 2", "eth0" );
    EXPECT_EQ( answersOfA(), rounds );
    EXPECT_EQ( answersOfB(), rounds );
    EXPECT_EQ( status( "a" ).v12ReportReceived(), 0U );
}

TEST_F( Suppression, BothHostsAnswerInVersion3 ) {
    twoHostsAre( "igmpVersion: 3", "eth1" );
    EXPECT_EQ( answersOfA(), rounds );
    EXPECT_EQ( answersOfB(), rounds );
    EXPECT_GT( status( "a" ).v3ReportReceived(), 0U );
}

TEST_F( Suppression, HostWhoseReportWasSuppressedLeavesSilently ) {
    twoHostsAre( "igmpVersion: 2", "eth1" );
    for ( char const* const name : { "a", "b" } ) {
        leave( name, "239.1.1.1" );
    }
    EXPECT_EQ( status( "a" ).v2LeavesSent() + status( "b" ).v2LeavesSent(), 1U );
    runFor( 5.0 );
    EXPECT_THAT( faults(), IsEmpty() );
}

} // namespace

} // namespace Agent
