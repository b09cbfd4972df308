#include "agent/expecting/BridgeMembership.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tests/support/Namespace.h"

namespace Agent {

namespace {

/// As iproute2 prints it.
constexpr char table[] =
    R"([{"mdb":[)"
    R"({"index":9,"dev":"br0","port":"p0","grp":"239.1.1.1","state":"temp","filter_mode":"exclude",)"
    R"("source_list":[{"address":"10.9.9.3","timer":"0.00"},{"address":"10.9.9.4","timer":"7.10"}],)"
    R"("protocol":"kernel","flags":[],"timer":"8.00"},)"
    R"({"index":9,"dev":"br0","port":"p0","grp":"232.1.1.1","state":"temp","filter_mode":"include",)"
    R"("source_list":[{"address":"10.9.9.1","timer":"7.50"}],"protocol":"kernel","flags":[],"timer":"0.00"},)"
    R"({"index":9,"dev":"br0","port":"p0","grp":"232.1.1.1","src":"10.9.9.1","state":"temp",)"
    R"("filter_mode":"include","protocol":"kernel","flags":[],"timer":"0.00"},)"
    R"({"index":9,"dev":"br0","port":"p1","grp":"239.2.2.2","state":"temp","filter_mode":"exclude",)"
    R"("protocol":"kernel","flags":[],"timer":"8.00"},)"
    R"({"index":9,"dev":"br0","port":"p1","grp":"ff02::6a","state":"temp","filter_mode":"exclude",)"
    R"("protocol":"kernel","flags":[],"timer":"8.00"}],"router":{}}])";

std::string
textOf( Membership const& membership ) {
    std::ostringstream text;
    for ( auto const& [group, want] : membership ) {
        text << group << ' ' << want << '\n';
    }
    return text.str();
}

TEST( BridgeMembership, SaysWhatIsForwarded ) {
    EXPECT_EQ(
        textOf( bridgeMembershipOf( table, "" ) ), "232.1.1.1 INCLUDE {10.9.9.1}\n"
                                                   "239.1.1.1 EXCLUDE {10.9.9.3}\n"
                                                   "239.2.2.2 EXCLUDE {}\n"
    );
}

TEST( BridgeMembership, PortsCanBeToldApart ) {
    EXPECT_EQ( textOf( bridgeMembershipOf( table, "p1" ) ), "239.2.2.2 EXCLUDE {}\n" );
}

TEST( BridgeMembership, BridgeWithoutGroupsKnowsNone ) {
    EXPECT_EQ( textOf( bridgeMembershipOf( R"([{"mdb":[],"router":{}}])", "" ) ), "" );
    EXPECT_EQ( textOf( bridgeMembershipOf( "[]", "" ) ), "" );
}

TEST( BridgeMembership, OtherTextsAreRefused ) {
    EXPECT_THROW( bridgeMembershipOf( "", "" ), std::runtime_error );
    EXPECT_THROW( bridgeMembershipOf( R"([{"mdb":[{"port":"p0"}]}])", "" ), std::runtime_error );
}

/// What is expected not to be joined would hold of it for ever.
TEST( BridgeMembership, WhatCannotKnowAGroupIsTold ) {
    std::string const bridge = R"([{"ifname":"br0","linkinfo":{"info_kind":"bridge","info_data":)";
    EXPECT_EQ( reasonToKnowNothing( bridge + R"({"mcast_snooping":1}}}])" ), "" );
    EXPECT_EQ(
        reasonToKnowNothing( bridge + R"({"mcast_snooping":0}}}])" ),
        "does not snoop; of more groups than its mcast_hash_max a bridge stops snooping"
    );
    EXPECT_EQ(
        reasonToKnowNothing( R"([{"ifname":"veth1","linkinfo":{"info_kind":"veth"}}])" ), "is no bridge"
    );
    EXPECT_EQ( reasonToKnowNothing( R"([{"ifname":"eth0"}])" ), "is no bridge" );
    EXPECT_EQ( reasonToKnowNothing( "" ), "" );
}

TEST( BridgeMembership, RealBridgeThatDoesNotSnoopIsTold ) {
    if ( std::string const reason = Support::Namespace::unavailable(); !reason.empty() ) {
        GTEST_SKIP() << "needs network namespaces: " << reason;
    }
    Support::Namespace const ns( "bridge" );
    ns.ip( "link add br0 up type bridge mcast_snooping 1" );
    EXPECT_NO_THROW( bridgeMembership( { "br0", ns.name(), "" } ) );
    ns.ip( "link set br0 type bridge mcast_snooping 0" );
    EXPECT_THROW( bridgeMembership( { "br0", ns.name(), "" } ), std::runtime_error );
    EXPECT_THROW( bridgeMembership( { "lo", ns.name(), "" } ), std::runtime_error );
}

TEST( BridgeMembership, MissingBridgeIsToldAsTheCommandTellsIt ) {
    try {
        bridgeMembership( { "igmphost-none", "", "" } );
        FAIL();
    } catch ( std::runtime_error const& fault ) {
        EXPECT_THAT( fault.what(), ::testing::HasSubstr( "bridge: Cannot find" ) );
    }
}

} // namespace

} // namespace Agent
