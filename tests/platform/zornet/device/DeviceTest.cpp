#include "platform/zornet/device/Device.h"

#include <gtest/gtest.h>

#include "FakeDevice.h"
#include "tests/support/HurryingClock.h"

namespace Zornet {

namespace {

constexpr U16 typeTagged = ethType8021Q;

/// One port with its reader.
struct Port {
    Port( Kiv::String8 const& device, U16 protocol ) : pam( EthDevPamIs( device ) ) {
        pam->ethProtocolIs( protocol );
        pam->deviceOpenIs( true );
        reader = new PamReader( pam );
    }

    Kiv::Ptr<EthDevPam> pam;
    Kiv::Ptr<PamReader> reader;
};

class DeviceTest : public ::testing::Test {
  protected:
    FakeDevice& device() { return static_cast<FakeDevice&>( *provider_.device( {}, "eth0" ) ); }
    static Port ipv4Port() { return { "eth0", ethTypeIp }; }
    static Port everyPort() { return { "eth0", EthDevPam::everyProtocol }; }

  private:
    FakeProvider provider_;
    DeviceProviderScope scope_{ provider_ };
};

} // namespace

TEST_F( DeviceTest, PortOfEveryProtocolHearsEveryFrame ) {
    Port const port = everyPort();
    for ( U16 type : { U16{ ethTypeIp }, typeTagged, U16{ 0x0806 } } ) {
        device().hear( frameOf( type ) );
    }
    EXPECT_EQ( port.reader->pkts.size(), 3U );
}

TEST_F( DeviceTest, Ipv4PortHearsOnlyFramesOfThatVeryType ) {
    Port const port = ipv4Port();
    for ( U16 type : { typeTagged, U16{ 0x0806 }, U16{ ethTypeIp } } ) {
        device().hear( frameOf( type, 7 ) );
    }
    ASSERT_EQ( port.reader->pkts.size(), 1U );
    EXPECT_EQ( bytesOf( *port.reader->pkts[0] ), frameOf( ethTypeIp, 7 ) );
}

TEST_F( DeviceTest, FrameWithoutATypeIsNotIpv4 ) {
    Port const port = ipv4Port();
    device().hear( Frame( sizeof( EthHdr ) - 1, 8 ) );
    EXPECT_EQ( port.reader->signals, 0U );
}

TEST_F( DeviceTest, Ipv4PortsShareOnePacket ) {
    Port const a = ipv4Port();
    Port const b = ipv4Port();
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( a.reader->pkts.at( 0 ), b.reader->pkts.at( 0 ) );
}

/// Ten thousand hosts take milliseconds to hear a query, and all are to answer within its response time.
TEST_F( DeviceTest, FrameArrivesAtOneMomentForAllPorts ) {
    Support::HurryingClock clock;
    Kiv::ClockScope const scope( clock );
    std::vector<Port> const ports{ everyPort(), ipv4Port(), ipv4Port() };
    std::vector<Kiv::Seconds> moments;
    for ( Port const& port : ports ) {
        port.reader->onSignal = [&moments] { moments.push_back( Kiv::now() ); };
    }
    device().hear( frameOf( ethTypeIp ) );
    ASSERT_EQ( moments.size(), 3U );
    EXPECT_EQ( moments[0], moments[1] );
    EXPECT_EQ( moments[0], moments[2] );
    EXPECT_GT( Kiv::now(), moments[2] );
}

TEST_F( DeviceTest, PortsOfEveryProtocolHavePacketAndBufferOfTheirOwn ) {
    Port const a = everyPort();
    Port const b = everyPort();
    Port const c = ipv4Port();
    device().hear( frameOf( ethTypeIp ) );
    Pkt* const own = a.reader->pkts.at( 0 ).get();
    EXPECT_NE( own->sharedBuffer(), b.reader->pkts.at( 0 )->sharedBuffer() );
    EXPECT_NE( own->sharedBuffer(), c.reader->pkts.at( 0 )->sharedBuffer() );
}

TEST_F( DeviceTest, OwnPacketHasHeadRoomForATag ) {
    Port const port = everyPort();
    device().hear( frameOf( ethTypeIp ) );
    Pkt& pkt = *port.reader->pkts.at( 0 );
    auto const* const buffer = pkt.sharedBuffer().get();
    pkt.newSharedHeadData( 4 );
    EXPECT_EQ( pkt.sharedBuffer().get(), buffer );
}

TEST_F( DeviceTest, NobodyElsesDeviceHears ) {
    Port const port( "eth1", EthDevPam::everyProtocol );
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( port.reader->signals, 0U );
}

TEST_F( DeviceTest, PortsAreToldInTheOrderOfOpening ) {
    std::vector<Port> const ports{ ipv4Port(), ipv4Port(), ipv4Port() };
    ports[0].pam->deviceOpenIs( false );
    ports[0].pam->deviceOpenIs( true );
    std::vector<std::size_t> order;
    for ( std::size_t i = 0; i < ports.size(); ++i ) {
        ports[i].reader->onSignal = [&order, i] { order.push_back( i ); };
    }
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( order, ( std::vector<std::size_t>{ 1, 2, 0 } ) );
}

TEST_F( DeviceTest, PortMayCloseItselfWhenTold ) {
    Port const a = ipv4Port();
    Port const b = ipv4Port();
    a.reader->onSignal = [&] { a.pam->deviceOpenIs( false ); };
    device().hear( frameOf( ethTypeIp ) );
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( a.reader->signals, 1U );
    EXPECT_EQ( b.reader->signals, 2U );
}

TEST_F( DeviceTest, PortClosedByAnotherInMidFanOutHearsNothing ) {
    Port const a = ipv4Port();
    Port const b = ipv4Port();
    Port const c = ipv4Port();
    a.reader->onSignal = [&] { b.pam->deviceOpenIs( false ); };
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( b.reader->signals, 0U );
    EXPECT_EQ( c.reader->signals, 1U );
}

TEST_F( DeviceTest, PortMayVanishWhenTold ) {
    Port a = ipv4Port();
    Port const b = ipv4Port();
    a.reader->onSignal = [&] {
        a.reader->notifierIs( nullptr );
        a.pam = nullptr;
    };
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( device().ports(), 1U );
    EXPECT_EQ( b.reader->signals, 1U );
}

TEST_F( DeviceTest, AllPortsMayVanishInMidFanOut ) {
    std::vector<Port> ports{ everyPort(), ipv4Port(), ipv4Port(), everyPort() };
    unsigned told = 0;
    ports[0].reader->onSignal = [&] {
        ++told;
        Port const self = ports[0];
        ports.clear();
    };
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( told, 1U );
    EXPECT_EQ( device().ports(), 0U );
}

TEST_F( DeviceTest, PortOpenedInMidFanOutWaitsForTheNextFrame ) {
    Port const first = everyPort();
    std::vector<Port> late;
    first.reader->onSignal = [&] {
        late.push_back( everyPort() );
        late.push_back( ipv4Port() );
    };
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( late[0].reader->signals + late[1].reader->signals, 0U );
    first.reader->onSignal = [] {};
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( late[0].reader->signals + late[1].reader->signals, 2U );
}

TEST_F( DeviceTest, PortReopenedInMidFanOutIsNotToldTwice ) {
    Port const a = ipv4Port();
    a.reader->onSignal = [&] {
        a.pam->deviceOpenIs( false );
        a.pam->deviceOpenIs( true );
    };
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( a.reader->signals, 1U );
}

TEST_F( DeviceTest, ManyPortsOpenAndCloseInAnyOrder ) {
    std::vector<Port> ports;
    for ( int i = 0; i < 1000; ++i ) {
        ports.push_back( ipv4Port() );
    }
    for ( std::size_t i = 0; i < ports.size(); ++i ) {
        if ( i % 10 != 3 ) {
            ports[i].pam->deviceOpenIs( false );
        }
    }
    device().hear( frameOf( ethTypeIp ) );
    EXPECT_EQ( device().ports(), 100U );
    for ( std::size_t i = 0; i < ports.size(); ++i ) {
        EXPECT_EQ( ports[i].reader->signals, i % 10 == 3 ? 1U : 0U ) << i;
    }
}

TEST_F( DeviceTest, PortIsFoundByItsNumberUntilItCloses ) {
    Port const a = ipv4Port();
    Port const b = everyPort();
    U64 const number = FakeDevice::portNumber( *a.pam );
    EXPECT_EQ( device().port( number ), a.pam );
    EXPECT_EQ( device().port( FakeDevice::portNumber( *b.pam ) ), b.pam );
    a.pam->deviceOpenIs( false );
    a.pam->deviceOpenIs( true );
    EXPECT_FALSE( device().port( number ) );
}

TEST_F( DeviceTest, TellsOfItsFirstPortAndOfTheLastToGo ) {
    {
        Port const a = ipv4Port();
        Port const b = everyPort();
        EXPECT_EQ( device().firstPorts, 1 );
        a.pam->deviceOpenIs( false );
        EXPECT_EQ( device().noPorts, 0 );
        b.pam->deviceOpenIs( false );
    }
    EXPECT_EQ( device().firstPorts, 1 );
    EXPECT_EQ( device().noPorts, 1 );
}

TEST_F( DeviceTest, StoppedDeviceCountsAnErrorInEitherDirectionOnItsPorts ) {
    Port const a = ipv4Port();
    Port const b = everyPort();
    device().runningIs( false );
    device().runningIs( false );
    EXPECT_EQ( a.pam->rxErrors(), 1U );
    EXPECT_EQ( b.pam->txErrors(), 1U );
    device().runningIs( true );
    EXPECT_EQ( a.pam->rxErrors(), 1U );
}

TEST_F( DeviceTest, OpeningOnAStoppedDeviceCountsAnErrorOfItsOwn ) {
    Port const a = ipv4Port();
    device().runningIs( false );
    Port const b = ipv4Port();
    EXPECT_EQ( b.pam->rxErrors(), 1U );
    EXPECT_EQ( b.pam->txErrors(), 1U );
    EXPECT_EQ( a.pam->txErrors(), 1U );
}

TEST_F( DeviceTest, LostFramesCountOnEveryPort ) {
    Port const a = ipv4Port();
    Port const b = everyPort();
    device().rxErrorsInc( 5 );
    EXPECT_EQ( a.pam->rxErrors(), 5U );
    EXPECT_EQ( b.pam->rxErrors(), 5U );
    EXPECT_EQ( a.pam->txErrors(), 0U );
}

} // namespace Zornet
