#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpV3GroupRecord;
using Zornet::IpAddr;

constexpr char threeHosts[] = R"(
hosts:
  - name: rx
    count: 3
    ipAddr: 10.0.0.11
    macAddr: 02:00:00:00:00:11
    deviceName: veth1
    ns: blue
    igmpVersion: 3
    groups:
      - { multicastAddr: 239.1.1.1, filterMode: exclude }
      - { multicastAddr: 239.1.2.1, filterMode: include, count: 10, sources: [10.9.9.1, 10.9.9.2] }
)";

TEST( ScenarioReader, SettingsOfAHostAreReadByName ) {
    HostSpec const host = scenarioOf( threeHosts ).hosts.at( 0 );
    EXPECT_EQ( host.name, "rx" );
    EXPECT_EQ( host.count, 3U );
    EXPECT_EQ( host.settings.value<IpAddr>( IgmpHost::attrIpAddr ), IpAddr( "10.0.0.11" ) );
    EXPECT_EQ( host.settings.value<Kiv::String8>( IgmpHost::attrDeviceName ), "veth1" );
    EXPECT_EQ( host.settings.value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion ), Igmp::igmpVersion3 );
}

TEST( ScenarioReader, WhatIsNotSetHasTheDefaultOfTheModel ) {
    HostSpec const host = scenarioOf( threeHosts ).hosts.at( 0 );
    EXPECT_EQ( host.settings.find( IgmpHost::attrMtu ), nullptr );
    EXPECT_EQ( host.settings.value<U32>( IgmpHost::attrMtu ), 1514U );
}

TEST( ScenarioReader, GroupsAreReadWithModeSourcesAndCount ) {
    auto const groups = scenarioOf( threeHosts ).hosts.at( 0 ).groups;
    ASSERT_EQ( groups.size(), 2U );
    auto const mode =
        groups[0].settings.value<IgmpV3GroupRecord::FilterMode>( IgmpV3GroupRecord::attrFilterMode );
    EXPECT_EQ( mode, IgmpV3GroupRecord::exclude );
    EXPECT_EQ( groups[1].groups.highest(), IpAddr( "239.1.2.10" ) );
    EXPECT_EQ( textOf( groups[1].sources ), "10.9.9.1 10.9.9.2" );
}

TEST( ScenarioReader, JsonIsTakenToo ) {
    Scenario const scenario = scenarioOf( R"({"hosts": [{"name": "a", "mtu": 600, "tagged": true}]})" );
    EXPECT_EQ( scenario.hosts.at( 0 ).settings.value<U32>( IgmpHost::attrMtu ), 600U );
    EXPECT_TRUE( scenario.hosts.at( 0 ).settings.value<bool>( IgmpHost::attrTagged ) );
}

TEST( ScenarioReader, VersionIsTakenByNameToo ) {
    Scenario const scenario = scenarioOf( "hosts: [ { name: a, igmpVersion: igmpVersion1 } ]" );
    auto const version =
        scenario.hosts.at( 0 ).settings.value<Igmp::IgmpVersion>( IgmpHost::attrIgmpVersion );
    EXPECT_EQ( version, Igmp::igmpVersion1 );
}

TEST( ScenarioReader, InfinityIsTakenAsYamlWritesIt ) {
    Scenario const scenario = scenarioOf( "hosts: [ { name: a, v1RouterPresentTimeout: .inf } ]" );
    EXPECT_EQ(
        scenario.hosts.at( 0 ).settings.value<double>( IgmpHost::attrV1RouterPresentTimeout ), Kiv::never
    );
}

/// Every writable scalar of a host is a key, and no other attribute is.
TEST( ScenarioReader, KeysAreTheWritableScalarsOfAHost ) {
    for ( Kiv::Attribute const& row : IgmpHost::attributes() ) {
        std::string const name = row.name;
        bool const expected = row.kind == Kiv::AttributeKind::scalar && name != "externalPam";
        std::string text = expected ? row.defaultText : "1";
        if ( text.empty() || text.find( ':' ) != std::string::npos ) {
            text = "'" + text + "'";
        }
        std::string const errors = errorsOf( "hosts: [ { name: a, " + name + ": " + text + " } ]" );
        EXPECT_EQ( errors.empty(), expected ) << name << ": " << errors;
    }
}

