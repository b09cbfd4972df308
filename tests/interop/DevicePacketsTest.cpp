#include <chrono>
#include <thread>

#include "platform/kiv/Clock.h"
#include "platform/zornet/device/Burst.h"
#include "tests/interop/DeviceFixture.h"

namespace Zornet {

namespace {

constexpr U32 endMark = 0xffffffff;

class DevicePacketsTest : public CableFixture {
  protected:
    Station everyStation() { return station( EthDevPam::everyProtocol ); }
    Station ipv4Station() { return station(); }

    /// Lets the far end send a last frame and waits until `station` hears it, and with it all that came
    /// before.
    bool hearsOut( Station const& station ) {
        farEnd().send( igmpFrame( endMark ) );
        return eventually( [&] {
            return !station.heard().empty() && markOf( station.heard().back() ) == endMark;
        } );
    }
    bool farEndHears( std::size_t frames ) {
        return eventually( [&] { return farEnd().heard().size() >= frames; } );
    }
};

/// A tag of every VLAN from 0 to 4095, with every priority and both values of the drop bit among them.
std::vector<Tag>
everyTag() {
    std::vector<Tag> tags;
    for ( U32 vlan = 0; vlan < 4096; ++vlan ) {
        tags.push_back( { static_cast<U16>( vlan | ( vlan * 7 % 16 ) << 12 ) } );
    }
    return tags;
}

} // namespace

TEST_F( DevicePacketsTest, FramesComeInUnchanged ) {
    Station const every = everyStation();
    Station const ipv4 = ipv4Station();
    farEnd().send( igmpFrame( 1 ) );
    ASSERT_TRUE( hearsOut( ipv4 ) );
    EXPECT_EQ( ipv4.heard().front(), igmpFrame( 1 ) );
    EXPECT_EQ( every.heard().front(), igmpFrame( 1 ) );
}

TEST_F( DevicePacketsTest, FramesGoOutUnchanged ) {
    Station const station = ipv4Station();
    station.send( igmpFrame( 1 ) );
    ASSERT_TRUE( farEndHears( 1 ) );
    EXPECT_EQ( farEnd().heard(), std::vector<Frame>{ igmpFrame( 1 ) } );
}

TEST_F( DevicePacketsTest, EveryTagComesInAsItWas ) {
    Station const station = everyStation();
    std::vector<Frame> frames;
    for ( Tag const& tag : everyTag() ) {
        frames.push_back( igmpFrame( tag.control, { tag } ) );
        farEnd().send( frames.back() );
    }
    ASSERT_TRUE( hearsOut( station ) );
    frames.push_back( igmpFrame( endMark ) );
    EXPECT_TRUE( station.heard() == frames );
}

TEST_F( DevicePacketsTest, EveryTagGoesOutAsItIs ) {
    Station const station = everyStation();
    std::vector<Frame> frames;
    for ( Tag const& tag : everyTag() ) {
        frames.push_back( igmpFrame( tag.control, { tag } ) );
        station.send( frames.back() );
    }
    ASSERT_TRUE( farEndHears( frames.size() ) );
    EXPECT_TRUE( farEnd().heard() == frames );
}

TEST_F( DevicePacketsTest, DoubleTagComesInWithBoth ) {
    Station const station = everyStation();
    for ( U16 outer : { U16{ ETH_P_8021Q }, U16{ ETH_P_8021AD } } ) {
        Frame const frame = igmpFrame( 1, { { 0x6064, outer }, { 0xa0c8, ETH_P_8021Q } } );
        station.listener->frames.clear();
        farEnd().send( frame );
        ASSERT_TRUE( hearsOut( station ) );
        EXPECT_EQ( station.heard().front(), frame );
    }
}

TEST_F( DevicePacketsTest, DoubleTagGoesOutWithBoth ) {
    Station const station = everyStation();
    Frame const frame = igmpFrame( 1, { { 0x6064, ETH_P_8021AD }, { 0xa0c8, ETH_P_8021Q } } );
    station.send( frame );
    ASSERT_TRUE( farEndHears( 1 ) );
    EXPECT_EQ( farEnd().heard().front(), frame );
}

TEST_F( DevicePacketsTest, UntaggedStationHearsNoTaggedFrame ) {
    Station const station = ipv4Station();
    farEnd().send( igmpFrame( 1, { { 100 } } ) );
    farEnd().send( igmpFrame( 2, { { 0 } } ) );
    farEnd().send( igmpFrame( 3, { { 0xe000 } } ) );
    farEnd().send( igmpFrame( 4, { { 100, ETH_P_8021AD } } ) );
    ASSERT_TRUE( hearsOut( station ) );
    EXPECT_EQ( station.heard().size(), 1U );
}

TEST_F( DevicePacketsTest, NobodyHearsWhatThisProcessSends ) {
    Station const sender = ipv4Station();
    Station const neighbour = everyStation();
    sender.send( igmpFrame( 1 ) );
    ASSERT_TRUE( farEndHears( 1 ) );
    ASSERT_TRUE( hearsOut( neighbour ) );
    EXPECT_EQ( neighbour.heard().size(), 1U );
    EXPECT_EQ( sender.heard().size(), 1U );
}

TEST_F( DevicePacketsTest, NothingButIgmpReachesTheProcess ) {
    Station const station = everyStation();
    Frame other = igmpFrame( 2 );
    other[12] = 0x86; // some other protocol than IPv4
    Frame triple = igmpFrame( 3, { { 1 }, { 2 }, { 3 } } );
    for ( U32 i = 0; i < 1000; ++i ) {
        farEnd().send( ipFrame( IPPROTO_UDP, i ) );
        farEnd().send( ipFrame( IPPROTO_UDP, i, { { 100 } } ) );
        farEnd().send( ipFrame( IPPROTO_UDP, i, { { 100 }, { 200 } } ) );
        farEnd().send( other );
        farEnd().send( triple );
    }
    ASSERT_TRUE( hearsOut( station ) );
    EXPECT_EQ( station.pam->readableCount(), 1U );
}

TEST_F( DevicePacketsTest, MalformedIgmpIsHeard ) {
    Station const station = ipv4Station();
    Frame longHeader = igmpFrame( 1 );
    longHeader[14] = 0x4f;
    Frame fragment = igmpFrame( 2 );
    fragment[20] = 0x20;
    Frame truncated = igmpFrame( 3 );
    truncated.resize( 24 );
    for ( Frame const& frame : { longHeader, fragment, truncated } ) {
        farEnd().send( frame );
    }
    ASSERT_TRUE( hearsOut( station ) );
    ASSERT_EQ( station.heard().size(), 4U );
    EXPECT_EQ( station.heard()[0], longHeader );
    EXPECT_EQ( station.heard()[1], fragment );
    EXPECT_EQ( station.heard()[2], truncated );
}

TEST_F( DevicePacketsTest, BurstComesInWholeAndInOrder ) {
    Station const station = ipv4Station();
    constexpr U32 burst = 10000;
    for ( U32 mark = 0; mark < burst; ++mark ) {
        farEnd().send( igmpFrame( mark ) );
    }
    ASSERT_TRUE( hearsOut( station ) );
    ASSERT_EQ( station.heard().size(), burst + 1 );
    for ( U32 mark = 0; mark < burst; ++mark ) {
        ASSERT_EQ( markOf( station.heard()[mark] ), mark );
    }
    EXPECT_EQ( station.pam->rxErrors(), 0U );
}

TEST_F( DevicePacketsTest, BurstGoesOutWholeAndInOrder ) {
    std::vector<Station> const stations{ ipv4Station(), everyStation(), ipv4Station() };
    constexpr U32 burst = 10000;
    for ( U32 mark = 0; mark < burst; ++mark ) {
        stations[mark % stations.size()].send( igmpFrame( mark ) );
    }
    ASSERT_TRUE( farEndHears( burst ) );
    for ( U32 mark = 0; mark < burst; ++mark ) {
        ASSERT_EQ( markOf( farEnd().heard()[mark] ), mark );
    }
    for ( Station const& station : stations ) {
        EXPECT_EQ( station.pam->txDrops() + station.pam->txErrors(), 0U );
    }
}

TEST_F( DevicePacketsTest, FullRingCountsWhatItLost ) {
    Station const station = ipv4Station();
    constexpr U32 burst = 40000;
    for ( U32 mark = 0; mark < burst; ++mark ) {
        farEnd().send( igmpFrame( mark ) );
    }
    ASSERT_TRUE( eventually( [&] { return station.heard().size() + station.pam->rxErrors() >= burst; } ) );
    EXPECT_GT( station.pam->rxErrors(), 0U );
    EXPECT_EQ( station.heard().size() + station.pam->rxErrors(), burst );
    EXPECT_TRUE( hearsOut( station ) );
}

TEST_F( DevicePacketsTest, SlowReaderLeavesTheLoopItsTurns ) {
    class Thinker : public Pam::Notifiee {
      public:
        explicit Thinker( Kiv::Ptr<Pam> const& pam ) : Notifiee( pam ) { isRegisteredNotifieeIs( true ); }
        void onReadableCount() override {
            using Clock = std::chrono::steady_clock; // ours stands still while a frame is handed over
            for ( auto const end = Clock::now() + std::chrono::microseconds( 500 ); Clock::now() < end; ) {
            }
        }
    };
    Station const station = ipv4Station();
    Kiv::Ptr<Thinker> const thinker( new Thinker( station.pam ) );
    for ( U32 mark = 0; mark < 100; ++mark ) {
        farEnd().send( igmpFrame( mark ) );
    }
    ASSERT_TRUE( eventually( [&] { return !station.heard().empty(); } ) );
    EXPECT_LT( station.heard().size(), 10U );
    EXPECT_TRUE( hearsOut( station ) );
    EXPECT_EQ( station.heard().size(), 101U );
}

TEST_F( DevicePacketsTest, FrameLeavesWithTheTurn ) {
    Station const station = ipv4Station();
    station.send( igmpFrame( 1 ) );
    EXPECT_TRUE( farEnd().heard().empty() );
    Kiv::defaultActivity()->activitySm().runOnce();
    EXPECT_EQ( farEnd().heard().size(), 1U );
}

/// It may leave beside the loop, which does not turn here.
TEST_F( DevicePacketsTest, FullBurstLeavesAtOnce ) {
    Station const station = ipv4Station();
    for ( U32 mark = 0; mark < Burst::capacity + 1; ++mark ) {
        station.send( igmpFrame( mark ) );
    }
    Kiv::Seconds const end = Kiv::now() + 10.0;
    while ( farEnd().heard().size() < Burst::capacity && Kiv::now() < end ) {
        std::this_thread::yield();
    }
    EXPECT_EQ( farEnd().heard().size(), Burst::capacity );
    EXPECT_TRUE( farEndHears( Burst::capacity + 1 ) );
}

TEST_F( DevicePacketsTest, ClosingSendsWhatWaits ) {
    Station const station = ipv4Station();
    station.send( igmpFrame( 1 ) );
    station.pam->deviceOpenIs( false );
    EXPECT_EQ( farEnd().heard().size(), 1U );
}

TEST_F( DevicePacketsTest, ClosingOneOfTwoLeavesItsFramesInTheirOrder ) {
    Station const first = ipv4Station();
    Station const second = ipv4Station();
    first.send( igmpFrame( 1 ) );
    second.send( igmpFrame( 2 ) );
    first.pam->deviceOpenIs( false );
    ASSERT_TRUE( farEndHears( 2 ) );
    EXPECT_EQ( markOf( farEnd().heard()[0] ), 1U );
    EXPECT_EQ( markOf( farEnd().heard()[1] ), 2U );
}

TEST_F( DevicePacketsTest, FrameThatTheLinkRefusesIsItsSendersError ) {
    Station const careless = ipv4Station();
    Station const careful = ipv4Station();
    Frame tooLong = igmpFrame( 1 );
    tooLong.resize( 2000 );
    careful.send( igmpFrame( 1 ) );
    careless.send( tooLong );
    careful.send( igmpFrame( 2 ) );
    ASSERT_TRUE( farEndHears( 2 ) );
    EXPECT_EQ( careless.pam->txErrors(), 1U );
    EXPECT_EQ( careful.pam->txErrors(), 0U );
    EXPECT_EQ( markOf( farEnd().heard()[1] ), 2U );
}

TEST_F( DevicePacketsTest, DeviceTakesAllMulticastWhileOpen ) {
    Station const station = ipv4Station();
    Station const another = everyStation();
    EXPECT_NE( nearNs().ip( "-d link show near0" ).find( "allmulti 1 " ), std::string::npos );
    station.pam->deviceOpenIs( false );
    another.pam->deviceOpenIs( false );
    EXPECT_NE( nearNs().ip( "-d link show near0" ).find( "allmulti 0 " ), std::string::npos );
}

TEST_F( DevicePacketsTest, OneSocketHearsForAllStations ) {
    std::vector<Station> stations;
    for ( int i = 0; i < 100; ++i ) {
        stations.push_back( i % 2 == 0 ? ipv4Station() : everyStation() );
    }
    std::string const hearing = nearNs().run( "grep -c ' 0003 ' /proc/net/packet" ); // of every protocol
    EXPECT_EQ( hearing, "1\n" );
    stations.clear();
}

TEST_F( DevicePacketsTest, ReaderMayCloseAllInMidBurst ) {
    class Closer : public Pam::Notifiee {
      public:
        explicit Closer( Kiv::Ptr<EthDevPam> const& pam ) : Notifiee( pam ), pam_( pam ) {
            isRegisteredNotifieeIs( true );
        }
        void onReadableCount() override { pam_->deviceOpenIs( false ); }

      private:
        Kiv::Ptr<EthDevPam> pam_;
    };
    Station const station = ipv4Station();
    Kiv::Ptr<Closer> const closer( new Closer( station.pam ) );
    for ( U32 mark = 0; mark < 100; ++mark ) {
        farEnd().send( igmpFrame( mark ) );
    }
    ASSERT_TRUE( eventually( [&] { return !station.pam->deviceOpen(); } ) );
    EXPECT_EQ( station.heard().size(), 1U );
}

} // namespace Zornet
