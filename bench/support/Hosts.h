#pragma once

#include <vector>

#include "engine/IgmpHostDirSm.h"
#include "platform/kiv/Clock.h"
#include "platform/zornet/device/DeviceProvider.h"

namespace Bench {

using Kiv::Ptr;
using Zornet::U32;
using Zornet::U8;

/// A device that counts what it is given to send and hears what it is told; it costs nothing else.
class CountingDevice : public Zornet::Device {
  public:
    CountingDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) : Device( ns, name ) {}
    bool send( Zornet::EthDevPam const&, std::span<U8 const> ) override {
        ++sent;
        return true;
    }
    void hear( std::span<U8 const> frame ) { deliver( frame ); }

    std::size_t sent = 0;
};

class CountingProvider : public Zornet::DeviceProvider {
  public:
    CountingDevice& counting( char const* name ) {
        return static_cast<CountingDevice&>( *device( Zornet::NamespaceName(), name ) );
    }

  protected:
    Ptr<Zornet::Device> newDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) override {
        return new CountingDevice( ns, name );
    }
};

/// Hosts on one device, each at an address of its own, enabled and with their first groups joined.
class Hosts {
  public:
    struct Plan {
        std::size_t hosts = 1;
        Igmp::IgmpVersion version = Igmp::igmpVersion2;
        std::size_t groups = 1;  ///< of each host
        std::size_t sources = 0; ///< of each group; include mode where there are any, else exclude
        char const* device = "bench0";
        char const* ns = "";
        bool ownVlans = false;                        ///< host i in VLAN i + 1, all on one shared device
        bool answersAtOnce = false;                   ///< v1MaxResponseTime 0, and the version held
        Kiv::Seconds unsolicitedReportInterval = 0.0; ///< 0 takes that of the version
    };

    explicit Hosts( Plan const& plan );
    ~Hosts();

    Igmp::IgmpHost& host( std::size_t i ) { return *hosts_[i]; }
    static Zornet::IpAddr group( std::size_t i ) {
        return Zornet::IpAddr::fromHost( 0xef010000U + static_cast<U32>( i ) );
    }
    Igmp::IgmpHostStatus& status( std::size_t i );
    Igmp::IgmpHostSm& machine( std::size_t i );
    static Zornet::IpAddr address( std::size_t i ) {
        return Zornet::IpAddr::fromHost( 0x0a000001U + static_cast<U32>( i ) );
    }
    static void join( Igmp::IgmpHost& host, std::size_t group, std::size_t sources );

  private:
    Ptr<Lumo::TimerWheel> wheel_;
    Ptr<Igmp::IgmpHostDir> dir_;
    std::vector<Ptr<Igmp::IgmpHost>> hosts_;
    Ptr<Igmp::IgmpHostStatusDir> statusDir_;
    Ptr<Igmp::IgmpHostDirSm> dirSm_;
};

/// A version 2 general query (8 bytes) or a version 3 one (12 bytes), in a frame.
std::vector<U8> generalQuery( U8 code, bool asV3 );
/// The frame with a tag of that VLAN.
std::vector<U8> tagged( std::vector<U8> frame, Zornet::U16 vlanId );

} // namespace Bench
