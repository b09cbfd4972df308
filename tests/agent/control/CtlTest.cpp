#include <algorithm>
#include <csignal>

#include "tests/agent/control/ControlledAgent.h"

namespace Agent {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Ctl : public ControlledAgent {};

TEST_F( Ctl, AddedHostsStepAsThoseOfAScenario ) {
    EXPECT_EQ( addHosts(), "3 hosts, rx-1 to rx-3: added; raised configVersion, intfConfigVersion\n" );
    Json const hosts = json( { "hosts" } );
    ASSERT_EQ( hosts.size(), 3U );
    EXPECT_EQ( hosts[2]["name"], "rx-3" );
    EXPECT_EQ( hosts[2]["ipAddr"], "10.0.0.3" );
    EXPECT_EQ( hosts[2]["macAddr"], "02:00:00:00:00:03" );
    EXPECT_EQ( hosts[2]["enabled"], true );
    EXPECT_EQ( hosts[2]["inForce"], "igmpVersion3" );
}

TEST_F( Ctl, AdditionTakesWordsAsTheyStand ) {
    addHosts( { "ns=007", "intfId=null", "mtu=0900", "tagged=true", "useMux=true", "vlanId=07", "vlanStep=1" }
    );
    Json const host = json( { "show", "rx-1" } )["rx-1"];
    EXPECT_EQ( host["ns"], "007" );
    EXPECT_EQ( host["intfId"], "null" );
    EXPECT_EQ( host["mtu"], 900 );
    EXPECT_EQ( host["tagged"], true );
    expectComplaint(
        { "add", "b", "mtu=-5" }, 2, "mtu: expected a whole number from 0 to 4294967295, found '-5'"
    );
    expectComplaint(
        { "add", "b", "deviceName=a: b, mtu: 5", "mtuu=5" }, 2,
        "unknown key 'mtuu' in a host; did you mean 'mtu'?"
    );
}

TEST_F( Ctl, AddedHostsJoinTheirGroups ) {
    addHosts( { "--group", "239.1.0.0/30", "--include", "10.9.9.1,10.9.9.2" } );
    Json const host = json( { "show", "rx-2" } )["rx-2"];
    ASSERT_EQ( host["v3group"].size(), 4U );
    EXPECT_EQ( host["v3group"][3]["multicastAddr"], "239.1.0.3" );
    EXPECT_EQ( host["v3group"][3]["source"], Json( { "10.9.9.1", "10.9.9.2" } ) );
    EXPECT_NE( host["v3group"][3]["version"], 0 );
    EXPECT_GE( host["status"]["v3StateChangeReportSent"], 1 );
}

/// So that of two controllers that add the same hosts at once each is heard.
TEST_F( Ctl, AdditionMovesCountersByAStepOfItsOwn ) {
    addHosts( { "--group", "239.1.1.1", "intfConfigVersion=9" } );
    Json const host = json( { "show", "rx-1" } )["rx-1"];
    EXPECT_GT( host["configVersion"], 1 );
    EXPECT_EQ( host["v3group"][0]["version"], host["configVersion"] );
    EXPECT_EQ( host["intfConfigVersion"], 9 );
}

TEST_F( Ctl, AdditionTellsOfTheCountersThatItRaises ) {
    EXPECT_EQ(
        addHosts( { "--group", "239.1.1.1", "intfConfigVersion=9" } ),
        "3 hosts, rx-1 to rx-3: added; raised configVersion, version of each record\n"
    );
}

TEST_F( Ctl, HostThatIsThereIsNotAddedAgain ) {
    addHosts();
    expectComplaint(
        { "add", "rx-2", "mtu=1400", "ipAddr=10.0.0.9", "macAddr=02:00:00:00:00:09", "deviceName=none0" }, 1,
        "host 'rx-2' is there already; --update sets it anew"
    );
    EXPECT_EQ( output( { "get", "rx-2", "mtu" } ), "1514\n" );
}

TEST_F( Ctl, HostThatIsThereIsUpdatedWhereThatIsAskedFor ) {
    addHosts();
    std::string const before = output( { "get", "rx-2", "configVersion" } );
    output( { "add", "rx-2", "mtu=1400", "ipAddr=10.0.0.9", "macAddr=02:00:00:00:00:09", "deviceName=none0",
              "--update" } );
    EXPECT_EQ( output( { "get", "rx-2", "mtu" } ), "1400\n" );
    EXPECT_NE( output( { "get", "rx-2", "configVersion" } ), before );
}

TEST_F( Ctl, UpdateLeavesWhatItDoesNotName ) {
    addHosts( { "vlanId=7", "tagged=true" } );
    EXPECT_EQ(
        output( { "add", "rx", "--count", "3", "--update", "robustness=3", "--group", "239.1.1.1" } ),
        "3 hosts, rx-1 to rx-3: added; raised configVersion, intfConfigVersion, version of each record\n"
    );
    Json const host = json( { "show", "rx-2" } )["rx-2"];
    EXPECT_EQ( host["robustness"], 3 );
    EXPECT_EQ( host["v3group"].size(), 1U );
    EXPECT_EQ( host["ipAddr"], "10.0.0.2" );
    EXPECT_EQ( host["macAddr"], "02:00:00:00:00:02" );
    EXPECT_EQ( host["vlanId"], 7 );
    EXPECT_EQ( host["igmpVersion"], "igmpVersion3" );
}

TEST_F( Ctl, AddThatEndsTheProcessIsRefusedUnlessForced ) {
    std::vector<std::string> words = {
        "add", "rx", "ipAddr=10.0.0.1", "macAddr=02:00:00:00:00:01", "deviceName=none0", "robustness=0"
    };
    std::string const regret = "rx: robustness: 0 ends the process when sources change in version 3";
    expectComplaint( words, 2, "refused: " + regret + "; --force does it all the same" );
    EXPECT_EQ( json( { "hosts" } ).size(), 0U );
    words.emplace_back( "--force" );
    Told const told = ctl( words );
    EXPECT_EQ( told.status, 0 );
    EXPECT_EQ( told.errors, "igmphost: warning: " + regret + "\n" );
    EXPECT_EQ( json( { "hosts" } ).size(), 1U );
}

TEST_F( Ctl, UpdateIsJudgedBesideWhatStands ) {
    addHosts();
    output( { "set", "rx-2", "igmpVersion=2", "igmpVersionForced=true" } );
    std::vector<std::string> words = { "add", "rx-2", "--update", "igmpVersion=3" };
    expectComplaint(
        words, 2,
        "refused: rx-2: igmpVersionForced: with the host held at version 3, a version 2 query for one of its "
        "groups ends the process; --force does it all the same"
    );
    EXPECT_EQ( output( { "get", "rx-2", "igmpVersion" } ), "igmpVersion2\n" );
    words.emplace_back( "--force" );
    EXPECT_EQ( ctl( words ).status, 0 );
    EXPECT_EQ( output( { "get", "rx-2", "igmpVersion" } ), "igmpVersion3\n" );
}

TEST_F( Ctl, AddIsCheckedAsAScenarioIs ) {
    expectComplaint( { "add", "rx", "mtuu=3" }, 2, "unknown key 'mtuu' in a host; did you mean 'mtu'?" );
    EXPECT_EQ( ctl( { "add", "rx", "--count", "0" } ).status, 2 );
    EXPECT_EQ( ctl( { "add", "rx", "mtu" } ).status, 2 );
    Told const warned = ctl( { "add", "rx" } );
    EXPECT_EQ( warned.status, 0 );
    EXPECT_THAT(
        warned.errors, HasSubstr( "igmphost: warning: rx: without deviceName the host is on no wire\n" )
    );
}

TEST_F( Ctl, AddressThatAnotherHostHasIsWarnedOf ) {
    addHosts();
    std::vector<std::string> const words{ "add", "b", "ipAddr=10.0.0.2", "macAddr=02:00:00:00:00:03",
                                          "deviceName=none0" };
    constexpr char ip[] =
        "igmphost: warning: b: ipAddr: 10.0.0.2 on none0 is taken already, by host 'rx-2'\n";
    constexpr char mac[] =
        "igmphost: warning: b: macAddr: 02:00:00:00:00:03 on none0 is taken already, by host 'rx-3'\n";
    EXPECT_EQ( ctl( words ).errors, std::string( ip ) + mac );
    EXPECT_EQ( ctl( { "set", "b", "mtu=1400", "--force" } ).errors, "" );
    EXPECT_EQ( ctl( { "set", "b", "macAddr=02:00:00:00:00:09" } ).errors, ip );
    EXPECT_EQ( ctl( { "set", "b", "deviceName=none1" } ).errors, "" );
    EXPECT_EQ( ctl( { "set", "b", "deviceName=none0" } ).errors, ip );
    EXPECT_EQ( ctl( { "add", "b", "--update", "tagged=true", "vlanId=5" } ).errors, "" );
    EXPECT_EQ( ctl( { "add", "b", "--update", "tagged=false", "vlanId=0" } ).errors, ip );
}

TEST_F( Ctl, HostsWithoutAddressesShareNone ) {
    ctl( { "add", "a", "deviceName=none0" } );
    EXPECT_THAT( ctl( { "add", "b", "deviceName=none0" } ).errors, Not( HasSubstr( "taken" ) ) );
    EXPECT_EQ( ctl( { "set", "a", "deviceName=none0" } ).errors, "" );
}

TEST_F( Ctl, DeletedHostsAreGone ) {
    addHosts();
    EXPECT_EQ( output( { "delete", "rx-[12]" } ), "rx-1 and rx-2: deleted\n" );
    EXPECT_EQ( json( { "hosts" } ).size(), 1U );
    EXPECT_EQ( json( { "delete", "rx-3" } )["hosts"], Json( { "rx-3" } ) );
    EXPECT_EQ( json( { "hosts" } ).size(), 0U );
}

TEST_F( Ctl, ListShowsAHostALine ) {
    addHosts();
    std::string const list = output( { "hosts" } );
    EXPECT_THAT(
        list,
        StartsWith(
            "name  enabled  igmpVersion   ipAddr    macAddr            deviceName  vlanId  in force      "
            "groups\n"
            "rx-1  true     igmpVersion3  10.0.0.1  02:00:00:00:00:01  none0       0       igmpVersion3  0\n"
        )
    );
    EXPECT_EQ( std::count( list.begin(), list.end(), '\n' ), 4 );
    EXPECT_EQ( json( { "hosts", "rx-[13]" } ).size(), 2U );
}

TEST_F( Ctl, ShowTellsEverything ) {
    addHosts( { "--group", "239.1.1.1", "--exclude", "10.9.9.1" } );
    std::string const shown = output( { "show", "rx-1" } );
    EXPECT_THAT( shown, StartsWith( "rx-1\n  configVersion" ) );
    EXPECT_THAT( shown, HasSubstr( "\n  group 239.1.1.1 MODE_IS_EXCLUDE 10.9.9.1; version " ) );
    EXPECT_THAT( shown, HasSubstr( "\n  status.v3StateChangeReportSent" ) );
}

TEST_F( Ctl, GetPrintsAValueAlone ) {
    addHosts();
    EXPECT_EQ( output( { "get", "rx-1", "ipAddr" } ), "10.0.0.1\n" );
    EXPECT_EQ( output( { "get", "rx-1", "status.igmpVersion" } ), "igmpVersion3\n" );
    EXPECT_EQ( output( { "get", "rx-1", "v2ReportsSent" } ), "0\n" );
}

TEST_F( Ctl, GetPrintsALineForEachOfMany ) {
    addHosts( { "--group", "239.1.1.1-239.1.1.2" } );
    EXPECT_EQ( output( { "get", "rx-[12]", "mtu" } ), "rx-1 mtu 1514\nrx-2 mtu 1514\n" );
    EXPECT_EQ(
        output( { "get", "rx-1", "mtu", "v3group" } ), "rx-1 mtu 1514\nrx-1 v3group 239.1.1.1, 239.1.1.2\n"
    );
    EXPECT_EQ( json( { "get", "rx-1", "mtu" } ), Json( { { "rx-1", { { "mtu", 1514 } } } } ) );
}

TEST_F( Ctl, UnknownNamesAreToldWithTheNearest ) {
    addHosts();
    expectComplaint( { "get", "rx-1", "mtuu" }, 2, "no attribute 'mtuu'; did you mean 'mtu'?" );
    expectComplaint(
        { "get", "rx-1", "status.v2ReportSent" }, 2,
        "no attribute 'status.v2ReportSent'; did you mean 'v2ReportsSent'?"
    );
    expectComplaint( { "get", "rxx-1", "mtu" }, 1, "no host 'rxx-1'; did you mean 'rx-1'?" );
    expectComplaint( { "show", "tx-*" }, 1, "no host 'tx-*'; there are 3 hosts, rx-1 to rx-3" );
}

TEST_F( Ctl, DisabledHostHasNoStatus ) {
    addHosts();
    output( { "set", "rx-1", "enabled=false" } );
    expectComplaint( { "get", "rx-1", "v2ReportsSent" }, 1, "rx-1 is not enabled, so it has no status" );
    EXPECT_EQ( json( { "show", "rx-1" } )["rx-1"]["status"], Json() );
    EXPECT_THAT( output( { "show", "rx-1" } ), HasSubstr( "  no status: the host is not enabled\n" ) );
}

TEST_F( Ctl, SetTakesEffectInPackets ) {
    addHosts();
    EXPECT_EQ( output( { "get", "rx-1", "numPacketInitialized" } ), "2\n" );
    EXPECT_EQ(
        output( { "set", "rx-1", "mtu=1400", "enableRouterAlert=false" } ),
        "rx-1: set mtu=1400, enableRouterAlert=false; raised configVersion\n"
    );
    EXPECT_EQ( output( { "get", "rx-1", "mtu" } ), "1400\n" );
    EXPECT_EQ( output( { "get", "rx-1", "numPacketInitialized" } ), "4\n" );
}

TEST_F( Ctl, SetTakesEffectInTheBinding ) {
    addHosts();
    EXPECT_EQ(
        output( { "set", "rx-1", "deviceName=none1" } ),
        "rx-1: set deviceName=none1; raised intfConfigVersion\n"
    );
    EXPECT_TRUE( agent_->waitFor( AgentProcess::errors, "device none1: no such device; waiting for it\n" ) );
}

/// One object of the same shape for each verb that changes hosts.
TEST_F( Ctl, ChangesAreToldAsJson ) {
    auto const told = []( char const* verb, Json const& hosts, Json const& objects, Json const& raised ) {
        return Json( { { "done", verb }, { "hosts", hosts }, { "objects", objects }, { "raised", raised } } );
    };
    Json const none = Json::array();
    EXPECT_EQ(
        json( { "add", "rx", "ipAddr=10.0.0.1", "macAddr=02:00:00:00:00:01", "deviceName=none0" } ),
        told( "added", { "rx" }, none, { "configVersion", "intfConfigVersion" } )
    );
    EXPECT_EQ(
        json( { "set", "rx", "mtu=1400", "vlanId=0" } ),
        told( "set", { "rx" }, { "mtu=1400", "vlanId=0" }, { "configVersion", "intfConfigVersion" } )
    );
    EXPECT_EQ(
        json( { "join", "rx", "239.1.1.1", "239.1.2.0/30" } ),
        told( "joined", { "rx" }, { "239.1.1.1", "239.1.2.0/30" }, { "version of each record" } )
    );
    EXPECT_EQ( json( { "leave", "rx", "239.1.2.*" } ), told( "left", { "rx" }, { "239.1.2.*" }, none ) );
    EXPECT_EQ( json( { "delete", "rx" } ), told( "deleted", { "rx" }, none, none ) );
}

TEST_F( Ctl, CounterThatIsSetIsNotToldAsRaised ) {
    addHosts();
    EXPECT_EQ(
        output( { "set", "rx-1", "mtu=1400", "configVersion=77" } ), "rx-1: set mtu=1400, configVersion=77\n"
    );
    EXPECT_EQ( output( { "get", "rx-1", "configVersion" } ), "77\n" );
}

TEST_F( Ctl, SetThatActsAtOnceRaisesNothing ) {
    addHosts();
    EXPECT_EQ(
        output( { "set", "rx-*", "unsolicitedReportInterval=5" } ),
        "3 hosts, rx-1 to rx-3: set unsolicitedReportInterval=5\n"
    );
    EXPECT_EQ(
        json( { "set", "rx-1", "unsolicitedReportInterval=6" } ),
        Json( { { "done", "set" },
                { "hosts", { "rx-1" } },
                { "objects", { "unsolicitedReportInterval=6" } },
                { "raised", Json::array() } } )
    );
}

TEST_F( Ctl, WrongSettingsChangeNothing ) {
    addHosts();
    Told const told = ctl( { "set", "rx-1", "mtu=1400", "mtuu=3" } );
    EXPECT_EQ(
        told.errors, "igmphost: error: a host has no attribute 'mtuu' that can be set; did you mean 'mtu'?\n"
    );
    EXPECT_EQ( told.status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "mtu=many" } ).status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "mtu" } ).status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "mtu=1", "mtu=2" } ).status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "externalPam=true" } ).status, 2 );
    EXPECT_EQ( output( { "get", "rx-1", "mtu" } ), "1514\n" );
}

