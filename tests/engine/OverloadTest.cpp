/// More than a device or a moment can take: order is kept, and what is lost is counted where it came from.

#include <malloc.h>

#include <algorithm>
#include <map>
#include <set>

#include "platform/zornet/EthHdr.h"
#include "platform/zornet/IgmpReportGroupRecordHeader.h"
#include "platform/zornet/IgmpV3ReportHdr.h"
#include "platform/zornet/IpHdr.h"
#include "tests/support/HostTest.h"

namespace {

using Igmp::IgmpHost;
using Igmp::IgmpHostSm;
using Lab::Bytes;
using Zornet::IpAddr;
using Zornet::U32;

/// The groups of every host are these, from 0 on.
IpAddr
groupNumber( std::size_t number ) {
    return IpAddr::fromHost( 0xef010101U + static_cast<U32>( number ) );
}

/// A device with room for so many frames and no more.
class NarrowDevice : public Zornet::Device {
  public:
    NarrowDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) : Device( ns, name ) {}

    bool send( Zornet::EthDevPam const&, std::span<Zornet::U8 const> frame ) override {
        if ( room == 0 ) {
            return false;
        }
        --room;
        note( reinterpret_cast<Zornet::IpHdr const*>( frame.data() + sizeof( Zornet::EthHdr ) ) );
        return true;
    }
    void forget() {
        senders.clear();
        groups.clear();
    }
    void hear( Bytes const& frame ) { deliver( frame ); }

    std::size_t room = 1'000'000;
    std::vector<IpAddr> senders; ///< of the frames taken, by their source address
    std::vector<IpAddr> groups;  ///< that these frames report, one of version 3 many

  private:
    void note( Zornet::IpHdr const* ip ) {
        senders.push_back( ip->src() );
        auto const* const igmp = reinterpret_cast<Zornet::U8 const*>( ip ) + ip->headerBytes();
        auto const* const report = reinterpret_cast<Zornet::IgmpV3ReportHdr const*>( igmp );
        if ( report->messageType() != Zornet::IgmpMessageType::v3MembershipReport ) {
            groups.push_back( ip->dst() );
            return;
        }
        auto const* at = igmp + sizeof *report;
        for ( unsigned left = report->numGroupRecords(); left != 0; --left ) {
            auto const* const record = reinterpret_cast<Zornet::IgmpReportGroupRecordHeader const*>( at );
            groups.push_back( record->mcastAddr() );
            at += record->recordBytes();
        }
    }
};

class NarrowProvider : public Zornet::DeviceProvider {
  protected:
    Kiv::Ptr<Zornet::Device> newDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) override {
        return new NarrowDevice( ns, name );
    }
};

/// Enabled hosts on a narrow device, at rest, each in the same groups.
class OverloadTest : public Support::HostTest {
  protected:
    struct Plan {
        std::size_t hosts = 1;
        Igmp::IgmpVersion version = Igmp::igmpVersion2;
        std::size_t groups = 1;
        bool answersAtOnce = false; ///< where the query gives no response time
    };

