#include "agent/scenario/ScenarioLoader.h"

#include "agent/run/Emulation.h"
#include "tests/agent/scenario/ScenarioTexts.h"
#include "tests/support/HostTest.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Zornet::IpAddr;

/// Hosts on devices that keep what they are given to send.
class ScenarioLoader : public Support::SimulatedTest {
  protected:
    ScenarioLoader() : SimulatedTest( 0.0 ) {}

    void load( std::string const& text ) {
        scenario_ = scenarioOf( text );
        loadHosts( scenario_, dir() );
    }
    void loadAndStart( std::string const& text ) {
        load( text );
        startHosts( scenario_, dir() );
    }
    Igmp::IgmpHostDir& dir() { return emulation_.hostDir(); }
    Igmp::IgmpHostStatus& status( char const* name ) {
        return *emulation_.statusDir().igmpHostStatus( name );
    }
    IgmpHost& host( char const* name ) { return *dir().igmpHost( name ); }
    std::vector<std::string> sent( char const* device = "eth0" ) {
        std::vector<std::string> texts;
        for ( Support::SentFrame const& frame : provider_.recording( device ).sent ) {
            texts.push_back( Support::describe( frame.bytes ) );
        }
        return texts;
    }
    std::size_t openPorts() { return provider_.recording( "eth0" ).ports(); }

    Scenario scenario_;

  private:
    Support::RecordingProvider provider_{ 0.0 };
    Zornet::DeviceProviderScope scope_{ provider_ };
    Emulation emulation_{ wheel() };
};

constexpr char twoHosts[] = R"(
hosts:
  - name: rx
    count: 2
    ipAddr: 10.0.0.1
    macAddr: 02:00:00:00:00:01
    deviceName: eth0
    robustness: 3
    groups:
      - { multicastAddr: 239.1.1.1, filterMode: exclude, count: 2 }
      - { multicastAddr: 239.1.2.1, sources: [ 10.9.9.1, 10.9.9.2 ] }
)";

TEST_F( ScenarioLoader, WorkEndsWhereItIsToldTo ) {
    scenario_ = scenarioOf( "hosts: [ { name: rx, count: 9, deviceName: eth0 } ]" );
    int asked = 0;
    loadHosts( scenario_, dir(), [&]( DonePart ) { return ++asked < 5; } );
    EXPECT_EQ( dir().igmpHosts(), 5U );
    dir().igmpHostDel( "rx-2" );
    asked = 0;
    startHosts( scenario_, dir(), [&]( DonePart ) { return ++asked < 3; } );
    EXPECT_TRUE( host( "rx-3" ).enabled() );
    EXPECT_FALSE( host( "rx-4" ).enabled() );
}

TEST_F( ScenarioLoader, WorkEndsWithinAHostOfManyGroups ) {
    scenario_ = scenarioOf( "hosts: [ { name: rx, deviceName: eth0, groups: 239.0.0.0/16 } ]" );
    U64 groups = 0;
    loadHosts( scenario_, dir(), [&]( DonePart part ) {
        EXPECT_EQ( part, DonePart::group );
        return ++groups < 100;
    } );
    EXPECT_EQ( host( "rx" ).v3groups(), 100U );
}

TEST_F( ScenarioLoader, HostThatIsDeletedMeanwhileIsLeftAlone ) {
    scenario_ = scenarioOf( "hosts: [ { name: rx, count: 2, deviceName: eth0, groups: 239.0.0.0/24 } ]" );
    U64 groups = 0;
    auto const deleteFirst = [&]( DonePart part ) {
        groups += part == DonePart::group ? 1 : 0;
        if ( groups == 9 ) {
            dir().igmpHostDel( "rx-1" );
        }
        return true;
    };
    loadHosts( scenario_, dir(), deleteFirst );
    EXPECT_EQ( groups, 9U + 256U );
    EXPECT_EQ( dir().igmpHosts(), 1U );
    dir().igmpHostIs( "rx-1" );
    groups = 0;
    startHosts( scenario_, dir(), deleteFirst );
    EXPECT_TRUE( host( "rx-2" ).enabled() );
    EXPECT_EQ( groups, 9U + 256U );
}