TEST_F( Ctl, SettingThatEndsTheProcessIsRefusedUnlessForced ) {
    addHosts();
    expectComplaint(
        { "set", "rx-*", "robustness=0" }, 2,
        "refused: rx-1 and 2 more: robustness: 0 ends the process when sources change in version 3; --force "
        "does "
        "it all the same"
    );
    EXPECT_EQ( output( { "get", "rx-1", "robustness" } ), "2\n" );
    EXPECT_EQ( ctl( { "set", "rx-1", "igmpVersionForced=true" } ).status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "mtu=57" } ).status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "mtu=4294967295" } ).status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "v1RouterPresentTimeout=inf" } ).status, 2 );
    EXPECT_EQ( ctl( { "set", "rx-1", "robustness=0", "--force" } ).status, 0 );
    EXPECT_EQ( output( { "get", "rx-1", "robustness" } ), "0\n" );
}

TEST_F( Ctl, SettingThatIsRegrettableIsWarnedOf ) {
    addHosts();
    EXPECT_EQ(
        ctl( { "set", "rx-1", "useMux=true" } ).errors,
        "igmphost: warning: rx-1: useMux has no effect without tagged\n"
    );
    EXPECT_THAT(
        ctl( { "set", "rx-*", "ipAddr=10.0.0.7" } ).errors, HasSubstr( "ipAddr: all get the same address" )
    );
}