    void hostsAre( Plan const& plan ) {
        for ( std::size_t i = 0; i < plan.hosts; ++i ) {
            IpAddr const& address = addresses.emplace_back( IpAddr::fromHost( 0x0a000100U + U32( i ) ) );
            std::string const name = nameOf( address );
            IgmpHost& member = addHost( name.c_str(), name.c_str() );
            member.igmpVersionIs( plan.version );
            member.igmpVersionForcedIs( plan.answersAtOnce );
            member.v1MaxResponseTimeIs( plan.answersAtOnce ? 0 : 100 );
            member.enabledIs( true );
            for ( std::size_t g = 0; g < plan.groups; ++g ) {
                auto const record = member.v3groupIs( groupNumber( g ) );
                record->filterModeIs( Igmp::IgmpV3GroupRecord::exclude );
                record->versionIs( 1 );
            }
        }
        runFor( 700.0 ); // so long the joins of many groups are told
        narrow().forget();
    }
    static std::string nameOf( IpAddr const& address ) { return Zornet::valueToStrep( address ).charPtr(); }
    NarrowDevice& narrow() {
        return static_cast<NarrowDevice&>( *narrowProvider.device( Zornet::NamespaceName(), "eth0" ) );
    }
    void hearQueryHere( Zornet::U8 code ) {
        auto const query = Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr() );
        narrow().hear( Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( "224.0.0.1" ), query ) );
    }
    void hearV3QueryHere( Zornet::U8 code, IpAddr const& about = IpAddr() ) {
        auto const query = Lab::v3QueryMessage( about, {}, code, false, 2, 125 );
        narrow().hear( Lab::igmpFrame( IpAddr( "10.0.0.254" ), IpAddr( "224.0.0.1" ), query ) );
    }
    void jumpADay() { clock().advanceTo( clock().now() + 86400.0 ); }
    IgmpHostSm& machine( IpAddr const& address ) { return sm( nameOf( address ).c_str() ); }
    /// The groups of the first host in the order in which it answers for all of them.
    std::vector<IpAddr> groupsInOrder() {
        std::vector<IpAddr> all;
        auto const& first = host( nameOf( addresses.front() ).c_str() );
        for ( auto at = first.v3group().begin(); at; ++at ) {
            all.push_back( at->multicastAddr() );
        }
        return all;
    }
    U32 dropsOf( IpAddr const& address ) { return machine( address ).txPam()->txDrops(); }

    NarrowProvider narrowProvider;
    Zornet::DeviceProviderScope narrowScope{ narrowProvider };
    std::vector<IpAddr> addresses;
};

std::vector<IpAddr>
inOrderOf( std::multimap<Kiv::Seconds, IpAddr> const& due ) {
    std::vector<IpAddr> all;
    for ( auto const& [delay, address] : due ) {
        all.push_back( address );
    }
    return all;
}

TEST_F( OverloadTest, FullDeviceKeepsTheOrderAndCountsDropsAtTheirSenders ) {
    hostsAre( { 5, Igmp::igmpVersion2, 1, true } );
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
    hostsAre( { 5, Igmp::igmpVersion2, 1, true } );
    narrow().room = 0;
    hearQueryHere( 0 );
    settle();
    narrow().room = 100;
    hearQueryHere( 0 );
    settle();
    EXPECT_EQ( narrow().senders, addresses );
}

TEST_F( OverloadTest, ResponseTimeOfNoneIsAnsweredAtOnceInTheOrderOfTheHosts ) {
    hostsAre( { 250, Igmp::igmpVersion2, 1, true } );
    auto const asked = elapsed();
    hearQueryHere( 0 );
    settle();
    EXPECT_EQ( narrow().senders, addresses );
    EXPECT_EQ( elapsed(), asked );
}

TEST_F( OverloadTest, ClockThatJumpsADayLetsEachHostAnswerOnceInTheOrderOfItsDeadline ) {
    hostsAre( { 250 } );
    hearQueryHere( 100 );
    std::multimap<Kiv::Seconds, IpAddr> due;
    for ( IpAddr const& address : addresses ) {
        auto const timer = machine( address ).groupTimerSm( groupNumber( 0 ) );
        due.emplace( timer->responseDelayRemaining(), address );
    }
    jumpADay();
    runFor( 1.0 );
    EXPECT_EQ( narrow().senders, inOrderOf( due ) );
}

TEST_F( OverloadTest, HundredThousandAnswersDueAtOnceEachLeaveOnceInTheOrderOfTheHosts ) {
    constexpr std::size_t each = 250;
    hostsAre( { 400, Igmp::igmpVersion2, each, true } );
    hearQueryHere( 0 );
    runFor( 0.001 );
    ASSERT_EQ( narrow().senders.size(), 400 * each );
    EXPECT_TRUE( std::is_sorted( narrow().senders.begin(), narrow().senders.end() ) );
    std::set<std::pair<IpAddr, IpAddr>> different;
    for ( std::size_t i = 0; i < narrow().senders.size(); ++i ) {
        different.emplace( narrow().senders[i], narrow().groups[i] );
    }
    EXPECT_EQ( different.size(), 400 * each );
}

