/// Reports that come faster than a slow link and the least of send buffers take them.

#include <dirent.h>
#include <sys/socket.h>

#include "platform/zornet/device/DeviceProvider.h"
#include "tests/interop/FaultTest.h"

namespace Interop {

namespace {

/// Gives every packet socket of this process that is open by now a send buffer of that size; the kernel
/// counts its own expense for each frame into it. Returns how many there were.
unsigned
sendBuffersAre( int bytes ) {
    int const half = bytes / 2; // the kernel doubles what it is told
    unsigned count = 0;
    DIR* const folder = opendir( "/proc/self/fd" );
    while ( dirent const* const entry = readdir( folder ) ) {
        int const descriptor = std::atoi( entry->d_name );
        int domain = 0;
        socklen_t length = sizeof domain;
        if ( getsockopt( descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &length ) == 0 && domain == AF_PACKET ) {
            count += setsockopt( descriptor, SOL_SOCKET, SO_SNDBUF, &half, sizeof half ) == 0 ? 1U : 0U;
        }
    }
    closedir( folder );
    return count;
}

class SendBufferFaults : public FaultTest {
  protected:
    static constexpr unsigned count = 500;

    /// What the link holds back before it refuses, in bytes.
    void slowLinkIs( unsigned queueBytes ) {
        near_.run(
            "tc qdisc add dev near0 root tbf rate 1mbit burst 1600 limit " + std::to_string( queueBytes )
        );
    }
    /// What the machine's own load made the cable lose: the kernel drops what finds a thousand frames waiting
    /// for a processor that has no time for them. What the slow link holds it may lose later.
    U64 lostByDevices() const {
        return linkCounter( near_, "near0", "tx", "dropped" ) + linkCounter( far_, "far0", "rx", "dropped" );
    }
    /// Every host turns to other groups at the same moment, which is a burst of that many reports and as many
    /// repeats.
    void burst( IpAddr const& other ) {
        for ( std::size_t i = 0; i < hosts(); ++i ) {
            join( i, other );
        }
    }
};

TEST_F( SendBufferFaults, OfFourKibibytesHoldUpAndLoseNothing ) {
    hostsAre( count, Igmp::igmpVersion2 );
    slowLinkIs( 100'000 );
    ASSERT_GE( sendBuffersAre( 4096 ), 3U ); // one to hear, one to send, the far end's
    burst( IpAddr( "239.1.1.2" ) );
    ASSERT_TRUE( eventually( [&] { return reportsSent() == 4 * count; } ) );
    EXPECT_EQ( framesLost( 0 ), 0U );
    expectNothingLostUncounted( 0, [this] { return lostByDevices(); } );
}

TEST_F( SendBufferFaults, QueueOfTheLinkThatIsFullHoldsUpAndLosesNothing ) {
    hostsAre( count, Igmp::igmpVersion2 );
    slowLinkIs( 2'000 );
    burst( IpAddr( "239.1.1.2" ) );
    ASSERT_TRUE( eventually( [] { return Zornet::deviceProvider().framesWaiting() != 0; } ) );
    ASSERT_TRUE( eventually( [] { return Zornet::deviceProvider().framesWaiting() == 0; } ) );
    ASSERT_TRUE( eventually( [&] { return reportsSent() == 4 * count; } ) );
    EXPECT_EQ( framesLost( 0 ), 0U );
    expectNothingLostUncounted( 0, [this] { return lostByDevices(); } );
}

} // namespace

} // namespace Interop