TEST_F( Ctl, JoinedGroupIsReported ) {
    addHosts();
    EXPECT_EQ(
        output( { "join", "rx-1", "239.1.1.1", "--include", "10.9.9.2,10.9.9.1" } ),
        "rx-1: joined 239.1.1.1; raised version of each record\n"
    );
    Json const host = json( { "show", "rx-1" } )["rx-1"];
    EXPECT_EQ( host["v3group"][0]["filterMode"], "MODE_IS_INCLUDE" );
    EXPECT_EQ( host["v3group"][0]["source"], Json( { "10.9.9.1", "10.9.9.2" } ) );
    EXPECT_NE( host["v3group"][0]["version"], 0 );
    EXPECT_GE( host["status"]["v3StateChangeReportSent"], 1 );
}

TEST_F( Ctl, JoinOfAJoinedGroupChangesItsSources ) {
    addHosts();
    output( { "join", "rx-1", "239.1.1.1", "--exclude", "10.9.9.1,10.9.9.2" } );
    Json const before = json( { "show", "rx-1" } )["rx-1"]["v3group"][0];
    output( { "join", "rx-1", "239.1.1.1", "--exclude", "10.9.9.2,10.9.9.3" } );
    Json const after = json( { "show", "rx-1" } )["rx-1"]["v3group"][0];
    EXPECT_EQ( after["source"], Json( { "10.9.9.2", "10.9.9.3" } ) );
    EXPECT_NE( before["version"], after["version"] );
    EXPECT_EQ(
        ctl( { "join", "rx-1", "239.1.1.1", "--exclude", "10.9.9.1", "--include", "10.9.9.1" } ).status, 2
    );
    EXPECT_EQ( ctl( { "join", "rx-1", "239.1.1" } ).status, 2 );
}