TEST_F( OverloadTest, ResponseTimeOfNoneIsAnsweredInVersion3InTheOrderOfTheHosts ) {
    hostsAre( { 250, Igmp::igmpVersion3, 1, true } );
    hearV3QueryHere( 0 );
    runFor( 0.001 );
    EXPECT_EQ( narrow().senders, addresses );
}

TEST_F( OverloadTest, AnswerForManyGroupsTellsEachOnceInTheirOrder ) {
    hostsAre( { 1, Igmp::igmpVersion3, 5'000, true } );
    hearV3QueryHere( 0 );
    runFor( 0.1 );
    EXPECT_GT( narrow().senders.size(), 1U );
    EXPECT_TRUE( narrow().groups == groupsInOrder() ); // too many to be printed
}

TEST_F( OverloadTest, FullDeviceLosesTheEndOfAnAnswerForManyGroupsAndCountsIt ) {
    hostsAre( { 1, Igmp::igmpVersion3, 5'000, true } );
    hearV3QueryHere( 0 );
    runFor( 0.1 );
    std::size_t const whole = narrow().senders.size();
    narrow().forget();
    narrow().room = 3;
    hearV3QueryHere( 0 );
    runFor( 100.0 );
    EXPECT_EQ( narrow().senders.size(), 3U );
    EXPECT_EQ( dropsOf( addresses.front() ), whole - 3 );
    std::vector<IpAddr> const all = groupsInOrder();
    ASSERT_LT( narrow().groups.size(), all.size() );
    EXPECT_TRUE( std::equal( narrow().groups.begin(), narrow().groups.end(), all.begin() ) );
}

TEST_F( OverloadTest, ClockThatJumpsADayLetsEachVersion3HostAnswerOnceInTheOrderOfItsDeadline ) {
    hostsAre( { 250, Igmp::igmpVersion3 } );
    hearV3QueryHere( 100 );
    std::multimap<Kiv::Seconds, IpAddr> due;
    for ( IpAddr const& address : addresses ) {
        auto const timer = machine( address ).igmpV3HostGeneralQueryTimerSm();
        due.emplace( timer->responseDelayRemaining(), address );
    }
    jumpADay();
    runFor( 1.0 );
    EXPECT_EQ( narrow().senders, inOrderOf( due ) );
}

TEST_F( OverloadTest, ClockThatJumpsADayLetsEachGroupAskedAboutBeToldOnceInTheOrderOfItsDeadline ) {
    hostsAre( { 1, Igmp::igmpVersion3, 5'000 } );
    std::multimap<Kiv::Seconds, IpAddr> due;
    for ( std::size_t g = 0; g < 5'000; ++g ) {
        hearV3QueryHere( 100, groupNumber( g ) );
        auto const timer = machine( addresses.front() ).v3GroupQueryTimerSm( groupNumber( g ) );
        due.emplace( timer->responseDelayRemaining(), groupNumber( g ) );
    }
    jumpADay();
    runFor( 1.0 );
    EXPECT_TRUE( narrow().groups == inOrderOf( due ) ); // too many to be printed
}

TEST_F( OverloadTest, QueriesWithoutEndTakeNoMemory ) {
    hostsAre( { 1, Igmp::igmpVersion3, 1'000 } );
    narrow().room = 0;
    std::size_t before = 0;
    for ( unsigned round = 0; round < 20; ++round ) {
        hearV3QueryHere( 100 );
        for ( std::size_t g = 0; g < 1'000; ++g ) {
            hearV3QueryHere( 100, groupNumber( g ) );
        }
        jumpADay();
        runFor( 20.0 );
        before = round == 1 ? mallinfo2().uordblks : before; // once all has been made that stays
    }
    EXPECT_GE( dropsOf( addresses.front() ), 20'000U );
    EXPECT_LT( mallinfo2().uordblks, before + 64 * 1024 );
}

} // namespace
