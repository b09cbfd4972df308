#pragma once

#include <map>
#include <random>
#include <string>

#include "engine/IgmpHostDirSm.h"
#include "tests/support/HostChecks.h"

namespace Soak {

using Igmp::IgmpHost;
using Kiv::Ptr;
using Kiv::Seconds;
using Random = std::mt19937_64;
using Zornet::IpAddr;
using Zornet::U16;
using Zornet::U32;
using Zornet::U64;
using Zornet::U8;

/// A number below `limit`.
inline U32
below( Random& random, U32 limit ) {
    return static_cast<U32>( random() % limit );
}

/// Where hosts stand: segments of 25 hosts on five devices, of five bindings on each device.
inline constexpr U32 hostsPerSegment = 25;
inline constexpr U32 devicesPerSegment = 5;
inline constexpr U32 groupsPerHost = 6;
inline constexpr U16 vlans[] = { 10, 20 };

std::string segmentName( U32 segment );
/// "s3-d1" on segment 3.
std::string deviceName( U32 segment, U32 device );

/// On these segments every querier is of version 3: their hosts are held at version 3, whom a group query in
/// the old form must not meet.
inline bool
isModern( U32 segment ) {
    return segment % 8 == 0;
}

/// What happened, over all hosts.
struct HostFigures {
    U64 changes = 0;             ///< of configuration
    U64 rebindings = 0;          ///< among these: to another device, VLAN or kind of binding
    U64 remade = 0;              ///< among these: hosts deleted and made anew
    U64 idleMultiplexers = 0;    ///< that were left behind by their last user, and dissolved here
    std::size_t mostLeaving = 0; ///< groups that were leaving at one moment
    std::size_t mostTimers = 0;  ///< armed at one moment
};

/// The hosts of a soak test, their changes, and what must hold of them at any moment.
class SoakHosts {
  public:
    SoakHosts( U32 hosts, Ptr<Lumo::TimerWheel> const& wheel );
    ~SoakHosts();

    /// Changes the configuration of one host in one way.
    void change( Random& random );
    /// Gives every host the configuration with which it began, each group of its pool included, so that
    /// two moments can be compared.
    void rest();
    /// Lets go of what stays by design once the last user of a shared device has left.
    void dissolveIdleMultiplexers();

    /// What does not hold, or nothing.
    std::string fault();
    /// References on hosts, machines, statuses and records, host by host.
    std::vector<U32> references() const;
    HostFigures const& figures() const { return figures_; }
    std::size_t count() const { return dir_->igmpHosts(); }
    Igmp::IgmpHostStatusDir const& statusDir() const { return *statusDir_; }

  private:
    Igmp::IgmpHostSm& sm( U32 number ) const { return *dirSm_->igmpHostSm( hostName( number ) ); }
    IgmpHost& host( U32 number ) const { return *dir_->igmpHost( hostName( number ) ); }
    static Kiv::Name hostName( U32 number );

    void make( U32 number );
    void configure( U32 number );
    void configureBinding( U32 number, IgmpHost& host );
    void configureGroups( U32 number, IgmpHost& host );
    void rebind( Random& random, U32 number, IgmpHost& host );
    void changeGroup( Random& random, U32 number, IgmpHost& host );
    void changeVersion( Random& random, U32 number, IgmpHost& host );
    void changeNumbers( Random& random, IgmpHost& host );
    static void refresh( IgmpHost& host );
    void noteMultiplexers();
    std::string sharingFault() const;

    U32 const hosts_;
    Ptr<Lumo::TimerWheel> const wheel_;
    Ptr<Igmp::IgmpHostDir> const dir_ = Igmp::igmpHostDirFactory( "hosts" );
    Ptr<Igmp::IgmpHostStatusDir> const statusDir_ = Igmp::igmpHostStatusDirFactory( "status" );
    Ptr<Igmp::IgmpHostDirSm> const dirSm_ = Igmp::igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel_ );
    std::map<U32, Ptr<Zornet::EthDevPam>> externalPams_;        ///< by the host's number
    std::vector<Ptr<Zornet::VlanPamMultiplexer>> multiplexers_; ///< all that were ever seen and still stand
    HostFigures figures_;
};

} // namespace Soak
