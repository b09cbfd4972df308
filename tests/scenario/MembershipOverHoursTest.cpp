#include "tests/scenario/ScenarioTest.h"

namespace Agent {

namespace {

using Igmp::IgmpV3GroupRecord;

/// Hosts of one version for hours, and a querier of the same version, which has to know what they want all
/// the time although frames are lost.
class MembershipOverHours : public ScenarioTest, public ::testing::WithParamInterface<int> {
  protected:
    MembershipOverHours() {
        querierIs( static_cast<Zornet::U8>( GetParam() ) );
        loseFramesInEveryOtherRound( 0.4 );
    }

    static std::string version() { return "igmpVersion: " + std::to_string( GetParam() ); }
    /// Ten hosts on two devices, which share groups; those on different devices hear each other.
    void tenHostsAre() {
        std::string const groups =
            ", groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude, count: 8 } ] }\n";
        hostsAre(
            "hosts:\n"
            "  - { name: a, count: 5, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, " +
            version() + groups +
            "  - { name: b, count: 5, ipAddr: 10.0.1.1, macAddr: '02:00:00:00:01:01', deviceName: eth1, " +
            version() + groups
        );
    }
    /// Looks at both sides in the pauses between two rounds, for that long.
    void expectAgreementFor( Seconds span ) {
        Seconds const end = elapsed() + span;
        while ( elapsed() < end ) {
            runFor( queryInterval );
            ASSERT_THAT( faults(), IsEmpty() ) << "after " << elapsed() << " s";
        }
    }
    /// To the middle between two rounds.
    void firstPause() { runUntilElapsed( startupQueryInterval + queryInterval / 2 ); }
};

TEST_P( MembershipOverHours, EqualsTheConfigurationAllTheTime ) {
    tenHostsAre();
    firstPause();
    expectAgreementFor( 6 * hour );
    EXPECT_GT( lan().counters().lost, 100U );
}

TEST_P( MembershipOverHours, FollowsAJoin ) {
    tenHostsAre();
    firstPause();
    join( "a-1", "239.9.9.9", IgmpV3GroupRecord::exclude );
    runFor( 0.001 );
    EXPECT_THAT( faults(), IsEmpty() );
    expectAgreementFor( hour );
}

TEST_P( MembershipOverHours, KeepsAGroupThatOneOfManyLeaves ) {
    tenHostsAre();
    firstPause();
    leave( "a-1", "239.1.1.1" );
    runFor( 10.0 );
    EXPECT_THAT( faults(), IsEmpty() );
    expectAgreementFor( hour );
}

TEST_P( MembershipOverHours, ForgetsAGroupThatAllHaveLeft ) {
    tenHostsAre();
    firstPause();
    for ( char const* const name :
          { "a-1", "a-2", "a-3", "a-4", "a-5", "b-1", "b-2", "b-3", "b-4", "b-5" } ) {
        leave( name, "239.1.1.1" );
    }
    EXPECT_THAT( faults(), ::testing::SizeIs( 1 ) );
    runFor( membershipInterval );
    EXPECT_THAT( faults(), IsEmpty() );
    expectAgreementFor( hour );
}

TEST_P( MembershipOverHours, ForgetsHostsThatAreSwitchedOff ) {
    tenHostsAre();
    join( "a-1", "239.9.9.9", IgmpV3GroupRecord::exclude );
    firstPause();
    host( "a-1" ).enabledIs( false );
    EXPECT_THAT( faults(), ::testing::SizeIs( 1 ) );
    runFor( membershipInterval );
    EXPECT_THAT( faults(), IsEmpty() );
}

INSTANTIATE_TEST_SUITE_P( Version, MembershipOverHours, ::testing::Values( 1, 2, 3 ) );

/// Filter modes and sources, which only version 3 knows.
class SourcesOverHours : public ScenarioTest {
  protected:
    SourcesOverHours() {
        querierIs( 3 );
        loseFramesInEveryOtherRound( 0.4 );
        hostsAre( R"(
hosts:
  - { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, igmpVersion: 3, groups: [
        { multicastAddr: 239.1.1.1, sources: [ 10.9.0.1, 10.9.0.2 ] },
        { multicastAddr: 239.1.1.2, filterMode: exclude, sources: [ 10.9.0.1, 10.9.0.2 ] },
        { multicastAddr: 239.1.1.3, sources: [ 10.9.0.1, 10.9.0.2 ] },
        { multicastAddr: 239.1.1.4, filterMode: exclude } ] }
  - { name: b, ipAddr: 10.0.0.2, macAddr: '02:00:00:00:00:02', deviceName: eth0, igmpVersion: 3, groups: [
        { multicastAddr: 239.1.1.1, sources: [ 10.9.0.2, 10.9.0.3 ] },
        { multicastAddr: 239.1.1.2, filterMode: exclude, sources: [ 10.9.0.2, 10.9.0.3 ] },
        { multicastAddr: 239.1.1.3, filterMode: exclude, sources: [ 10.9.0.2, 10.9.0.3 ] },
        { multicastAddr: 239.1.1.5, filterMode: include, sources: [ 10.9.0.4 ] } ] }
)" );
        runUntilElapsed( startupQueryInterval + queryInterval / 2 );
    }

    void expectAgreementFor( Seconds span ) {
        Seconds const end = elapsed() + span;
        while ( elapsed() < end ) {
            runFor( queryInterval );
            ASSERT_THAT( faults(), IsEmpty() ) << "after " << elapsed() << " s";
        }
    }
};

TEST_F( SourcesOverHours, EqualTheConfigurationAllTheTime ) {
    EXPECT_THAT( faults(), IsEmpty() );
    expectAgreementFor( 6 * hour );
}

TEST_F( SourcesOverHours, FollowAddedAndRemovedSources ) {
    join( "a", "239.1.1.5", IgmpV3GroupRecord::include, { "10.9.0.5", "10.9.0.6" } );
    join( "b", "239.1.1.1", IgmpV3GroupRecord::include, { "10.9.0.3", "10.9.0.7" } );
    runFor( 5.0 );
    EXPECT_THAT( faults(), IsEmpty() );
    expectAgreementFor( hour );
}

TEST_F( SourcesOverHours, FollowAChangeOfModeBothWays ) {
    join( "a", "239.1.1.1", IgmpV3GroupRecord::exclude, { "10.9.0.3", "10.9.0.8" } );
    join( "b", "239.1.1.2", IgmpV3GroupRecord::include, { "10.9.0.1" } );
    runFor( membershipInterval + 5.0 );
    EXPECT_THAT( faults(), IsEmpty() );
    join( "a", "239.1.1.1", IgmpV3GroupRecord::include, { "10.9.0.1" } );
    join( "b", "239.1.1.2", IgmpV3GroupRecord::exclude );
    runFor( membershipInterval + 5.0 );
    EXPECT_THAT( faults(), IsEmpty() );
    expectAgreementFor( hour );
}

TEST_F( SourcesOverHours, FollowALeave ) {
    leave( "b", "239.1.1.5" );
    leave( "a", "239.1.1.4" );
    runFor( 5.0 );
    EXPECT_THAT( faults(), IsEmpty() );
    expectAgreementFor( hour );
}

} // namespace

} // namespace Agent