TEST( ScenarioReader, NumberInQuotesIsAText ) {
    EXPECT_EQ(
        errorsOf( "hosts: [ { name: '5', ns: '7', mtu: '900', robustness: 'x' } ]" ),
        ":1:37: error: mtu: expected no quotes, found '900' in quotes\n"
        ":1:56: error: robustness: expected a whole number from 0 to 4294967295, found 'x'\n"
    );
}

TEST( ScenarioReader, HostsStepByOne ) {
    HostSpec const host = scenarioOf( threeHosts ).hosts.at( 0 );
    EXPECT_EQ( host.hostName( 0 ), "rx-1" );
    EXPECT_EQ( host.hostName( 2 ), "rx-3" );
    EXPECT_EQ( host.ipAddr( 2 ), IpAddr( "10.0.0.13" ) );
    EXPECT_EQ( host.macAddr( 2 ), Zornet::EthAddr( "02:00:00:00:00:13" ) );
}

TEST( ScenarioReader, StepsCarryOverTheBytes ) {
    HostSpec const host =
        scenarioOf( "hosts: [ { name: a, count: 2, ipAddr: 10.0.255.255, macAddr: '02:00:00:ff:ff:ff' } ]" )
            .hosts.at( 0 );
    EXPECT_EQ( host.ipAddr( 1 ), IpAddr( "10.1.0.0" ) );
    EXPECT_EQ( host.macAddr( 1 ), Zornet::EthAddr( "02:00:01:00:00:00" ) );
}

TEST( ScenarioReader, AddressesThatAreNotSetDoNotStep ) {
    HostSpec const host = scenarioOf( "hosts: [ { name: a, count: 2 } ]" ).hosts.at( 0 );
    EXPECT_EQ( host.ipAddr( 1 ), IpAddr() );
    EXPECT_EQ( host.macAddr( 1 ), Zornet::EthAddr() );
}

TEST( ScenarioReader, VlansStepByTheirStep ) {
    HostSpec const host =
        scenarioOf( "hosts: [ { name: a, count: 3, tagged: true, vlanId: 100, vlanStep: 10 } ]" )
            .hosts.at( 0 );
    EXPECT_EQ( host.vlanId( 0 ), 100U );
    EXPECT_EQ( host.vlanId( 2 ), 120U );
}

TEST( ScenarioReader, SingleHostBearsTheNameItself ) {
    EXPECT_EQ( scenarioOf( "hosts: [ { name: a } ]" ).hosts.at( 0 ).hostName( 0 ), "a" );
}

struct Fault {
    char const* text;
    char const* errors;
};

void
PrintTo( Fault const& fault, std::ostream* out ) {
    *out << fault.text;
}

/// One wrong text for each kind of error, with all that is said of it.
class ScenarioFaults : public ::testing::TestWithParam<Fault> {};

TEST_P( ScenarioFaults, AreToldWithPlaceFindingAndExpectation ) {
    EXPECT_EQ( errorsOf( GetParam().text ), GetParam().errors );
}

constexpr char allHostKeys[] =
    ":1:20: error: unknown key 'frobnicate' in a host; expected one of name, count, groups, vlanStep, "
    "configVersion, ipAddr, macAddr, intfConfigVersion, intfId, ns, deviceName, vlanId, tagged, useMux, "
    "enableRouterAlert, blocked, direction, enabled, igmpVersion, igmpVersionForced, processV3GroupChange, "
    "mtu, robustness, v1RouterPresentTimeout, v2RouterPresentTimeout, v1MaxResponseTime, "
    "unsolicitedReportInterval, enablePeriodicReport\n";