TEST_F( Ctl, JoinWithoutSourcesIsOneForEverySource ) {
    addHosts();
    output( { "join", "rx-*", "239.1.1.1-239.1.1.2" } );
    Json const groups = json( { "show", "rx-3" } )["rx-3"]["v3group"];
    ASSERT_EQ( groups.size(), 2U );
    EXPECT_EQ( groups[1]["filterMode"], "MODE_IS_EXCLUDE" );
    EXPECT_EQ( groups[1]["source"], Json::array() );
}

TEST_F( Ctl, JoinThatEndsTheProcessIsRefusedUnlessForced ) {
    addHosts();
    output( { "set", "rx-1", "processV3GroupChange=false" } );
    expectComplaint(
        { "join", "rx-1", "239.1.1.1" }, 2,
        "refused: rx-1: processV3GroupChange: false joins and leaves no group, and removing one meanwhile "
        "can "
        "end the process; --force does it all the same"
    );
    EXPECT_EQ( output( { "get", "rx-1", "v3group" } ), "\n" );
    EXPECT_EQ( ctl( { "join", "rx-1", "239.1.1.1", "--force" } ).status, 0 );
    EXPECT_EQ( output( { "get", "rx-1", "v3group" } ), "239.1.1.1\n" );
    EXPECT_EQ( ctl( { "leave", "rx-1", "239.1.1.1" } ).status, 2 );
    EXPECT_EQ( ctl( { "leave", "rx-1", "239.1.1.1", "--force" } ).status, 0 );
    EXPECT_EQ( output( { "get", "rx-1", "v3group" } ), "\n" );
}

