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

TEST( EventWarnings, RequestOfNoIntervalAtRunTimeIsTold ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, set: { unsolicitedReportInterval: 0 } }", ", unsolicitedReportInterval: 5" ),
        ":4:48: error: unsolicitedReportInterval: 0 is no request for the default on a host that is enabled; "
        "reports are repeated at once until its version in force changes\n"
    );
}

TEST( EventWarnings, StreamThatLosesItsIntervalIsTold ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, set: { enablePeriodicReport: true } }" ),
        ":4:43: error: enablePeriodicReport: without unsolicitedReportInterval reports follow each other "
        "without a pause\n"
    );
}

TEST( EventWarnings, BlockingIsToldAtTheEvent ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 1, set: { blocked: true } }", ", igmpVersion: 3" ),
        ":4:30: error: blocked: frames that arrive meanwhile wait, and the host then lags behind by as many "
        "until it is bound anew; with an answer pending as it is blocked, a version 3 host answers no query "
        "later until it is disabled and enabled\n"
    );
}

TEST( EventWarnings, GroupsThatNoChangeIsProcessedOfAreTold ) {
    constexpr char set[] = "{ at: 1, set: { processV3GroupChange: false } }";
    constexpr char text[] = "error: processV3GroupChange: false joins and leaves no group, and removing one "
                            "meanwhile can end the process\n";
    EXPECT_EQ( eventWarnings( set, ", groups: 239.1.1.1" ), std::string( ":4:43: " ) + text );
    EXPECT_EQ( eventWarnings( set ), "" );
    EXPECT_EQ(
        eventWarnings( "{ at: 0, join: 239.1.1.1 }\n  - " + std::string( set ) ),
        std::string( ":5:43: " ) + text
    );
    EXPECT_EQ(
        eventWarnings( "{ at: 2, join: 239.1.1.1 }\n  - " + std::string( set ) ),
        std::string( ":4:5: " ) + text
    );
}

TEST( EventWarnings, WhatTwoEventsDoBetweenThemIsToldAtTheLaterOne ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 9, set: { igmpVersionForced: true } }\n  - { at: 5, set: { igmpVersion: 3 } }"
        ),
        ":4:40: error: igmpVersionForced: with the host held at version 3, a version 2 query for one of its "
        "groups ends the process\n"
    );
}

TEST( EventWarnings, WhatAnEventDoesToSomeHostsOfAnEntryIsNotThoughtOfAll ) {
    EXPECT_EQ(
        eventWarnings( "{ at: 5, hosts: rx-1, set: { igmpVersionForced: true } }\n"
                       "  - { at: 9, hosts: rx-2, set: { igmpVersion: 3 } }" ),
        ""
    );
}

TEST( EventWarnings, GroupThatIsJoinedAgainIsCountedOnce ) {
    std::string const periodic =
        ", igmpVersion: 3, enablePeriodicReport: true, unsolicitedReportInterval: 5, "
        "mtu: 74";
    std::string const join = "{ at: 1, every: 1, times: 9, join: 239.1.1.1-239.1.1.3 }";
    EXPECT_EQ( eventWarnings( join + "\n  - " + join, periodic ), "" );
    EXPECT_EQ(
        eventWarnings( join + "\n  - { at: 2, join: 239.1.1.1-239.1.1.4 }", periodic ),
        ":5:5: error: enablePeriodicReport: in version 3 the stream never gets past one packet; of the "
        "groups, 4 in all, the others are told to queriers alone\n"
    );
}

TEST( EventWarnings, LastOfAGreatManyEntriesIsLookedAt ) {
    std::string hosts = "hosts:\n";
    for ( int i = 1; i <= 500; ++i ) {
        std::string const number = std::to_string( i );
        hosts += "  - { name: h" + number + ", ipAddr: 10.0." + std::to_string( i / 250 ) + "." +
                 std::to_string( i % 250 + 1 ) + ", macAddr: '02:00:00:00:" + ( i < 250 ? "01:" : "02:" ) +
                 std::to_string( 10 + i % 90 ) + "', deviceName: eth" + number +
                 ( i == 500 ? ", igmpVersion: 3" : "" ) + " }\n";
    }
    EXPECT_EQ(
        warningsOf( hosts + "events: [ { at: 1, set: { igmpVersionForced: true } } ]\n" ),
        ":502:46: error: igmpVersionForced: with the host held at version 3, a version 2 query for one of "
        "its "
        "groups ends the process\n"
    );
}

TEST( EventWarnings, JoinThatIsNeverToldIsTold ) {
    EXPECT_EQ(
        eventWarnings(
            "{ at: 1, set: { robustness: 0 } }\n  - { at: 2, join: 239.1.1.1 }", ", igmpVersion: 3"
        ),
        ":4:33: error: robustness: 0 ends the process when sources change in version 3\n"
        ":5:5: error: robustness: 0 tells neither join nor leave of a group in EXCLUDE mode in version 3\n"
    );
}

TEST( EventWarnings, SmallerPacketsAreHeldAgainstTheLongestRecord ) {
    EXPECT_EQ(
        eventWarnings(
            "{ at: 1, set: { mtu: 65 } }",
            ", igmpVersion: 3, groups: [ 239.1.1.1, { multicastAddr: 239.1.1.2, sources: "
            "10.1.1.1-10.1.1.3 }, 239.1.1.3 ]"
        ),
        ":4:5: error: group 239.1.1.2: a record of its 3 sources is larger than the mtu, and a change of "
        "filter mode is never reported whole\n"
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
