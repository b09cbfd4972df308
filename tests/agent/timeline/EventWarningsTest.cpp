#include "agent/scenario/warnings/EventWarnings.h"

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

TEST( EventWarnings, WhatEventsDoToTheSameHostOfAnEntryIsKept ) {
    constexpr char text[] =
        "error: igmpVersionForced: with the host held at version 3, a version 2 query for "
        "one of its groups ends the process\n";
    EXPECT_EQ(
        eventWarnings( "{ at: 5, hosts: rx-2, set: { igmpVersionForced: true } }\n"
                       "  - { at: 6, hosts: rx-1, set: { mtu: 1000 } }\n"
                       "  - { at: 9, hosts: [ rx-2, rx-3 ], set: { igmpVersion: 3 } }" ),
        std::string( ":6:5: " ) + text
    );
    EXPECT_EQ(
        eventWarnings( "{ at: 5, hosts: rx-2, set: { igmpVersionForced: true } }\n"
                       "  - { at: 6, set: { igmpVersionForced: false } }\n"
                       "  - { at: 9, set: { igmpVersion: 3 } }" ),
        ""
    );
}

/// Entries of so many kinds, with no warning of their own, and so many events that none deserves, but for the
/// last kind of all.
Scenario
manyKinds( int kinds, int events ) {
    std::string text = "defaults: { deviceName: eth0 }\nhosts:\n";
    for ( int i = 1; i <= kinds; ++i ) {
        std::string const number = std::to_string( i );
        std::string const last = std::to_string( i / 250 ) + "." + std::to_string( i % 250 + 1 );
        text += "  - { name: h" + number + ", ipAddr: 10.0." + last +
                ", macAddr: '02:00:00:00:" + std::to_string( 10 + i / 90 ) + ":" +
                std::to_string( 10 + i % 90 ) + "', mtu: " + std::to_string( 1000 + i ) +
                ( i == kinds ? ", igmpVersion: 3" : "" ) + " }\n";
    }
    text += "events:\n";
    for ( int i = 1; i <= events; ++i ) {
        text += "  - { at: " + std::to_string( i ) + ", set: { igmpVersionForced: true } }\n";
    }
    return scenarioOf( text );
}

TEST( EventWarnings, LastOfAGreatManyKindsIsLookedAt ) {
    Scenario const scenario = manyKinds( 500, 1 );
    EXPECT_THAT(
        linesOf( scenarioWarnings( scenario ) ), ::testing::HasSubstr( "igmpVersionForced: with the host" )
    );
}

TEST( EventWarnings, WhatIsNotLookedAtIsTold ) {
    Scenario const scenario = manyKinds( 50, 3 );
    Diagnostics warnings;
    EventWarnings( scenario, warnings, 20'000 ).check();
    EXPECT_THAT(
        linesOf( warnings ),
        ::testing::HasSubstr(
            ":54:5: error: events from 1 s on are not held against all hosts; they are too many together\n"
        )
    );
}

TEST( EventWarnings, LeaveOfWhatNobodyJoinsIsTold ) {
    std::string const groups = ", groups: [ 239.1.1.1, 239.1.2.0/24 ]";
    EXPECT_EQ(
        eventWarnings( "{ at: 1, leave: [ 239.1.2.9, 239.1.1.2 ] }", groups ),
        ":4:34: error: leave: none of the hosts is ever in group 239.1.1.2 before\n"
    );
    EXPECT_EQ(
        eventWarnings( "{ at: 1, change: 239.1.3.0/30 }", groups ),
        ":4:22: error: change: none of the hosts is ever in group 239.1.3.0 before\n"
    );
    EXPECT_EQ( eventWarnings( "{ at: 1, leave: all }" ), "" );
}

TEST( EventWarnings, GroupsBetweenTheStepsOfAnEntryAreNotJoined ) {
    std::string const groups = ", groups: [ { multicastAddr: 239.1.1.0, count: 10, step: 4 } ]";
    EXPECT_EQ( eventWarnings( "{ at: 1, leave: 239.1.1.8 }", groups ), "" );
    EXPECT_EQ( eventWarnings( "{ at: 1, leave: 239.1.1.9-239.1.1.12 }", groups ), "" );
    EXPECT_EQ(
        eventWarnings( "{ at: 1, leave: [ 239.1.1.9-239.1.1.11, 239.1.1.40 ] }", groups ),
        ":4:23: error: leave: none of the hosts is ever in group 239.1.1.9 before\n"
        ":4:45: error: leave: none of the hosts is ever in group 239.1.1.40 before\n"
    );
    std::string const odd = "{ at: 1, leave: { multicastAddr: 239.1.1.3, count: 6, step: ";
    EXPECT_NE( eventWarnings( odd + "2 } }", groups ), "" );
    EXPECT_EQ( eventWarnings( odd + "3 } }", groups ), "" );
    EXPECT_NE( eventWarnings( odd + "6 } }", groups ), "" );
}

TEST( EventWarnings, EventsJoinWhatIsLeftLater ) {
    std::string const leave = "{ at: 5, hosts: rx-1, leave: 239.1.1.2 }\n  - ";
    EXPECT_EQ( eventWarnings( leave + "{ at: 5, join: 239.1.1.0/30 }" ), "" );
    EXPECT_EQ(
        eventWarnings( leave + "{ at: 1, zap: { groups: [ 239.1.1.1, 239.1.1.2 ], dwell: 5 } }" ), ""
    );
    std::string const told = ":4:34: error: leave: none of the hosts is ever in group 239.1.1.2 before\n";
    EXPECT_EQ( eventWarnings( leave + "{ at: 6, join: 239.1.1.2 }" ), told );
    EXPECT_EQ( eventWarnings( leave + "{ at: 1, hosts: [ rx-2, rx-3 ], join: 239.1.1.2 }" ), told );
    EXPECT_EQ(
        eventWarnings( "{ at: 5, every: 2, times: 2, leave: 239.1.1.2 }\n  - { at: 6, join: 239.1.1.2 }" ), ""
    );
}

TEST( EventWarnings, CopiesOfATemplateMayBeLeft ) {
    std::string const groups = ", groups: { multicastAddr: 239.1.1.1, replicate: true, replicateNumber: 5 }";
    EXPECT_EQ( eventWarnings( "{ at: 1, leave: 239.1.1.5 }", groups ), "" );
    EXPECT_NE( eventWarnings( "{ at: 1, leave: 239.1.1.6 }", groups ), "" );
}

constexpr char neighbours[] = R"(
defaults: { deviceName: eth0, macAddr: 02:00:00:00:00:01 }
hosts:
  - { name: a, count: 3, ipAddr: 10.0.0.1 }
  - { name: b, count: 3, ipAddr: 10.0.0.11, macAddr: 02:00:00:00:00:11 }
  - { name: c, ipAddr: 10.0.0.2, macAddr: 02:00:00:00:00:02, deviceName: eth1 }
events:
)";