INSTANTIATE_TEST_SUITE_P(
    Keys, ScenarioFaults,
    ::testing::Values(
        Fault{ "hosts: [ { name: a, ipAdr: 1 } ]",
               ":1:21: error: unknown key 'ipAdr' in a host; did you mean 'ipAddr'?\n" },
        Fault{ "hosts: [ {name: a, frobnicate: 1 } ]", allHostKeys },
        Fault{ "hosts: [ { name: a } ]\nhost: 1",
               ":2:1: error: unknown key 'host' in a scenario; did you mean 'hosts'?\n" },
        Fault{ "hosts:\n  - name: a\n    groups:\n      - multicastAddr: 239.1.1.1\n        source: []",
               ":5:9: error: unknown key 'source' in a group; did you mean 'sources'?\n" },
        Fault{ "hosts: [ { name: a, [1]: 2 } ]", ":1:21: error: expected a key of a host, found a list\n" },
        Fault{ "hosts: [ { ipAddr: 10.0.0.1 } ]", ":1:10: error: missing key 'name' in a host\n" },
        Fault{ "hosts: [ { name: a, groups: [ { count: 2 } ] } ]",
               ":1:31: error: missing key 'multicastAddr' in a group\n" },
        Fault{
            "{ frobnicate: 1 }",
            ":1:3: error: unknown key 'frobnicate' in a scenario; expected one of hosts, defaults, events, "
            "expect, duration, seed, shard, querier, $schema\n" },
        Fault{ "{}", ": error: expected at least one host, found none\n" },
        Fault{ "hosts: [ { name: a } ]\ndefaults: { mtuu: 9 }",
               ":2:13: error: unknown key 'mtuu' in the defaults of hosts; did you mean 'mtu'?\n" },
        Fault{ "hosts:\n  - name: a\n    mtu: 9000\n    mtu: 1500",
               ":4:5: error: key 'mtu' is there already, in line 3\n" }
    )
);

INSTANTIATE_TEST_SUITE_P(
    Types, ScenarioFaults,
    ::testing::Values(
        Fault{ "", ":1:1: error: scenario: expected a map that describes a scenario, found nothing\n" },
        Fault{ "- a", ":1:1: error: scenario: expected a map that describes a scenario, found a list\n" },
        Fault{ "hosts: 5", ":1:8: error: hosts: expected a list, found '5'\n" },
        Fault{ "hosts:", ":1:1: error: hosts: expected a list, found nothing\n" },
        Fault{ "hosts: [ rx ]", ":1:10: error: hosts: expected a map that describes a host, found 'rx'\n" },
        Fault{ "hosts: []", ":1:8: error: expected at least one host, found none\n" },
        Fault{ "hosts: [ { name: a, ipAddr: [ 10.0.0.1 ] } ]",
               ":1:29: error: ipAddr: expected a single value, found a list\n" },
        Fault{ "hosts: [ { name: a, ns: { b: c } } ]",
               ":1:25: error: ns: expected a single value, found a map\n" },
        Fault{ "hosts: [ { name: a, ns: ~ } ]",
               ":1:21: error: ns: expected a single value, found nothing\n" },
        Fault{ "hosts: [ { name: a, tagged: yes } ]",
               ":1:29: error: tagged: expected true or false, found 'yes'\n" },
        Fault{ "hosts: [ { name: a, mtu: big } ]",
               ":1:26: error: mtu: expected a whole number from 0 to 4294967295, found 'big'\n" },
        Fault{ "hosts: [ { name: a, unsolicitedReportInterval: soon } ]",
               ":1:48: error: unsolicitedReportInterval: expected a number, found 'soon'\n" },
        Fault{ "hosts: [ { name: '' } ]", ":1:18: error: name: expected a name, found ''\n" },
        Fault{ "hosts: [ { name: [ a ] } ]", ":1:18: error: name: expected a single value, found a list\n" },
        Fault{ "hosts: [ { name: a, groups: ~ } ]",
               ":1:21: error: groups: expected a single value, found nothing\n" },
        Fault{ "hosts: [ { name: a, groups: [ [ 239.1.1.1 ] ] } ]",
               ":1:31: error: groups: expected a single value, found a list\n" },
        Fault{ "hosts: [ { name: a } ]\nseed: -1",
               ":2:7: error: seed: expected a whole number from 0, found '-1'\n" },
        Fault{ "hosts: [ { name: a } ]\nduration: 0",
               ":2:11: error: duration: expected a number of seconds above 0, found '0'\n" },
        Fault{ "hosts: [ { name: a } ]\nshard: 3/2",
               ":2:8: error: shard: expected K/N, the K-th of N shares, such as 1/4, found '3/2'\n" }
    )
);