TEST_F( ScenarioLoader, HostsGetTheirSettingsAndTheirSteps ) {
    load( twoHosts );
    EXPECT_EQ( dir().igmpHosts(), 2U );
    EXPECT_EQ( host( "rx-1" ).ipAddr(), IpAddr( "10.0.0.1" ) );
    EXPECT_EQ( host( "rx-2" ).ipAddr(), IpAddr( "10.0.0.2" ) );
    EXPECT_EQ( host( "rx-2" ).macAddr(), Zornet::EthAddr( "02:00:00:00:00:02" ) );
    EXPECT_EQ( host( "rx-2" ).deviceName(), "eth0" );
    EXPECT_EQ( host( "rx-2" ).robustness(), 3U );
}

TEST_F( ScenarioLoader, WhatIsNotNamedOfAHostThatIsThereStays ) {
    load( "hosts: [ { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', vlanId: 7, robustness: 3 } ]"
    );
    load( "hosts: [ { name: a, mtu: 1400 } ]" );
    EXPECT_EQ( host( "a" ).mtu(), 1400U );
    EXPECT_EQ( host( "a" ).ipAddr(), IpAddr( "10.0.0.1" ) );
    EXPECT_EQ( host( "a" ).macAddr(), Zornet::EthAddr( "02:00:00:00:00:01" ) );
    EXPECT_EQ( host( "a" ).vlanId(), 7U );
    EXPECT_EQ( host( "a" ).robustness(), 3U );
}

TEST_F( ScenarioLoader, VlanStepsFromTheDefaultToo ) {
    load( "hosts: [ { name: a, count: 3, vlanStep: 5, tagged: true } ]" );
    EXPECT_EQ( host( "a-1" ).vlanId(), 0U );
    EXPECT_EQ( host( "a-3" ).vlanId(), 10U );
}

TEST_F( ScenarioLoader, GroupsGetTheirRecords ) {
    load( twoHosts );
    EXPECT_EQ( host( "rx-1" ).v3groups(), 3U );
    EXPECT_EQ(
        host( "rx-1" ).v3group( IpAddr( "239.1.1.2" ) )->filterMode(), Igmp::IgmpV3GroupRecord::exclude
    );
    auto const sources = host( "rx-2" ).v3group( IpAddr( "239.1.2.1" ) )->source();
    EXPECT_EQ( sources->sourceIps(), 2U );
    EXPECT_EQ( sources->sourceIp( IpAddr( "10.9.9.2" ) ), 1U );
}

TEST_F( ScenarioLoader, ReplicationIsSetOnTheRecord ) {
    load( "hosts: [ { name: a, groups: [ { multicastAddr: 239.1.1.1, replicate: true, replicateNumber: 5 } ] "
          "} ]" );
    auto const record = host( "a" ).v3group( IpAddr( "239.1.1.1" ) );
    EXPECT_TRUE( record->replicate() );
    EXPECT_EQ( record->replicateNumber(), 5U );
}

TEST_F( ScenarioLoader, NothingHappensBeforeTheStart ) {
    load( twoHosts );
    runFor( 1.0 );
    EXPECT_EQ( openPorts(), 0U );
    EXPECT_EQ( host( "rx-1" ).configVersion(), 0U );
    EXPECT_EQ( host( "rx-1" ).v3group( IpAddr( "239.1.1.1" ) )->version(), 0U );
    EXPECT_FALSE( host( "rx-1" ).enabled() );
}

TEST_F( ScenarioLoader, StartRaisesEveryGenerationOnce ) {
    loadAndStart( twoHosts );
    EXPECT_EQ( host( "rx-2" ).configVersion(), 1U );
    EXPECT_EQ( host( "rx-2" ).intfConfigVersion(), 1U );
    EXPECT_EQ( host( "rx-2" ).v3group( IpAddr( "239.1.1.1" ) )->version(), 1U );
    EXPECT_EQ( openPorts(), 2U );
}

TEST_F( ScenarioLoader, StartJoinsEachGroupOnce ) {
    loadAndStart( "hosts: [ { name: a, deviceName: eth0, groups: [ { multicastAddr: 239.1.1.1, filterMode: "
                  "exclude } ] } ]" );
    settle();
    EXPECT_THAT( sent(), ElementsAre( "v2report 239.1.1.1" ) );
}