std::string
addressWarnings( std::string const& events ) {
    return warningsOf( neighbours + events );
}

TEST( EventAddresses, AddressOfANeighbourIsTold ) {
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: b, set: { ipAddr: 10.0.0.3 } }\n" ),
        ":8:39: error: ipAddr: 10.0.0.3 on eth0 is taken already, by host 'a-3' in line 4\n"
    );
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: b-2, set: { macAddr: '02:00:00:00:00:02' } }\n" ),
        ":8:42: error: macAddr: 02:00:00:00:00:02 on eth0 is taken already, by host 'a-2' in line 4\n"
    );
    EXPECT_EQ( addressWarnings( "  - { at: 1, hosts: c, set: { ipAddr: 10.0.0.1 } }\n" ), "" );
}

TEST( EventAddresses, HostsMayMoveUpAndMakeRoom ) {
    EXPECT_EQ( addressWarnings( "  - { at: 1, hosts: a, set: { ipAddr: 10.0.0.2 } }\n" ), "" );
    EXPECT_EQ(
        addressWarnings( "  - { at: 2, hosts: b-1, set: { ipAddr: 10.0.0.1 } }\n"
                         "  - { at: 1, hosts: a, set: { ipAddr: 10.0.0.2 } }\n" ),
        ""
    );
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: a-1, disable: true }\n"
                         "  - { at: 2, hosts: b-1, set: { ipAddr: 10.0.0.1 } }\n" ),
        ""
    );
}

TEST( EventAddresses, AddressesThatTwoEventsSetAreTold ) {
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: a-1, set: { ipAddr: 10.0.0.9 } }\n"
                         "  - { at: 2, hosts: b-1, set: { ipAddr: 10.0.0.9 } }\n" ),
        ":9:41: error: ipAddr: 10.0.0.9 on eth0 is taken already, by host 'a-1' in line 4\n"
    );
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: a-1, set: { ipAddr: 10.0.0.9 } }\n"
                         "  - { at: 2, hosts: a-1, set: { ipAddr: 10.0.0.8 } }\n"
                         "  - { at: 3, hosts: b-1, set: { ipAddr: 10.0.0.9 } }\n" ),
        ""
    );
}

TEST( EventAddresses, HostsTakeTheirAddressesToAnotherLink ) {
    std::string const move = "  - { at: 1, hosts: b, set: { ipAddr: 10.0.0.3, deviceName: eth2 } }\n";
    EXPECT_EQ( addressWarnings( move ), "" );
    EXPECT_EQ(
        addressWarnings( move + "  - { at: 2, hosts: c, set: { deviceName: eth2, ipAddr: 10.0.0.4 } }\n" ),
        ":9:57: error: ipAddr: 10.0.0.4 on eth2 is taken already, by host 'b-2' in line 5\n"
    );
    EXPECT_EQ(
        addressWarnings( move + "  - { at: 2, hosts: c, set: { deviceName: eth0, ipAddr: 10.0.0.11 } }\n" ),
        ":9:43: error: macAddr: 02:00:00:00:00:02 on eth0 is taken already, by host 'a-2' in line 4\n"
    );
}

