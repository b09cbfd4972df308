#pragma once

#include <gmock/gmock.h>

#include <string>

#include "lab/Wire.h"
#include "platform/zornet/EthDevPam.h"
#include "platform/zornet/PktManager.h"
#include "tests/support/Frames.h"
#include "tests/support/SimulatedTest.h"

namespace Lab {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A node of a wire: an access object on a device, open from the start, which notes what it hears and when.
class WireNode : public Zornet::Pam::Notifiee {
  public:
    explicit WireNode( Kiv::Ptr<Zornet::EthDevPam> const& openPam );

    Kiv::Ptr<Zornet::EthDevPam> const pam;
    /// The last byte of each frame heard, and the times.
    std::string heard;
    std::vector<Seconds> times;
    std::vector<Bytes> frames;
    std::function<void()> reaction; ///< to each frame

    void send( Bytes const& frame ) { pam->txPktIs( Zornet::pktWithBytes( frame ) ); }
    /// Sends one frame for each letter, which is its last byte.
    void send( std::string const& letters );
    void onReadableCount() override;
};

/// Three nodes a, b and c on the segment "lan" of a wire that is in force.
class WireTest : public Support::SimulatedTest {
  protected:
    static constexpr Seconds turn = Kiv::ActivitySm::tick;

    explicit WireTest( Zornet::U64 seed = 1 );

    static Zornet::NamespaceName ns( char const* name = "" ) { return Zornet::NamespaceName( name ); }
    /// A node on that device.
    static Kiv::Ptr<WireNode> node( char const* device, char const* nsName = "" );
    WireSegment& lan() { return wire.segment( "lan" ); }
    /// A frame of the least length with that last byte.
    static Bytes frame( char letter );

    Wire wire;
    Zornet::DeviceProviderScope scope{ wire };
    Kiv::Ptr<WireNode> a, b, c;
};

} // namespace Lab
