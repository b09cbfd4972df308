#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

/// A host that nothing is to be said of, with room for one more setting.
std::string
hostWith( std::string const& settings ) {
    return "hosts:\n"
           "  - { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, igmpVersion: "
           "3,\n"
           "      " +
           settings + " }\n";
}

std::string
groupWith( std::string const& settings ) {
    return hostWith( "groups: [ { " + settings + " } ]" );
}

TEST( Warnings, OrdinaryScenarioHasNone ) {
    EXPECT_EQ( warningsOf( hostWith( "mtu: 1500" ) ), "" );
    EXPECT_EQ(
        warningsOf( groupWith( "multicastAddr: 239.1.1.1, filterMode: exclude, sources: [ 10.0.0.9 ]" ) ), ""
    );
}

struct Regret {
    char const* setting;
    char const* warning;
};

void
PrintTo( Regret const& regret, std::ostream* out ) {
    *out << regret.setting;
}

/// The texts of the warnings of what ends the process.
std::vector<std::string>
endsOf( std::string const& text ) {
    Diagnostics const warnings = scenarioWarnings( scenarioOf( text ) );
    std::vector<std::string> texts;
    for ( Diagnostic const& warning : warnings.entries() ) {
        if ( warning.endsProcess ) {
            texts.push_back( warning.text );
        }
    }
    return texts;
}

/// Warnings of an end of the process say so in these words, and no others do.
void
expectMarkedAsSaid( std::string const& text, std::string const& warnings ) {
    auto const said = warnings.find( " the process" ) != std::string::npos ? 1U : 0U;
    EXPECT_EQ( endsOf( text ).size(), said );
}

class HostRegrets : public ::testing::TestWithParam<Regret> {};

TEST_P( HostRegrets, AreToldAtTheSetting ) {
    EXPECT_EQ( warningsOf( hostWith( GetParam().setting ) ), GetParam().warning );
}

TEST_P( HostRegrets, AreMarkedWhereTheyEndTheProcess ) {
    expectMarkedAsSaid( hostWith( GetParam().setting ), GetParam().warning );
}

INSTANTIATE_TEST_SUITE_P(
    Settings, HostRegrets,
    ::testing::Values(
        Regret{ "robustness: 0",
                ":3:19: error: robustness: 0 ends the process when sources change in version 3\n" },
        Regret{ "robustness: 256",
                ":3:19: error: robustness: 256 ends the process when sources change in version 3\n" },
        Regret{
            "robustness: 300",
            ":3:19: error: robustness: 300 is above 255; changes of sources are reported only 44 times\n" },
        Regret{ "mtu: 57",
                ":3:12: error: mtu: below 58, headers and a record with a source, a report ends the "
                "process\n" },
        Regret{ "mtu: 65536", ":3:12: error: mtu: above 65535 the room left in a packet is reckoned wrongly, "
                              "and close to 2^32 the process ends\n" },
        Regret{
            "igmpVersionForced: true",
            ":3:26: error: igmpVersionForced: with the host held at version 3, a version 2 query for one of "
            "its groups ends the process\n" },
        Regret{
            "v2RouterPresentTimeout: inf",
            ":3:31: error: v2RouterPresentTimeout: infinity holds the host; then, at version 3, a version 2 "
            "query for one of its groups ends the process\n" },
        Regret{
            "enablePeriodicReport: true",
            ":3:29: error: enablePeriodicReport: without unsolicitedReportInterval reports follow each other "
            "without a pause\n" },
        Regret{ "v1RouterPresentTimeout: -1",
                ":3:31: error: v1RouterPresentTimeout: below 0 no time passes\n" },
        Regret{ "unsolicitedReportInterval: -0.5",
                ":3:34: error: unsolicitedReportInterval: below 0 no time passes\n" },
        Regret{
            "blocked: true",
            ":3:16: error: blocked: frames that arrive meanwhile wait, and the host then lags behind by as "
            "many until it is bound anew; with an answer pending as it is blocked, a version 3 host answers "
            "no query later until it is disabled and enabled\n" },
        Regret{
            "direction: ingress",
            ":3:18: error: direction: with ingress a version 3 host drops its answers, and answers no query "
            "later until it is disabled and enabled\n" },
        Regret{ "v1RouterPresentTimeout: inf",
                ":3:31: error: v1RouterPresentTimeout: infinity holds the host; then, at version 3, a "
                "version 2 query for one of its groups ends the process\n" },
        Regret{ "robustness: 0, groups: 239.1.1.1",
                ":3:19: error: robustness: 0 ends the process when sources change in version 3\n"
                ":3:19: error: robustness: 0 tells neither join nor leave of a group in EXCLUDE mode in "
                "version 3\n" },
        Regret{ "enablePeriodicReport: true, unsolicitedReportInterval: 5, mtu: 74, groups: "
                "239.1.1.1-239.1.1.4",
                ":3:29: error: enablePeriodicReport: in version 3 the stream never gets past one packet; of "
                "the groups, 4 in all, the others are told to queriers alone\n" },
        Regret{ "intfId: port", ":3:15: error: intfId has no effect without tagged and useMux\n" },
        Regret{ "useMux: true", ":3:15: error: useMux has no effect without tagged\n" },
        Regret{ "vlanId: 5", ":3:15: error: vlanId has no effect without tagged\n" },
        Regret{
            "tagged: true, vlanId: 4095",
            ":3:29: error: vlanId: 4095 is no VLAN of 1 to 4094; the host sends with tag 4095 and may hear "
            "nothing\n" },
        Regret{
            "tagged: true, vlanId: 4196",
            ":3:29: error: vlanId: 4196 is no VLAN of 1 to 4094; the host sends with tag 100 and may hear "
            "nothing\n" },
        Regret{ "intfConfigVersion: 0", ":3:26: error: intfConfigVersion: at 0 the host opens no device\n" },
        Regret{ "processV3GroupChange: false, groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude } ]",
                ":3:29: error: processV3GroupChange: false joins and leaves no group, and removing one "
                "meanwhile can end the process\n" }
    )
);