INSTANTIATE_TEST_SUITE_P(
    Ranges, ScenarioFaults,
    ::testing::Values(
        Fault{ "hosts: [ { name: a, ipAddr: 10.0.0.300 } ]",
               ":1:29: error: ipAddr: expected an IPv4 address such as 10.0.0.1, found '10.0.0.300'\n" },
        Fault{ "hosts: [ { name: a, macAddr: '02:00' } ]",
               ":1:30: error: macAddr: expected an Ethernet address such as 02:00:00:00:00:01, found "
               "'02:00'\n" },
        Fault{ "hosts: [ { name: a, igmpVersion: 4 } ]",
               ":1:34: error: igmpVersion: expected an IGMP version: 0 to 3 or igmpVersion1, igmpVersion2, "
               "igmpVersion3, found '4'\n" },
        Fault{ "hosts: [ { name: a, count: 0 } ]",
               ":1:28: error: count: expected a whole number from 1 to 1000000, found '0'\n" },
        Fault{ "hosts: [ { name: a, vlanStep: 65536 } ]",
               ":1:31: error: vlanStep: expected a whole number from 0 to 65535, found '65536'\n" },
        Fault{ "hosts: [ { name: a, count: 3, ipAddr: 255.255.255.254 } ]",
               ":1:39: error: ipAddr: 3 hosts from 255.255.255.254 on run past 255.255.255.255\n" },
        Fault{ "hosts: [ { name: a, count: 2, macAddr: 'ff:ff:ff:ff:ff:ff' } ]",
               ":1:40: error: macAddr: 2 hosts from ff:ff:ff:ff:ff:ff on run past ff:ff:ff:ff:ff:ff\n" },
        Fault{ "hosts: [ { name: a, count: 3, vlanId: 65534, vlanStep: 1 } ]",
               ":1:39: error: vlanId: 3 hosts from 65534 on run past 65535\n" },
        Fault{ "hosts: [ { name: a, groups: [ { multicastAddr: 255.255.255.255, count: 2 } ] } ]",
               ":1:48: error: multicastAddr: 2 groups from 255.255.255.255 on run past 255.255.255.255\n" },
        Fault{ "hosts: [ { name: a, groups: [ { multicastAddr: 239.1.1.1, sources: [ 10.0.0.1, x ] } ] } ]",
               ":1:80: error: sources: expected an IPv4 address such as 239.1.1.1, or a range such as "
               "239.1.1.0/24 or 239.1.1.1-239.1.1.50, found 'x'\n" }
    )
);

INSTANTIATE_TEST_SUITE_P(
    Duplicates, ScenarioFaults,
    ::testing::Values(
        Fault{ "hosts:\n  - name: a\n  - name: a", ":3:11: error: host 'a' is there already, in line 2\n" },
        Fault{ "hosts:\n  - name: rx-2\n  - name: rx\n    count: 3",
               ":3:11: error: host 'rx-2' is there already, in line 2\n" },
        Fault{ "hosts:\n  - name: a\n    groups:\n      - multicastAddr: 239.1.1.1\n        count: 9\n"
               "      - multicastAddr: 239.1.1.9",
               ":6:24: error: group 239.1.1.9 is there already, in line 4\n" },
        Fault{
            "hosts: [ { name: a, groups: [ { multicastAddr: 239.1.1.1,\n sources: [ 10.0.0.1, 10.0.0.1 ] } ] "
            "} ]",
            ":2:23: error: source 10.0.0.1 is there already, in line 2\n" }
    )
);

INSTANTIATE_TEST_SUITE_P(
    Yaml, ScenarioFaults,
    ::testing::Values(
        Fault{ "hosts:\n  - name: 'a", ":2:13: error: not YAML: illegal EOF in scalar\n" },
        Fault{ "hosts: [ { name: a } ]\n---\nhosts: []",
               ":2:1: error: expected one document, found a second one\n" },
        Fault{ "{ hosts: [] }\n, found", ":2:1: error: expected one document, found a second one\n" },
        Fault{ "hosts: *unknown", ":1:8: error: not YAML: the referenced anchor is not defined\n" }
    )
);

