#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/IgmpHostDirSm.h"
#include "platform/zornet/device/DeviceProvider.h"
#include "tests/support/Frames.h"
#include "tests/support/SimulatedTest.h"

namespace Support {

using Igmp::IgmpHost;
using Igmp::IgmpHostSm;
using Igmp::IgmpHostStatus;
using Igmp::IgmpV3GroupRecord;
using Kiv::Ptr;
using Kiv::Seconds;
using Lab::Bytes;
using Zornet::IpAddr;

/// A frame that a device was given to send, and when.
struct SentFrame {
    Seconds elapsed; ///< since the test's start
    Bytes bytes;
};

/// The same in words: "v2report 239.1.1.1", "leave 239.1.1.1 to 224.0.0.2", "v3report TO_EX 239.1.1.1 {}, …",
/// "query 0.0.0.0", "v3query 239.1.1.1 {10.9.9.1}".
std::string describe( Bytes const& frame );

/// A device without a wire: keeps what it is given to send, hears what the test says.
class RecordingDevice : public Zornet::Device {
  public:
    RecordingDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name, Seconds start )
        : Device( ns, name ), start_( start ) {}

    bool send( Zornet::EthDevPam const& sender, std::span<Zornet::U8 const> frame ) override;
    void hear( Bytes const& frame ) { deliver( frame ); }

    std::vector<SentFrame> sent;
    /// Openings by a first port, and closings of the last one.
    unsigned openings = 0;
    unsigned closings = 0;
    /// Runs inside each such opening.
    std::function<void()> onOpening;

  protected:
    void handleFirstPort() override;
    void handleNoPort() override { ++closings; }

  private:
    Seconds start_;
};

class RecordingProvider : public Zornet::DeviceProvider {
  public:
    explicit RecordingProvider( Seconds start ) : start_( start ) {}
    RecordingDevice& recording( char const* name, char const* ns = "" );

  protected:
    Ptr<Zornet::Device> newDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) override;

  private:
    Seconds start_;
};

/// Whole hosts on recording devices and the simulated clock: directories, their state machine and, by
/// default, one host "host" of address 10.0.0.1 and 02:00:00:00:00:01 on device "eth0", bound and not
/// enabled.
class HostTest : public SimulatedTest {
  protected:
    explicit HostTest( Seconds start = 1000.0 );
    ~HostTest() override;

    /// Adds a further host; its machine exists when this returns. It is bound to `device`, and not enabled.
    IgmpHost& addHost( char const* name, char const* ipAddr, char const* device = "eth0" );
    IgmpHost& host() { return *dir->igmpHost( "host" ); }
    IgmpHost& host( char const* name ) { return *dir->igmpHost( name ); }
    IgmpHostSm& sm( char const* name = "host" ) { return *dirSm->igmpHostSm( name ); }
    /// The status of an enabled host.
    IgmpHostStatus& status( char const* name = "host" ) { return *statusDir->igmpHostStatus( name ); }

    /// Sets the version and enables.
    void enable( Igmp::IgmpVersion version = Igmp::igmpVersion2 );
    /// Configures a group and raises its record's version.
    IgmpV3GroupRecord& exclude( char const* group, std::vector<char const*> const& sources = {} );
    IgmpV3GroupRecord& include( char const* group, std::vector<char const*> const& sources );
    static void raise( IgmpV3GroupRecord& record ) { record.versionIs( record.version() + 1 ); }

    RecordingDevice& device( char const* name = "eth0" ) { return provider.recording( name ); }
    std::vector<SentFrame>& sent() { return device().sent; }
    /// describe() of every frame sent so far on "eth0", and forgets them.
    std::vector<std::string> takeSent();

    /// Runs at the end of every helper that changes something.
    virtual void stepDone() {}

    /// Hears an IGMP message from 10.0.0.254 to `dst`.
    void hear( Bytes const& igmp, char const* dst = "224.0.0.1" );
    void hearV1Query() { hearQuery( 0, "0.0.0.0" ); }
    /// A version 2 query, `code` in tenths of a second.
    void hearQuery( Zornet::U8 code, char const* group = "0.0.0.0" );
    void hearV3Query(
        Zornet::U8 code, char const* group = "0.0.0.0", std::vector<char const*> const& sources = {}
    );
    /// A version 2 report of another host.
    void hearReport( char const* group );

    RecordingProvider provider;
    Zornet::DeviceProviderScope providerScope;
    Ptr<Igmp::IgmpHostDir> dir;
    Ptr<Igmp::IgmpHostStatusDir> statusDir;
    Ptr<Igmp::IgmpHostDirSm> dirSm;

  private:
    IgmpV3GroupRecord&
    group( char const* addr, IgmpV3GroupRecord::FilterMode, std::vector<char const*> const& sources );
};

} // namespace Support
