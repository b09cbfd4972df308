#include "agent/expecting/Expectations.h"

#include <optional>

#include "agent/timeline/Timeline.h"
#include "lab/Wire.h"
#include "tests/agent/HostsBench.h"

namespace Agent {

namespace {

class ExpectationsTest : public HostsBench {
  protected:
    /// Two version 2 hosts in a group each, with expectations, for ten seconds.
    ExitStatus runWith( std::string const& more, Kiv::Seconds duration = 10.0 ) {
        hostsAre(
            "hosts:\n"
            "  - { name: rx, count: 2, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0,\n"
            "      groups: 239.1.1.1 }\n" +
            more
        );
        testing::internal::CaptureStderr();
        Timeline timeline( context_ );
        Expectations expectations( context_ );
        timeline.handleStarted();
        expectations.handleStarted();
        runUntilElapsed( duration );
        timeline.handleTimeOver();
        expectations.handleTimeOver();
        ExitStatus const status = expectations.handleEnded();
        told_ = testing::internal::GetCapturedStderr();
        return status;
    }

    std::string told_;
};

TEST_F( ExpectationsTest, MetOnesAreCounted ) {
    EXPECT_EQ(
        runWith( "expect: [ { v2ReportsSent: 2, igmpVersion: 2 }, { at: 0, v2ReportsSent: 1 } ]\n" ), exitDone
    );
    EXPECT_EQ( told_, "igmphost: 2 of 2 expectations met\n" );
}

TEST_F( ExpectationsTest, UnmetOnesAreToldWithWhatWasFound ) {
    EXPECT_EQ(
        runWith( "expect:\n  - { hosts: rx-2, v2ReportsSent: '>= 9', v2LeavesSent: 0 }\n" ), exitNotMet
    );
    EXPECT_EQ(
        told_, "igmphost: error: s.yaml:5: not met: rx-2: v2ReportsSent: expected >= 9, found 2\n"
               "igmphost: 0 of 1 expectations met\n"
    );
}

TEST_F( ExpectationsTest, LookComesBehindTheEventsOfItsTime ) {
    EXPECT_EQ(
        runWith(
            "events: [ { at: 10, hosts: rx-1, leave: 239.1.1.1 }, { at: 3, hosts: rx-2, leave: all } ]\n"
            "expect: [ { at: 3, hosts: rx-2, v2LeavesSent: 1 }, { at: 10, hosts: rx-1, v2LeavesSent: 1 } ]\n"
        ),
        exitDone
    ) << told_;
}

TEST_F( ExpectationsTest, WhatMayTakeItsTimeIsLookedAtAgain ) {
    std::string const events = "events: [ { at: 5, hosts: rx-1, leave: 239.1.1.1 } ]\n";
    EXPECT_EQ(
        runWith( events + "expect: [ { at: 4, within: 2, hosts: rx-1, v2LeavesSent: 1 } ]\n" ), exitDone
    ) << told_;
}

TEST_F( ExpectationsTest, TimeThatSomethingMayTakeEnds ) {
    std::string const events = "events: [ { at: 5, hosts: rx-1, leave: 239.1.1.1 } ]\n";
    EXPECT_EQ(
        runWith( events + "expect: [ { at: 4, within: 0.9, hosts: rx-1, v2LeavesSent: 1 } ]\n" ), exitNotMet
    );
}

TEST_F( ExpectationsTest, WhatTheEndComesBeforeIsNotMet ) {
    EXPECT_EQ( runWith( "expect:\n  - { at: 11, v2LeavesSent: 0 }\n" ), exitNotMet );
    EXPECT_EQ(
        told_, "igmphost: error: s.yaml:5: not met: expected to be looked at 11 s after the start, found the "
               "end before\n"
               "igmphost: 0 of 1 expectations met\n"
    );
}

TEST_F( ExpectationsTest, DisabledHostMeetsNothing ) {
    EXPECT_EQ(
        runWith( "events: [ { at: 5, hosts: rx-1, disable: true } ]\nexpect:\n  - { v2LeavesSent: 0 }\n" ),
        exitNotMet
    );
    EXPECT_THAT(
        told_, ::testing::HasSubstr( "not met: rx-1: expected a host that is enabled, found none\n" )
    );
}

TEST_F( ExpectationsTest, TotalsAreThoseOfAllHosts ) {
    EXPECT_EQ( runWith( "expect:\n  - { total: true, v2ReportsSent: 4 }\n" ), exitDone ) << told_;
}

TEST_F( ExpectationsTest, OfManyHostsTheFirstOnesAreTold ) {
    EXPECT_EQ(
        runWith(
            "  - { name: many, count: 20, enabled: false }\nexpect:\n  - { hosts: many, v2LeavesSent: 0 }\n"
        ),
        exitNotMet
    );
    EXPECT_THAT( told_, ::testing::HasSubstr( "many-10: expected" ) );
    EXPECT_THAT( told_, ::testing::Not( ::testing::HasSubstr( "many-11: expected" ) ) );
    EXPECT_THAT( told_, ::testing::HasSubstr( "not met: and 10 more\n" ) );
}

TEST_F( ExpectationsTest, QuerierIsAskedForWhatItKnows ) {
    Lab::Wire wire( wheel() );
    wire.defaultSegmentIs( "lan" );
    Zornet::DeviceProviderScope const scope( wire );
    Kiv::Ptr<Zornet::EthDevPam> const pam = Zornet::EthDevPamIs( "router" );
    pam->deviceOpenIs( true );
    Lab::Querier querier( {}, pam, wheel() );
    querier.enabledIs( true );
    context_.queriers.push_back( &querier );
    EXPECT_EQ(
        runWith( "querier: { device: router }\n"
                 "expect:\n"
                 "  - querier: { joined: 239.1.1.1, notJoined: 239.1.1.2, groupCount: 1 }\n"
                 "  - querier: { joined: [ 239.1.1.2, { multicastAddr: 239.1.1.1, sources: 10.9.9.1 } ], "
                 "notJoined: 239.1.1.1, groupCount: '> 1' }\n" ),
        exitNotMet
    );
    EXPECT_EQ(
        told_,
        "igmphost: error: s.yaml:7: not met: querier: 239.1.1.2: expected a member, found none\n"
        "igmphost: error: s.yaml:7: not met: querier: 239.1.1.1: expected INCLUDE {10.9.9.1}, found EXCLUDE "
        "{}\n"
        "igmphost: error: s.yaml:7: not met: querier: 239.1.1.1: expected no member, found EXCLUDE {}\n"
        "igmphost: error: s.yaml:7: not met: querier: groupCount: expected > 1, found 1\n"
        "igmphost: 1 of 2 expectations met\n"
    );
}

} // namespace

} // namespace Agent
