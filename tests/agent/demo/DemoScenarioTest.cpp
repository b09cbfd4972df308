#include <set>

#include "agent/demo/Demo.h"
#include "tests/agent/scenario/ScenarioTexts.h"

namespace Agent {

namespace {

using Igmp::IgmpHost;
using Zornet::IpAddr;

TEST( DemoScenario, HostsHaveTheirOwnNamesAndAddresses ) {
    Scenario const scenario = demoScenario( { .hosts = 300, .groups = 1 } );
    std::set<std::string> names;
    std::set<IpAddr> addresses;
    for ( HostSpec const& host : scenario.hosts ) {
        names.insert( host.hostName( 0 ) );
        addresses.insert( host.ipAddr( 0 ) );
    }
    EXPECT_EQ( names.size(), 300U );
    EXPECT_EQ( addresses.size(), 300U );
}

TEST( DemoScenario, NeighboursShareGroups ) {
    Scenario const scenario = demoScenario( { .hosts = 2, .groups = 3 } );
    EXPECT_EQ( scenario.hosts.at( 0 ).groups.at( 0 ).groups.lowest(), IpAddr( "239.1.0.0" ) );
    EXPECT_EQ( scenario.hosts.at( 0 ).groups.at( 0 ).groups.highest(), IpAddr( "239.1.0.2" ) );
    EXPECT_EQ( scenario.hosts.at( 1 ).groups.at( 0 ).groups.lowest(), IpAddr( "239.1.0.1" ) );
}

TEST( DemoScenario, AllHostsSitOnOneDevice ) {
    for ( U32 const vlans : { 0U, 3U } ) {
        for ( HostSpec const& host : demoScenario( { .hosts = 10, .groups = 1, .vlans = vlans } ).hosts ) {
            EXPECT_EQ( host.settings.value<Kiv::String8>( IgmpHost::attrDeviceName ), "eth0" );
        }
    }
}

TEST( DemoScenario, GivesNoCauseForWarnings ) {
    for ( U32 const vlans : { 0U, 7U } ) {
        for ( auto const version : { Igmp::igmpVersion1, Igmp::igmpVersion2, Igmp::igmpVersion3 } ) {
            DemoOptions const options{ .hosts = 50, .groups = 9, .igmpVersion = version, .vlans = vlans };
            EXPECT_EQ( linesOf( scenarioWarnings( demoScenario( options ) ) ), "" );
        }
    }
}

TEST( DemoScenario, VlansAreDealtOut ) {
    Scenario const scenario = demoScenario( { .hosts = 5, .groups = 1, .vlans = 2 } );
    std::vector<U16> vlans;
    for ( HostSpec const& host : scenario.hosts ) {
        EXPECT_TRUE( host.settings.value<bool>( IgmpHost::attrTagged ) );
        EXPECT_TRUE( host.settings.value<bool>( IgmpHost::attrUseMux ) );
        vlans.push_back( host.vlanId( 0 ) );
    }
    EXPECT_THAT( vlans, ElementsAre( 1, 2, 1, 2, 1 ) );
}

TEST( DemoScenario, Version3HasBothModesWithAndWithoutSources ) {
    Scenario const scenario = demoScenario( { .hosts = 1, .groups = 3, .igmpVersion = Igmp::igmpVersion3 } );
    std::vector<std::pair<std::string, U64>> kinds;
    for ( GroupSpec const& group : scenario.hosts.at( 0 ).groups ) {
        auto const mode =
            group.settings.value<Zornet::IgmpV3GroupRecordType>( Igmp::IgmpV3GroupRecord::attrFilterMode );
        kinds.emplace_back( Zornet::stringValue( mode ).charPtr(), group.sources.count() );
    }
    EXPECT_THAT(
        kinds, ElementsAre(
                   std::pair( "MODE_IS_EXCLUDE", 0 ), std::pair( "MODE_IS_INCLUDE", 3 ),
                   std::pair( "MODE_IS_EXCLUDE", 3 )
               )
    );
}

} // namespace

} // namespace Agent