TEST_F( Ctl, LeftGroupsAreGone ) {
    addHosts( { "--group", "239.1.1.0/28", "--group", "239.2.1.1" } );
    EXPECT_EQ(
        output( { "leave", "rx-*", "239.1.1.0-239.1.1.7", "239.2.*" } ),
        "3 hosts, rx-1 to rx-3: left 239.1.1.0-239.1.1.7, 239.2.*\n"
    );
    EXPECT_EQ( json( { "get", "rx-2", "v3group" } )["rx-2"]["v3group"].size(), 8U );
    expectComplaint( { "leave", "rx-1", "239.2.1.1" }, 1, "no such group on rx-1" );
}

TEST_F( Ctl, LeaveThatTheHostDoesNotTakeNoteOfIsRefused ) {
    addHosts( { "--group", "239.1.1.1" } );
    EXPECT_EQ( ctl( { "set", "rx-1", "processV3GroupChange=false", "--force" } ).status, 0 );
    expectComplaint(
        { "leave", "rx-1", "239.1.1.1" }, 2,
        "refused: rx-1: with processV3GroupChange false, removing a group can end the process; --force does "
        "it all "
        "the same"
    );
    EXPECT_EQ( output( { "leave", "rx-2", "239.1.1.1" } ), "rx-2: left 239.1.1.1\n" );
}