class GroupRegrets : public ::testing::TestWithParam<Regret> {};

TEST_P( GroupRegrets, AreToldAtTheGroup ) {
    EXPECT_EQ(
        warningsOf( groupWith( GetParam().setting ) ),
        std::string( ":3:34: error: group " ) + GetParam().warning
    );
}

TEST_P( GroupRegrets, AreMarkedWhereTheyEndTheProcess ) {
    expectMarkedAsSaid( groupWith( GetParam().setting ), GetParam().warning );
}

INSTANTIATE_TEST_SUITE_P(
    Settings, GroupRegrets,
    ::testing::Values(
        Regret{ "multicastAddr: 10.1.1.1, filterMode: exclude",
                "10.1.1.1: outside 224.0.0.0/4 there are no multicast groups\n" },
        Regret{ "multicastAddr: 239.255.255.255, filterMode: exclude, count: 2",
                "240.0.0.0: outside 224.0.0.0/4 there are no multicast groups\n" },
        Regret{ "multicastAddr: 239.255.255.200, filterMode: exclude, count: 1000000, step: 100",
                "240.0.0.44: outside 224.0.0.0/4 there are no multicast groups\n" },
        Regret{ "multicastAddr: 232.1.1.1",
                "232.1.1.1: routers take a join of 232.0.0.0/8 for named sources alone (RFC 4604)\n" },
        Regret{ "multicastAddr: 239.1.1.1, sources: 239.1.1.1",
                "239.1.1.1: a multicast address, or 0.0.0.0, is no source of packets\n" },
        Regret{ "multicastAddr: 224.0.0.5, filterMode: exclude",
                "224.0.0.5: routers and snooping switches do not keep track of 224.0.0.0/24 (RFC 4541)\n" },
        Regret{ "multicastAddr: 239.1.1.1, filterMode: include",
                "239.1.1.1: filterMode include without sources joins nothing\n" },
        Regret{ "multicastAddr: 239.1.1.1, filterMode: ALLOW_NEW_SOURCES",
                "239.1.1.1: a filterMode other than include and exclude ends the process in version 3\n" },
        Regret{ "multicastAddr: 239.1.1.1, filterMode: exclude, replicate: true",
                "239.1.1.1: replicate makes no copies with a replicateNumber below 2\n" },
        Regret{
            "multicastAddr: 255.255.255.255, filterMode: exclude, replicate: true, replicateNumber: 2",
            "255.255.255.255: outside 224.0.0.0/4 there are no multicast groups\n:3:34: error: group "
            "255.255.255.255: its copies run past 255.255.255.255, which deletes every group of the host\n" },
        Regret{ "multicastAddr: 239.1.1.1, filterMode: exclude, replicate: true, replicateNumber: 5 }, { "
                "multicastAddr: 239.1.1.6, filterMode: exclude",
                "239.1.1.1: replicate deletes every group of the host that is not one of its copies\n" }
    )
);

TEST( Warnings, NameThatIsAPatternIsTold ) {
    EXPECT_THAT(
        warningsOf(
            "hosts: [ { name: 'rx*', ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: a } ]"
        ),
        ::testing::HasSubstr( ":1:18: error: name: 'rx*' is a pattern too; where no host of just this name "
                              "is found, it means others that fit it\n" )
    );
    EXPECT_EQ(
        warningsOf( "hosts: [ { name: 'rx]', ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: a } "
                    "]" ),
        ""
    );
}

