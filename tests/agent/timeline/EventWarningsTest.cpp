#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

std::string
eventWarnings( std::string const& entry, std::string const& more = "" ) {
    return warningsOf(
        "hosts: [ { name: rx, count: 3, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0" +
        more + " } ]\nduration: 100\nevents:\n  - " + entry + "\n"
    );
}

TEST( EventWarnings, SetThatEndsTheProcessIsToldAtItsPlace ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, set: { robustness: 0 } }" ),
        ":4:33: error: robustness: 0 ends the process when sources change in version 3\n"
    );
}

TEST( EventWarnings, WhatASetMakesOfAnotherSettingIsToldAtTheEvent ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, set: { igmpVersion: 3 } }", ", igmpVersionForced: true" ),
        ":4:5: error: igmpVersionForced: with the host held at version 3, a version 2 query for one of its "
        "groups ends the process\n"
    );
}

TEST( EventWarnings, WhatTheHostDeservesAnywayIsNotToldAgain ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, set: { v1MaxResponseTime: 1 } }", ", robustness: 0" ),
        ":1:110: error: robustness: 0 ends the process when sources change in version 3\n"
    );
}

TEST( EventWarnings, GroupsOfAnEventAreLookedAt ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, join: [ 239.1.1.1, 10.1.1.1 ] }" ),
        ":4:33: error: group 10.1.1.1: outside 224.0.0.0/4 there are no multicast groups\n"
    );
}

TEST( EventWarnings, TimesThatDoNotComeAreTold ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 101, enable: true }" ),
        ":4:5: error: at: 101 s does not come; the duration is 100 s\n"
    );
}

TEST( EventWarnings, RateThatIsTooSlowIsTold ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, every: 2, rate: 1/s, enable: true }" ),
        ":4:5: error: rate: one time takes 3 s, and the next is due after 2 s; it will be late\n"
    );
}

} // namespace

} // namespace Agent