/// A watch in a process of its own, once it watches.
class CtlWatch : public Ctl {
  protected:
    void watch( std::vector<std::string> arguments ) {
        arguments.insert( arguments.begin(), { "ctl", path_, "watch" } );
        watch_ = std::make_unique<AgentProcess>( arguments );
        ASSERT_TRUE( watch_->waitFor( AgentProcess::errors, "igmphost: watching" ) );
    }

    std::unique_ptr<AgentProcess> watch_;
};

TEST_F( CtlWatch, TellsOfEachChangeOfTheWatchedHosts ) {
    addHosts();
    watch( { "rx-[12]", "--json", "--count", "2" } );
    output( { "set", "rx-3", "mtu=1400" } );
    output( { "set", "rx-2", "mtu=1300" } );
    EXPECT_EQ( watch_->exitStatus(), 0 );
    std::string const lines = watch_->written( AgentProcess::output );
    Json const first = Json::parse( lines.substr( 0, lines.find( '\n' ) ) );
    EXPECT_EQ( first["host"], "rx-2" );
    EXPECT_EQ( first["attribute"], "mtu" );
    EXPECT_EQ( first["value"], 1300 );
    EXPECT_GT( first["time"], 1.0e9 );
    EXPECT_THAT( lines, HasSubstr( "\"configVersion\"" ) );
}