TEST( Warnings, SumOverTheHostsOfOneShareIsTold ) {
    std::string const scenario = "hosts: [ { name: rx, count: 3, ipAddr: 10.0.0.1, macAddr: "
                                 "'02:00:00:00:00:01', deviceName: a } ]\n"
                                 "expect: [ { v2ReportsSent: 3, total: true }, { v2ReportsSent: 1 } ]\n";
    EXPECT_EQ( warningsOf( scenario ), "" );
    EXPECT_EQ(
        warningsOf( scenario + "shard: 1/2\n" ),
        ":2:11: error: total: each share sums up its own hosts alone\n"
    );
}

TEST( Warnings, WhatIsNoRegretIsNotTold ) {
    for ( char const* const settings :
          { "enablePeriodicReport: true, unsolicitedReportInterval: 5, mtu: 78, groups: 239.1.1.1-239.1.1.4",
            "robustness: 255, groups: 239.1.1.1", "mtu: 58", "processV3GroupChange: false",
            "igmpVersionForced: false, v2RouterPresentTimeout: 400",
            "tagged: true, useMux: true, intfId: port, vlanId: 4094" } ) {
        EXPECT_EQ( warningsOf( hostWith( settings ) ), "" ) << settings;
    }
}

/// A host of version 2, with room for one more setting.
std::string
olderHostWith( std::string const& settings ) {
    return "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: e, " + settings +
           " } ]";
}

TEST( Warnings, WhatConcernsVersion3AloneIsNotToldOfOlderHosts ) {
    for ( char const* const settings :
          { "igmpVersionForced: true", "v2RouterPresentTimeout: inf", "direction: ingress",
            "enablePeriodicReport: true, unsolicitedReportInterval: 5, mtu: 58, groups: "
            "239.1.1.1-239.1.1.4" } ) {
        EXPECT_EQ( warningsOf( olderHostWith( settings ) ), "" ) << settings;
    }
}

TEST( Warnings, BlockedHostOfAnOlderVersionLagsBehindToo ) {
    EXPECT_EQ(
        warningsOf( olderHostWith( "blocked: true" ) ),
        ":1:93: error: blocked: frames that arrive meanwhile wait, and the host then lags behind by as many "
        "until it is bound anew\n"
    );
}

TEST( Warnings, HostWithoutAddressesOrDeviceIsTold ) {
    EXPECT_EQ(
        warningsOf( "hosts: [ { name: a } ]" ),
        ":1:18: error: without ipAddr the host sends from 0.0.0.0\n"
        ":1:18: error: without macAddr the host sends from 00:00:00:00:00:00, and switches drop its frames\n"
        ":1:18: error: without deviceName the host is on no wire\n"
    );
}

TEST( Warnings, AddressesThatAreNoSourcesAreTold ) {
    EXPECT_EQ(
        warningsOf( "hosts: [ { name: a, ipAddr: 239.1.1.1, macAddr: '01:00:5e:00:00:01', deviceName: e } ]"
        ),
        ":1:29: error: ipAddr: a multicast address is no source of packets\n"
        ":1:49: error: macAddr: a group address is no source of frames, and switches drop them\n"
    );
}

TEST( Warnings, DeviceNameThatNoneCanHaveIsTold ) {
    EXPECT_EQ(
        warningsOf( "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: "
                    "sixteen-bytes-xy } ]" ),
        ":1:81: error: deviceName: no device has a name of more than 15 bytes\n"
    );
}

TEST( Warnings, OfADefaultAreToldOnce ) {
    EXPECT_EQ(
        warningsOf(
            "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01' }, { name: b, ipAddr: "
            "10.0.0.2, macAddr: '02:00:00:00:00:02' } ]\ndefaults: { deviceName: e, robustness: 0 }"
        ),
        ":2:40: error: robustness: 0 ends the process when sources change in version 3\n"
    );
}

TEST( Warnings, ShareWithoutHostsIsTold ) {
    EXPECT_EQ(
        warningsOf( hostWith( "mtu: 1500" ) + "shard: 2/2" ), ": error: shard: share 2 of 2 has no hosts\n"
    );
}

TEST( Warnings, VersionThatIsNoneIsTold ) {
    EXPECT_EQ(
        warningsOf( "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: e, "
                    "igmpVersion: 0 } ]" ),
        ":1:97: error: igmpVersion: 0 is no version of the protocol\n"
    );
}

TEST( Warnings, SourcesBeforeVersion3AreTold ) {
    EXPECT_EQ(
        warningsOf(
            "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: e, groups: "
            "[ { multicastAddr: 239.1.1.1, sources: [ 10.0.0.9 ] } ] } ]"
        ),
        ":1:111: error: group 239.1.1.1: before version 3 a host joins a group for every source; sources "
        "have no "
        "effect\n"
    );
}