TEST( ScenarioReader, BrokenJsonIsToldWhereItEnds ) {
    auto const told = []( std::string const& text ) {
        Diagnostics errors;
        readScenarioText( "s.json", text, errors );
        return linesOf( errors );
    };
    EXPECT_EQ(
        told( "{ \"hosts\": [ { \"name\": \"a\" } ]\n  \"seed\": 5 }\n" ),
        ":2:8: error: not JSON: while parsing object - unexpected string literal; expected '}'\n"
    );
    EXPECT_EQ(
        told( "{\n  \"hosts\": [ { \"name\": \"a\" }\n" ),
        ":3:1: error: not JSON: while parsing array - unexpected end of input; expected ']'\n"
    );
    EXPECT_EQ(
        told( "{ \"duration\": 1e999,\n  \"hosts\": [\n" ),
        ":3:1: error: not YAML: end of sequence flow not found\n"
    );
    EXPECT_EQ( told( "# YAML's comment\nhosts: [ { name: a } ]\n" ), "" );
}

TEST( ScenarioReader, NamespaceNameThatIsTooLongIsToldWithItsValue ) {
    std::string const name( 151, 'n' );
    EXPECT_EQ(
        errorsOf( "hosts: [ { name: a, ns: " + name + " } ]" ),
        ":1:25: error: ns: NamespaceName::bytes > 150 not allowed, found '" + name + "'\n"
    );
}

TEST( ScenarioReader, DefaultsGoToHostsThatDoNotSetThemThemselves ) {
    auto const hosts =
        scenarioOf( "hosts: [ { name: a }, { name: b, mtu: 900 } ]\ndefaults: { mtu: 600 }" ).hosts;
    EXPECT_EQ( hosts[0].settings.value<U32>( IgmpHost::attrMtu ), 600U );
    EXPECT_EQ( hosts[1].settings.value<U32>( IgmpHost::attrMtu ), 900U );
}

TEST( ScenarioReader, KeysOfTheWholeAreKept ) {
    Scenario const scenario = scenarioOf( "hosts: [ { name: a } ]\nseed: 7\nduration: 2.5\nshard: 2/3" );
    EXPECT_EQ( scenario.seed, 7U );
    EXPECT_EQ( scenario.duration, 2.5 );
    EXPECT_EQ( scenario.shard.number, 2U );
    EXPECT_EQ( scenario.shard.shards, 3U );
}

TEST( ScenarioReader, GroupWithoutAFilterModeIsJoined ) {
    auto const groups = scenarioOf( "hosts: [ { name: a, groups: [ 239.1.1.1, { multicastAddr: 239.1.1.2 }, "
                                    "{ multicastAddr: 239.1.1.3, sources: 10.0.0.1 } ] } ]" )
                            .hosts.at( 0 )
                            .groups;
    std::vector<IgmpV3GroupRecord::FilterMode> modes;
    for ( GroupSpec const& group : groups ) {
        modes.push_back(
            group.settings.value<IgmpV3GroupRecord::FilterMode>( IgmpV3GroupRecord::attrFilterMode )
        );
    }
    EXPECT_THAT(
        modes,
        ElementsAre( IgmpV3GroupRecord::exclude, IgmpV3GroupRecord::exclude, IgmpV3GroupRecord::include )
    );
}

TEST( ScenarioReader, EveryErrorIsToldInTheOrderOfTheFile ) {
    EXPECT_EQ(
        errorsOf( "hosts:\n  - mtu: x\n    tagged: 1\n  - name: b\n    cuont: 2" ),
        ":2:5: error: missing key 'name' in a host\n"
        ":2:10: error: mtu: expected a whole number from 0 to 4294967295, found 'x'\n"
        ":3:13: error: tagged: expected true or false, found '1'\n"
        ":5:5: error: unknown key 'cuont' in a host; did you mean 'count'?\n"
    );
}

TEST( ScenarioReader, DeepNestingIsAnErrorAndNotACrash ) {
    EXPECT_EQ(
        errorsOf( std::string( 100000, '[' ) ).find( "nested too deeply" ), strlen( ":1:1: error: " )
    );
}

} // namespace

} // namespace Agent