TEST( EventAddresses, HostThatOnlyMovesIsHeldAgainstThoseItComesTo ) {
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: c, set: { deviceName: eth0 } }\n" ),
        ":8:43: error: ipAddr: 10.0.0.2 on eth0 is taken already, by host 'a-2' in line 4\n"
        ":8:43: error: macAddr: 02:00:00:00:00:02 on eth0 is taken already, by host 'a-2' in line 4\n"
    );
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: c, set: { deviceName: eth0, tagged: true, vlanId: 7 } }\n" ), ""
    );
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: c, set: { ns: blue } }\n"
                         "  - { at: 1, hosts: a-2, set: { ns: blue, deviceName: eth1 } }\n"
                         "  - { at: 2, hosts: c, delete: }\n"
                         "  - { at: 3, hosts: c, add: }\n"
                         "  - { at: 4, hosts: a-3, set: { deviceName: eth1, ipAddr: 10.0.0.2 } }\n" ),
        ":9:55: error: ipAddr: 10.0.0.2 on eth1 in blue is taken already, by host 'c' in line 6\n"
        ":9:55: error: macAddr: 02:00:00:00:00:02 on eth1 in blue is taken already, by host 'c' in line 6\n"
        ":12:59: error: ipAddr: 10.0.0.2 on eth1 is taken already, by host 'c' in line 6\n"
    );
}

TEST( EventAddresses, HostThatComesBackIsHeldAgainstWhoTookItsAddress ) {
    using Texts = std::vector<std::pair<std::string, std::string>>;
    for ( auto const& [go, comeBack] : Texts{ { "disable: ", "enable: " },
                                              { "delete: ", "add: " },
                                              { "set: { enabled: false }", "set: { enabled: true }" } } ) {
        EXPECT_EQ(
            addressWarnings(
                "  - { at: 1, hosts: a, " + go + " }\n" +
                "  - { at: 2, hosts: b-1, set: { ipAddr: 10.0.0.2 } }\n" + "  - { at: 3, hosts: a, " +
                comeBack + " }\n"
            ),
            ":10:5: error: ipAddr: 10.0.0.2 on eth0 is taken already, by host 'b-1' in line 5\n"
        ) << go;
    }
}

TEST( EventAddresses, WhatASilentHostIsSetToIsToldWhenItComesBack ) {
    std::string const set = "  - { at: 1, hosts: a-2, disable: }\n"
                            "  - { at: 2, hosts: a-2, set: { ipAddr: 10.0.0.11 } }\n";
    EXPECT_EQ( addressWarnings( set ), "" );
    EXPECT_EQ(
        addressWarnings( set + "  - { at: 3, hosts: a-2, enable: }\n  - { at: 4, hosts: a-2, enable: }\n" ),
        ":10:5: error: ipAddr: 10.0.0.11 on eth0 is taken already, by host 'b-1' in line 5\n"
    );
}

TEST( EventAddresses, HostsThatAreAddedHaveTheirsFromThenOn ) {
    std::string const add =
        "  - { at: 2, add: { name: new, ipAddr: 10.0.0.21, macAddr: '02:00:00:00:00:21' } }\n";
    EXPECT_EQ(
        addressWarnings(
            "  - { at: 1, hosts: b-1, set: { ipAddr: 10.0.0.21 } }\n"
            "  - { at: 1.5, hosts: b-1, set: { ipAddr: 10.0.0.11 } }\n" +
            add
        ),
        ""
    );
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: b-1, set: { ipAddr: 10.0.0.21 } }\n" + add ),
        ":9:5: error: ipAddr: 10.0.0.21 on eth0 is taken already, by host 'b-1' in line 5\n"
    );
    EXPECT_EQ(
        addressWarnings( add + "  - { at: 3, hosts: b-1, set: { ipAddr: 10.0.0.21 } }\n" ),
        ":9:41: error: ipAddr: 10.0.0.21 on eth0 is taken already, by host 'new' in line 8\n"
    );
}

TEST( EventAddresses, AddressThatTwoHaveIsTakenWhenOneGoes ) {
    EXPECT_EQ(
        addressWarnings( "  - { at: 1, hosts: c, set: { ipAddr: 10.0.0.9, macAddr: '02:00:00:00:00:09' } }\n"
                         "  - { at: 2, hosts: c, set: { deviceName: eth0 } }\n"
                         "  - { at: 3, hosts: b-1, set: { ipAddr: 10.0.0.9 } }\n"
                         "  - { at: 4, hosts: b-1, set: { ipAddr: 10.0.0.8 } }\n"
                         "  - { at: 5, hosts: b-2, set: { ipAddr: 10.0.0.9 } }\n" ),
        ":10:41: error: ipAddr: 10.0.0.9 on eth0 is taken already, by host 'c' in line 6\n"
        ":12:41: error: ipAddr: 10.0.0.9 on eth0 is taken already, by host 'c' in line 6\n"
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
        ":4:5: error: group 239.1.1.2: a record of its 3 sources is larger than the mtu; a change of filter "
        "mode is never reported whole, and after a general query the report is sent again and again without "
        "a pause, past later queries too\n"
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