/// Notes the order in which a host is told of what makes its settings take effect.
class OrderWatcher : public IgmpHost::Notifiee {
  public:
    explicit OrderWatcher( Kiv::Ptr<IgmpHost> const& host ) : Notifiee( host ) {
        isRegisteredNotifieeIs( true );
    }
    void onConfigVersion() override { order.emplace_back( "configVersion" ); }
    void onIntfConfigVersion() override { order.emplace_back( "intfConfigVersion" ); }
    void onEnabled() override { order.emplace_back( "enabled" ); }

    std::vector<std::string> order;
};

TEST_F( ScenarioLoader, HostIsEnabledOnceItsTemplatesAndItsBindingAreSet ) {
    load( twoHosts );
    Kiv::Ptr<OrderWatcher> const watcher( new OrderWatcher( &host( "rx-1" ) ) );
    startHosts( scenario_, dir() );
    EXPECT_THAT( watcher->order, ElementsAre( "configVersion", "intfConfigVersion", "enabled" ) );
}

TEST_F( ScenarioLoader, HostThatIsToBeDisabledStaysSo ) {
    loadAndStart( "hosts: [ { name: a, deviceName: eth0, enabled: false } ]" );
    EXPECT_FALSE( host( "a" ).enabled() );
    EXPECT_EQ( openPorts(), 0U );
}

TEST_F( ScenarioLoader, CountersThatAreSetGetTheirNumbers ) {
    loadAndStart( "hosts: [ { name: a, configVersion: 7, intfConfigVersion: 0, deviceName: eth0 } ]" );
    EXPECT_EQ( host( "a" ).configVersion(), 7U );
    EXPECT_EQ( openPorts(), 0U );
}

TEST_F( ScenarioLoader, IntervalIsInForceFromTheStartInEveryVersion ) {
    loadAndStart(
        "hosts: [ { name: a, deviceName: eth0, igmpVersion: 1 }, { name: b, deviceName: eth0, igmpVersion: 2 "
        "},"
        " { name: c, deviceName: eth0, igmpVersion: 3 } ]\ndefaults: { unsolicitedReportInterval: 3 }"
    );
    for ( char const* const name : { "a", "b", "c" } ) {
        EXPECT_EQ( status( name ).unsolicitedReportInterval(), 3.0 ) << name;
    }
}

TEST_F( ScenarioLoader, ShareHasItsHostsAlone ) {
    load( std::string( twoHosts ) + "shard: 2/2" );
    EXPECT_EQ( dir().igmpHosts(), 1U );
    EXPECT_EQ( host( "rx-2" ).ipAddr(), IpAddr( "10.0.0.2" ) );
}

TEST_F( ScenarioLoader, TemplateMakesItsCopies ) {
    loadAndStart( "hosts: [ { name: a, deviceName: eth0, groups: [ { multicastAddr: 239.1.1.1, filterMode: "
                  "exclude, replicate: true, replicateNumber: 3 } ] } ]" );
    settle();
    EXPECT_EQ( host( "a" ).v3groups(), 3U );
    EXPECT_THAT(
        sent(),
        ::testing::UnorderedElementsAre( "v2report 239.1.1.1", "v2report 239.1.1.2", "v2report 239.1.1.3" )
    );
}

TEST_F( ScenarioLoader, GroupThatATemplateDeletesIsPassedOver ) {
    loadAndStart( "hosts: [ { name: a, deviceName: eth0, groups: [ { multicastAddr: 239.1.1.1, filterMode: "
                  "exclude, replicate: true }, { multicastAddr: 239.9.9.9, filterMode: exclude } ] } ]" );
    settle();
    EXPECT_EQ( host( "a" ).v3groups(), 1U );
}

TEST_F( ScenarioLoader, EndOfTheEmulationTakesHostsDownWithoutALeave ) {
    {
        Emulation emulation( wheel() );
        Scenario const scenario = scenarioOf( twoHosts );
        loadHosts( scenario, emulation.hostDir() );
        startHosts( scenario, emulation.hostDir() );
        EXPECT_EQ( openPorts(), 2U );
    }
    EXPECT_EQ( openPorts(), 0U );
    for ( std::string const& text : sent() ) {
        EXPECT_TRUE( text.starts_with( "v2report" ) ) << text;
    }
}

} // namespace

} // namespace Agent
