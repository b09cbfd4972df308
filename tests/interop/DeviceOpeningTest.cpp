#include <sys/syscall.h>
#include <unistd.h>

#include "platform/zornet/device/Device.h"
#include "tests/interop/DeviceFixture.h"
#include "tests/support/TraceCapture.h"

namespace {

struct Option {
    int level;
    int name;
    bool operator==( Option const& ) const = default;
};

/// What the kernel refuses, as it does where a privilege or memory is missing.
Option refused{};

} // namespace

extern "C" int
setsockopt( int socket, int level, int name, void const* value, socklen_t bytes ) noexcept {
    if ( Option{ level, name } == refused ) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>( syscall( SYS_setsockopt, socket, level, name, value, bytes ) );
}

namespace Zornet {

namespace {

/// A device whose kernel does not give it all that it asks for.
class DeviceOpeningTest : public CableFixture {
  protected:
    void TearDown() override { refused = {}; }

    static bool running( Station const& station ) { return station.pam->device()->running(); }
};

} // namespace

TEST_F( DeviceOpeningTest, SocketThatCannotBeSetUpIsToldAndTriedAgainWithTheLink ) {
    for ( Option const& option : {
              Option{ SOL_SOCKET, SO_ATTACH_FILTER },
              Option{ SOL_PACKET, PACKET_IGNORE_OUTGOING },
              Option{ SOL_PACKET, PACKET_VERSION },
              Option{ SOL_PACKET, PACKET_RESERVE },
              Option{ SOL_PACKET, PACKET_RX_RING },
              Option{ SOL_PACKET, PACKET_ADD_MEMBERSHIP },
          } ) {
        SCOPED_TRACE( option.name );
        Support::TraceCapture const trace( "Device", 1 );
        refused = option;
        Station const host = station();
        EXPECT_FALSE( running( host ) );
        EXPECT_TRUE( trace.contains( "cannot open a packet socket: Operation not permitted" ) );
        refused = {};
        nearNs().ip( "link set near0 down" );
        nearNs().ip( "link set near0 up" );
        EXPECT_TRUE( eventually( [&] { return running( host ); } ) );
    }
}

TEST_F( DeviceOpeningTest, SendBufferIsWhatTheKernelGivesWithoutPrivilege ) {
    refused = { SOL_SOCKET, SO_SNDBUFFORCE };
    Station const host = station();
    EXPECT_TRUE( running( host ) );
}

} // namespace Zornet