TEST_F( CtlWatch, TellsOfHostsGroupsAndSourcesThatComeAndGo ) {
    watch( {} );
    addHosts();
    output( { "join", "rx-1", "239.1.1.1", "--exclude", "10.9.9.1" } );
    output( { "leave", "rx-1", "239.1.1.1" } );
    output( { "delete", "rx-1" } );
    EXPECT_TRUE( watch_->waitFor( AgentProcess::output, " rx-1 deleted\n" ) );
    for ( char const* const line :
          { " rx-1 added\n", " rx-1 status added\n", " rx-1/239.1.1.1 added\n",
            " rx-1/239.1.1.1 source 10.9.9.1 added\n", " rx-1/239.1.1.1 filterMode MODE_IS_EXCLUDE\n",
            " rx-1 status.v3StateChangeReportSent 1\n", " rx-1/239.1.1.1 deleted\n",
            " rx-1 status deleted\n" } ) {
        EXPECT_TRUE( watch_->waitFor( AgentProcess::output, line ) ) << line;
        EXPECT_THAT( watch_->written( AgentProcess::output ), HasSubstr( line ) );
    }
}

TEST_F( CtlWatch, DurationEndsIt ) {
    watch( { "--duration", "0.05" } );
    EXPECT_EQ( watch_->exitStatus(), 0 );
}

TEST_F( CtlWatch, SigintEndsItWell ) {
    watch( {} );
    watch_->signal( SIGINT );
    EXPECT_EQ( watch_->exitStatus(), 0 );
}

TEST_F( CtlWatch, EndOfTheAgentIsToldAndAFailure ) {
    watch( {} );
    agent_->signal( SIGTERM );
    EXPECT_EQ( agent_->exitStatus(), 0 );
    EXPECT_EQ( watch_->exitStatus(), 1 );
    EXPECT_THAT(
        watch_->written( AgentProcess::errors ),
        HasSubstr( "igmphost: error: the agent ends the connection: the agent has ended\n" )
    );
    EXPECT_FALSE( std::filesystem::exists( path_ ) );
}

TEST_F( CtlWatch, DeathOfTheAgentIsToldAndAFailure ) {
    watch( {} );
    agent_->signal( SIGKILL );
    EXPECT_EQ( watch_->exitStatus(), 1 );
    EXPECT_THAT(
        watch_->written( AgentProcess::errors ),
        HasSubstr( "igmphost: error: the connection is lost: peer closed the stream\n" )
    );
    EXPECT_EQ(
        ctl( { "hosts" } ).errors,
        "igmphost: error: no agent is reached at " + path_ + ": the agent that made this socket has ended\n"
    );
    AgentProcess next( { "run", "--control", path_ } );
    EXPECT_TRUE( next.waitFor(
        AgentProcess::errors,
        "igmphost: replaced the socket that an agent which has ended left at " + path_ + "\n"
    ) );
    next.signal( SIGTERM );
    EXPECT_EQ( next.exitStatus(), 0 );
}

} // namespace

} // namespace Agent