TEST( Warnings, ExpectationBehindTheEndIsTold ) {
    std::string const host = "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', "
                             "deviceName: eth0 } ]\n";
    std::string const expectations = "expect:\n"
                                     "  - { v2ReportsSent: 0 }\n"
                                     "  - { at: 100, within: 5, v2ReportsSent: 0 }\n"
                                     "  - { at: 100.5, v2ReportsSent: 0 }\n";
    EXPECT_EQ( warningsOf( host + expectations ), "" );
    EXPECT_EQ(
        warningsOf( host + expectations + "duration: 100\n" ),
        ":5:5: error: at: 100.5 s does not come; the duration is 100 s\n"
    );
}

TEST( Warnings, RecordThatIsLargerThanThePacketIsTold ) {
    char const* const sources =
        "multicastAddr: 239.1.1.1, sources: [ 10.0.0.1, 10.0.0.2, 10.0.0.3 ] } ], mtu: ";
    std::string const fits = hostWith( std::string( "groups: [ { " ) + sources + "66" );
    std::string const tooLarge = hostWith( std::string( "groups: [ { " ) + sources + "65" );
    EXPECT_EQ( warningsOf( fits ), "" );
    EXPECT_EQ(
        warningsOf( tooLarge ),
        ":3:34: error: group 239.1.1.1: a record of its 3 sources is larger than the mtu; a change of filter "
        "mode is never reported whole, and after a general query the report is sent again and again without "
        "a pause, past later queries too\n"
    );
}

constexpr char sharedHosts[] = R"(hosts:
  - { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0,
      tagged: true, useMux: true, intfId: port, vlanId: 5 }
  - { name: b, ipAddr: 10.0.0.2, macAddr: '02:00:00:00:00:02', deviceName: )";

TEST( Warnings, TwoHostsOfOneInterfaceInOneVlanAreTold ) {
    EXPECT_EQ(
        warningsOf(
            std::string( sharedHosts ) + "eth0,\n tagged: true, useMux: true, intfId: port, vlanId: 5 }"
        ),
        ":5:52: error: useMux: of the hosts of one interface in one VLAN only the last hears; VLAN 5 on "
        "interface "
        "'port' is taken already, by host 'a' in line 2\n"
    );
}

TEST( Warnings, TwoHostsOfOneVlanOnTwoInterfacesAreFine ) {
    EXPECT_EQ(
        warningsOf(
            std::string( sharedHosts ) + "eth0, tagged: true, useMux: true, intfId: two, vlanId: 5 }"
        ),
        ""
    );
}

TEST( Warnings, LaterHostOfAnInterfaceOnAnotherDeviceIsTold ) {
    EXPECT_EQ(
        warningsOf(
            std::string( sharedHosts ) + "eth1, tagged: true, useMux: true, intfId: port, vlanId: 6 }"
        ),
        ":4:76: error: useMux: interface 'port' is on eth0, which its first host opens, host 'a' in line 2\n"
    );
}

TEST( Warnings, HostsOfOneEntryInOneVlanAreToldOnce ) {
    EXPECT_EQ(
        warningsOf(
            "hosts: [ { name: a, count: 9, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: e,\n "
            "tagged: true, useMux: true, vlanId: 7 } ]"
        ),
        ":2:38: error: useMux: of the hosts of one interface in one VLAN only the last hears; VLAN 7 on "
        "interface "
        "'' is taken already, by host 'a-1' in line 1\n"
    );
}

constexpr char twoAddresses[] = R"(hosts:
  - { name: a, count: 9, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0 }
  - { name: b, ipAddr: 10.0.0.9, macAddr: '02:00:00:00:00:09', deviceName: )";

TEST( Warnings, TwoHostsOfOneAddressOnOneLinkAreTold ) {
    EXPECT_EQ(
        warningsOf( std::string( twoAddresses ) + "eth0 }" ),
        ":3:24: error: ipAddr: 10.0.0.9 on eth0 is taken already, by host 'a-9' in line 2\n"
        ":3:43: error: macAddr: 02:00:00:00:00:09 on eth0 is taken already, by host 'a-9' in line 2\n"
    );
}

TEST( Warnings, OneAddressOnTwoLinksIsFine ) {
    EXPECT_EQ( warningsOf( std::string( twoAddresses ) + "eth1 }" ), "" );
    EXPECT_EQ( warningsOf( std::string( twoAddresses ) + "eth0, ns: blue }" ), "" );
    EXPECT_EQ( warningsOf( std::string( twoAddresses ) + "eth0, tagged: true, vlanId: 7 }" ), "" );
}

} // namespace

} // namespace Agent
