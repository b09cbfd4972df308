/// More than a device or a moment can take: order is kept, and what is lost is counted where it came from.

#include <algorithm>
#include <map>

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IpHdr.h"
#include "tests/support/HostTest.h"

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpHostSm;
using Lab::Bytes;
using Zornet::IpAddr;
using Zornet::U32;

constexpr char const* joinedGroup = "239.1.1.1";

/// A device with room for so many frames and no more.
class NarrowDevice : public Zornet::Device {
  public:
    NarrowDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) : Device( ns, name ) {}

    bool send( Zornet::EthDevPam const&, std::span<Zornet::U8 const> frame ) override {
        if ( room == 0 ) {
            return false;
        }
        --room;
        senders.push_back( sourceOf( frame ) );
        return true;
    }
    void hear( Bytes const& frame ) { deliver( frame ); }

    std::size_t room = 1'000'000;
    std::vector<IpAddr> senders; ///< of the frames taken, by their source address

  private:
    static IpAddr sourceOf( std::span<Zornet::U8 const> frame ) {
        return reinterpret_cast<Zornet::IpHdr const*>( frame.data() + sizeof( Zornet::EthHdr ) )->src();
    }
};

class NarrowProvider : public Zornet::DeviceProvider {
  protected:
    Kiv::Ptr<Zornet::Device> newDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) override {
        return new NarrowDevice( ns, name );
    }
};

/// Enabled version 2 hosts in one group on a narrow device, at rest.
class OverloadTest : public Support::HostTest {
  protected:
    void hostsInGroup( std::size_t count, bool answersAtOnce = false ) {
        for ( std::size_t i = 0; i < count; ++i ) {
            std::string const address = "10.0.1." + std::to_string( i );
            IgmpHost& member = addHost( address.c_str(), address.c_str() );
            addresses.emplace_back( address.c_str() );
            member.igmpVersionIs( Igmp::igmpVersion2 );
            member.igmpVersionForcedIs( answersAtOnce );
            member.v1MaxResponseTimeIs( answersAtOnce ? 0 : 100 );
            member.enabledIs( true );
            auto const record = member.v3groupIs( IpAddr( joinedGroup ) );
            record->filterModeIs( Igmp::IgmpV3GroupRecord::exclude );
            record->versionIs( 1 );
        }
        runFor( 20.0 );
        narrow().senders.clear();
    }
    NarrowDevice& narrow() {
        return static_cast<NarrowDevice&>( *narrowProvider.device( Zornet::NamespaceName(), "eth0" ) );
    }
    void hearQueryHere( Zornet::U8 code ) {
        auto const query = Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr() );
        narrow().hear( Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( "224.0.0.1" ), query ) );
    }
    IgmpHostSm& machine( IpAddr const& address ) { return sm( Zornet::valueToStrep( address ).charPtr() ); }
    U32 dropsOf( IpAddr const& address ) { return machine( address ).txPam()->txDrops(); }

    NarrowProvider narrowProvider;
    Zornet::DeviceProviderScope narrowScope{ narrowProvider };
    std::vector<IpAddr> addresses;
};

TEST_F( OverloadTest, FullDeviceKeepsTheOrderAndCountsDropsAtTheirSenders ) {
    hostsInGroup( 5, true );
    narrow().room = 3;
    hearQueryHere( 0 );
    settle();
    EXPECT_EQ( narrow().senders, std::vector<IpAddr>( addresses.begin(), addresses.begin() + 3 ) );
    std::vector<U32> drops;
    for ( IpAddr const& address : addresses ) {
        drops.push_back( dropsOf( address ) );
    }
    EXPECT_EQ( drops, ( std::vector<U32>{ 0, 0, 0, 1, 1 } ) );
}

TEST_F( OverloadTest, RoomAgainLetsEveryHostAnswerTheNextQuery ) {
    hostsInGroup( 5, true );
    narrow().room = 0;
    hearQueryHere( 0 );
    settle();
    narrow().room = 100;
    hearQueryHere( 0 );
    settle();
    EXPECT_EQ( narrow().senders, addresses );
}

TEST_F( OverloadTest, ResponseTimeOfNoneIsAnsweredAtOnceInTheOrderOfTheHosts ) {
    hostsInGroup( 250, true );
    auto const asked = elapsed();
    hearQueryHere( 0 );
    settle();
    EXPECT_EQ( narrow().senders, addresses );
    EXPECT_EQ( elapsed(), asked );
}

TEST_F( OverloadTest, ClockThatJumpsADayLetsEachHostAnswerOnceInTheOrderOfItsDeadline ) {
    hostsInGroup( 250 );
    hearQueryHere( 100 );
    std::multimap<Kiv::Seconds, IpAddr> due;
    for ( IpAddr const& address : addresses ) {
        auto const timer = machine( address ).groupTimerSm( IpAddr( joinedGroup ) );
        due.emplace( timer->responseDelayRemaining(), address );
    }
    clock().advanceTo( clock().now() + 86400.0 );
    runFor( 1.0 );
    std::vector<IpAddr> inOrder;
    for ( auto const& [delay, address] : due ) {
        inOrder.push_back( address );
    }
    EXPECT_EQ( narrow().senders, inOrder );
}

} // namespace
