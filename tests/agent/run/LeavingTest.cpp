#include "agent/run/Leaving.h"

#include <algorithm>

#include "tests/agent/HostsBench.h"

namespace Agent {

namespace {

struct FullDevice : Zornet::Device {
    FullDevice() : Device( Zornet::NamespaceName( "" ), "full" ) {}
    bool send( Zornet::EthDevPam const&, std::span<Zornet::U8 const> ) override { return true; }
    std::size_t framesWaiting() const override { return waiting; }
    std::size_t waiting = 3;
};

struct OneDeviceProvider : Zornet::DeviceProvider {
    OneDeviceProvider() { device( Zornet::NamespaceName( "" ), "full" ); }
    Kiv::Ptr<Zornet::Device> newDevice( Zornet::NamespaceName const&, Kiv::String8 const& ) override {
        return full;
    }
    Kiv::Ptr<FullDevice> const full{ new FullDevice };
};

class LeavingTest : public HostsBench {
  protected:
    /// Hosts with one group that have had their time to announce it.
    void joinedHostsAre( std::string const& more, std::string const& count = "1" ) {
        hostsAre(
            "hosts:\n"
            "  - { name: h, count: " +
            count + ", ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, " + more +
            ", groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude } ] }\n"
        );
        runFor( 100.0 );
        takeSent();
    }
    bool leave() { return Leaving( emulation_, wheel() ).run(); }
    std::size_t sentBy( std::string const& message ) {
        std::vector<std::string> const sent = takeSent();
        return static_cast<std::size_t>( std::count_if(
            sent.begin(), sent.end(),
            [&]( std::string const& line ) { return line.find( message ) != std::string::npos; }
        ) );
    }
};

TEST_F( LeavingTest, Version2HostsAreDoneAtOnce ) {
    joinedHostsAre( "igmpVersion: 2", "2" );
    EXPECT_TRUE( leave() );
    EXPECT_EQ( elapsed(), 100.0 );
    settle();
    EXPECT_EQ( sentBy( "leave 239.1.1.1 to 224.0.0.2" ), 2U );
}

TEST_F( LeavingTest, Version3HostsRepeatTheLeaveAsOftenAsTheirRobustnessAsks ) {
    joinedHostsAre( "igmpVersion: 3, robustness: 4", "3" );
    EXPECT_TRUE( leave() );
    EXPECT_EQ( sentBy( "v3report TO_IN 239.1.1.1 {}" ), 12U );
    EXPECT_GT( elapsed(), 100.1 );
    EXPECT_LE( elapsed(), 103.1 );
    EXPECT_EQ( host( "h-1" ).v3groups(), 0U );
}

TEST_F( LeavingTest, BlockedHostIsNotWaitedFor ) {
    joinedHostsAre( "igmpVersion: 3" );
    host( "h" ).blockedIs( true );
    EXPECT_TRUE( leave() );
    EXPECT_EQ( elapsed(), 100.0 );
}

TEST_F( LeavingTest, HostThatMayOnlyHearIsNotWaitedFor ) {
    joinedHostsAre( "igmpVersion: 3" );
    host( "h" ).directionIs( Bridging::AllowedTrafficDirection::ingress );
    EXPECT_TRUE( leave() );
    EXPECT_EQ( elapsed(), 100.0 );
}

TEST_F( LeavingTest, PeriodicReportsDoNotHoldTheEndUp ) {
    joinedHostsAre( "igmpVersion: 3, enablePeriodicReport: true, unsolicitedReportInterval: 5" );
    EXPECT_TRUE( leave() );
    EXPECT_LT( elapsed(), 115.0 );
}

TEST_F( LeavingTest, DisabledHostIsDone ) {
    joinedHostsAre( "igmpVersion: 3" );
    host( "h" ).enabledIs( false );
    EXPECT_TRUE( leave() );
    EXPECT_EQ( elapsed(), 100.0 );
}

TEST_F( LeavingTest, IsToldThatSomebodyStoppedIt ) {
    joinedHostsAre( "igmpVersion: 3" );
    Kiv::Ptr<Lab::Timer> const signal( new Lab::Timer( wheel(), [] { activity().stop(); } ) );
    signal->remainingIs( 0.01 );
    EXPECT_FALSE( leave() );
    EXPECT_LT( elapsed(), 100.1 );
}

/// A device whose queue is full for a while.
TEST_F( LeavingTest, WaitsForWhatDevicesStillHold ) {
    joinedHostsAre( "igmpVersion: 2" );
    OneDeviceProvider provider;
    Zornet::DeviceProviderScope const scope( provider );
    Kiv::Ptr<Lab::Timer> const room( new Lab::Timer( wheel(), [&] { provider.full->waiting = 0; } ) );
    room->remainingIs( 5.0 );
    EXPECT_TRUE( leave() );
    EXPECT_EQ( elapsed(), 105.0 );
}

TEST_F( LeavingTest, GreatManyHostsLeaveInSeveralTurns ) {
    joinedHostsAre( "igmpVersion: 2", "250" );
    EXPECT_TRUE( leave() );
    EXPECT_EQ( sentBy( "leave 239.1.1.1 to 224.0.0.2" ), 250U );
    EXPECT_GT( elapsed(), 100.0 );
    EXPECT_LT( elapsed(), 100.1 );
}

} // namespace

} // namespace Agent
