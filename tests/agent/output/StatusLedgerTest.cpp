#include "agent/output/StatusLedger.h"

#include <gmock/gmock.h>

#include "tests/agent/HostsBench.h"

namespace Agent {

namespace {

using Status = Igmp::IgmpHostStatus;

class StatusLedgerTest : public HostsBench {
  protected:
    StatusLedgerTest() {
        hostsAre( "hosts:\n"
                  "  - { name: a, igmpVersion: 2, deviceName: eth0, groups: [ 239.1.1.1 ] }\n"
                  "  - { name: b, igmpVersion: 3, deviceName: eth1, ns: blue }\n" );
    }
    U64 counted( char const* device ) {
        return ledger_.balance().at( device ).counter( Status::attrV2LeavesSent );
    }
};

TEST_F( StatusLedgerTest, EveryCounterOfTheStatusIsInTheBooks ) {
    EXPECT_EQ( StatusLedger::counterRows().size(), 14U );
}

TEST_F( StatusLedgerTest, HostsAreCountedByDeviceAndVersionInForce ) {
    StatusLedger::Accounts const& accounts = ledger_.balance();
    EXPECT_THAT( accounts.at( "eth0" ).hostsByVersion, ::testing::ElementsAre( 0, 0, 1, 0 ) );
    EXPECT_THAT( accounts.at( "blue/eth1" ).hostsByVersion, ::testing::ElementsAre( 0, 0, 0, 1 ) );
    EXPECT_EQ( accounts.at( "eth0" ).groups, 1U );
    EXPECT_EQ( ledger_.total().hosts, 2U );
}

TEST_F( StatusLedgerTest, CountsAreSums ) {
    status( "a" ).v2LeavesSentInc( 3 );
    status( "b" ).v2LeavesSentInc( 4 );
    EXPECT_EQ( counted( "eth0" ), 3U );
    EXPECT_EQ( counted( "blue/eth1" ), 4U );
    EXPECT_EQ( ledger_.total().counter( Status::attrV2LeavesSent ), 7U );
}

TEST_F( StatusLedgerTest, BalanceCountsNothingTwice ) {
    status( "a" ).v2LeavesSentInc( 3 );
    counted( "eth0" );
    EXPECT_EQ( counted( "eth0" ), 3U );
}

TEST_F( StatusLedgerTest, WhatADisabledHostCountedStays ) {
    status( "a" ).v2LeavesSentInc( 3 );
    host( "a" ).enabledIs( false );
    EXPECT_EQ( counted( "eth0" ), 3U );
    EXPECT_EQ( ledger_.total().hosts, 1U );
    host( "a" ).enabledIs( true );
    status( "a" ).v2LeavesSentInc( 2 );
    EXPECT_EQ( counted( "eth0" ), 5U );
}

TEST_F( StatusLedgerTest, WhatADeletedHostCountedStays ) {
    status( "a" ).v2LeavesSentInc( 3 );
    emulation_.hostDir().igmpHostDel( "a" );
    EXPECT_EQ( counted( "eth0" ), 3U );
    EXPECT_EQ( ledger_.total().groups, 0U );
}

TEST_F( StatusLedgerTest, HostThatMovesCountsWhereItIs ) {
    status( "a" ).v2LeavesSentInc( 3 );
    ledger_.balance();
    host( "a" ).deviceNameIs( "eth2" );
    host( "a" ).intfConfigVersionIs( 7 );
    ledger_.balance();
    status( "a" ).v2LeavesSentInc( 1 );
    EXPECT_EQ( counted( "eth0" ), 3U );
    EXPECT_EQ( counted( "eth2" ), 1U );
    EXPECT_EQ( ledger_.balance().at( "eth0" ).hosts, 0U );
}

TEST_F( StatusLedgerTest, CounterThatWrapsGoesOn ) {
    status( "a" ).v2LeavesSentIs( 0xffffffff );
    ledger_.balance();
    status( "a" ).v2LeavesSentInc( 2 );
    EXPECT_EQ( counted( "eth0" ), 0x100000001U );
}

TEST_F( StatusLedgerTest, HostsThatWereThereBeforeAreInTheBooks ) {
    status( "a" ).v2LeavesSentInc( 3 );
    StatusLedger later( emulation_ );
    EXPECT_EQ( later.balance().at( "eth0" ).counter( Status::attrV2LeavesSent ), 3U );
}

} // namespace

} // namespace Agent
