#include "tests/soak/SoakHosts.h"

#include <algorithm>

#include "platform/zornet/EthHdr.h"

namespace Soak {

namespace {

using Igmp::IgmpHostSm;
using Igmp::IgmpV3GroupRecord;
using Zornet::IntfId;

/// How hosts reach the wire, one of each kind on every device.
enum class Binding { untagged, tagged, shared, external, sharedToo };

U32
segmentOf( U32 number ) {
    return number / hostsPerSegment;
}

U32
deviceOf( U32 number ) {
    return number % devicesPerSegment;
}

Binding
bindingOf( U32 number ) {
    return static_cast<Binding>( number % hostsPerSegment / devicesPerSegment );
}

/// The two who share a device are in different VLANs: a VLAN has one channel.
U16
vlanOf( U32 number ) {
    Binding const binding = bindingOf( number );
    return binding == Binding::tagged ? vlans[number % 2] : vlans[binding == Binding::sharedToo];
}

bool
shares( Binding binding ) {
    return binding == Binding::shared || binding == Binding::sharedToo;
}

IpAddr
groupOf( U32 number, U32 index ) {
    return IpAddr::fromHost( 0xef010000 + ( segmentOf( number ) << 8 ) + index );
}

IpAddr
sourceOf( U32 index ) {
    return IpAddr::fromHost( 0x0a090900 + index );
}

/// Held hosts are held at version 3 on modern segments, and at what they begin with elsewhere.
Igmp::IgmpVersion
versionOf( U32 number ) {
    bool const modern = isModern( segmentOf( number ) ) && number % 2 == 0;
    return modern ? Igmp::igmpVersion3 : static_cast<Igmp::IgmpVersion>( 1 + number % 3 );
}

bool
isHeld( U32 number ) {
    return number % 10 == 0 &&
           ( isModern( segmentOf( number ) ) || versionOf( number ) != Igmp::igmpVersion3 );
}

} // namespace

std::string
segmentName( U32 segment ) {
    return "s" + std::to_string( segment );
}

std::string
deviceName( U32 segment, U32 device ) {
    return segmentName( segment ) + "-d" + std::to_string( device );
}

SoakHosts::SoakHosts( U32 hosts, Ptr<Lumo::TimerWheel> const& wheel ) : hosts_( hosts ), wheel_( wheel ) {
    for ( U32 number = 0; number < hosts_; ++number ) {
        make( number );
    }
}

SoakHosts::~SoakHosts() {
    dir_->igmpHostDelAll();
    dissolveIdleMultiplexers();
}

Kiv::Name
SoakHosts::hostName( U32 number ) {
    return "host" + std::to_string( number );
}

void
SoakHosts::make( U32 number ) {
    dir_->igmpHostIs( hostName( number ) );
    configure( number );
}

// Configuration.

/// From whatever it is to what the host begins with. Groups come last, when the host is enabled: what a
/// disabled host is told of groups it does not hear.
void
SoakHosts::configure( U32 number ) {
    IgmpHost& host = this->host( number );
    host.ipAddrIs( IpAddr::fromHost( 0x0a000001 + number ) );
    host.macAddrIs( Zornet::EthAddr( { 2, 0, 0, 0, static_cast<U8>( number >> 8 ), static_cast<U8>( number ) }
    ) );
    host.mtuIs( 1514 );
    host.robustnessIs( 2 );
    host.unsolicitedReportIntervalIs( 0.0 );
    host.v1MaxResponseTimeIs( 100 );
    host.enableRouterAlertIs( true );
    host.igmpVersionForcedIs( isHeld( number ) );
    host.igmpVersionIs( versionOf( number ) );
    configureBinding( number, host );
    refresh( host );
    host.enabledIs( true );
    configureGroups( number, host );
    noteMultiplexers();
}

/// An access object from outside is made once and opened once.
void
SoakHosts::configureBinding( U32 number, IgmpHost& host ) {
    U32 const segment = segmentOf( number );
    std::string const device = deviceName( segment, deviceOf( number ) );
    Binding const binding = bindingOf( number );
    if ( binding == Binding::external ) {
        Ptr<Zornet::EthDevPam>& pam = externalPams_[number];
        if ( !pam ) {
            pam = Zornet::EthDevPamIs( device );
            pam->ethProtocolIs( Zornet::ethTypeIp );
            pam->deviceOpenIs( true );
        }
        host.externalPamIs( true );
        host.pamIs( pam );
        return;
    }
    host.deviceNameIs( device );
    host.intfIdIs( IntfId( device ) );
    host.taggedIs( binding != Binding::untagged );
    host.useMuxIs( shares( binding ) );
    host.vlanIdIs( vlanOf( number ) );
    host.intfConfigVersionIs( host.intfConfigVersion() + 1 );
}

void
SoakHosts::configureGroups( U32 number, IgmpHost& host ) {
    for ( U32 index = 0; index < groupsPerHost; ++index ) {
        auto const record = host.v3groupIs( groupOf( number, index ) );
        record->filterModeIs( index % 2 == 0 ? IgmpV3GroupRecord::exclude : IgmpV3GroupRecord::include );
        record->sourceIs()->sourceIpDelAll();
        for ( U32 source = 0; source < index; ++source ) {
            record->sourceIs()->sourceIpIs( sourceOf( source ), 1 );
        }
        record->versionIs( record->version() + 1 );
    }
}

/// Templates follow the configuration with its generation.
void
SoakHosts::refresh( IgmpHost& host ) {
    host.configVersionIs( host.configVersion() + 1 );
}

void
SoakHosts::rest() {
    for ( U32 number = 0; number < hosts_; ++number ) {
        configure( number );
    }
}

// Changes.

void
SoakHosts::change( Random& random ) {
    U32 const number = below( random, hosts_ );
    IgmpHost& host = this->host( number );
    ++figures_.changes;
    switch ( below( random, 16 ) ) {
    case 0: host.enabledIs( !host.enabled() ); break;
    case 1: rebind( random, number, host ); break;
    case 2: changeVersion( random, number, host ); break;
    case 3: changeNumbers( random, host ); break;
    case 4:
        ++figures_.remade;
        dir_->igmpHostDel( hostName( number ) );
        make( number );
        break;
    default:
        if ( host.enabled() ) {
            changeGroup( random, number, host );
        } else {
            host.enabledIs( true );
        }
    }
    noteMultiplexers();
}

/// To another device for who has one of its own, to a device of its own and back for who shares one.
void
SoakHosts::rebind( Random& random, U32 number, IgmpHost& host ) {
    Binding const binding = bindingOf( number );
    if ( binding == Binding::external ) {
        return;
    }
    ++figures_.rebindings;
    if ( shares( binding ) ) {
        host.useMuxIs( !host.useMux() );
    } else {
        host.deviceNameIs( deviceName( segmentOf( number ), below( random, devicesPerSegment ) ) );
        host.vlanIdIs( vlans[below( random, 2 )] );
    }
    refresh( host );
    host.intfConfigVersionIs( host.intfConfigVersion() + 1 );
}

void
SoakHosts::changeGroup( Random& random, U32 number, IgmpHost& host ) {
    IpAddr const group = groupOf( number, below( random, groupsPerHost ) );
    if ( host.v3group( group ) && below( random, 3 ) == 0 ) {
        host.v3groupDel( group );
        return;
    }
    auto const record = host.v3groupIs( group );
    record->filterModeIs( below( random, 2 ) == 0 ? IgmpV3GroupRecord::exclude : IgmpV3GroupRecord::include );
    for ( U32 source = 0; source < groupsPerHost; ++source ) {
        if ( below( random, 2 ) == 0 ) {
            record->sourceIs()->sourceIpIs( sourceOf( source ), 1 );
        } else {
            record->sourceIs()->sourceIpDel( sourceOf( source ) );
        }
    }
    record->versionIs( record->version() + 1 );
}

/// Whoever may meet queriers of older versions is never held at version 3.
void
SoakHosts::changeVersion( Random& random, U32 number, IgmpHost& host ) {
    host.igmpVersionForcedIs( false );
    host.igmpVersionIs( static_cast<Igmp::IgmpVersion>( 1 + below( random, 3 ) ) );
    bool const mayBeHeld = isModern( segmentOf( number ) ) || host.igmpVersion() != Igmp::igmpVersion3;
    host.igmpVersionForcedIs( mayBeHeld && below( random, 4 ) == 0 );
}

void
SoakHosts::changeNumbers( Random& random, IgmpHost& host ) {
    constexpr U32 mtus[] = { 1514, 600, 200 };
    host.mtuIs( mtus[below( random, 3 )] );
    host.robustnessIs( 1 + below( random, 4 ) );
    host.unsolicitedReportIntervalIs( below( random, 4 ) );
    host.v1MaxResponseTimeIs( static_cast<U8>( 10 + below( random, 200 ) ) );
    host.enableRouterAlertIs( below( random, 2 ) == 0 );
    host.ipAddrIs( IpAddr::fromHost( 0x0a000001 + below( random, hosts_ ) ) );
    refresh( host );
}

// Shared devices.

/// Takes note of multiplexers while they are in use. Once out of use, they and their channels hold each
/// other.
void
SoakHosts::noteMultiplexers() {
    for ( auto const& member : dirSm_->multiplexerDir() ) {
        if ( std::ranges::find( multiplexers_, member.multiplexer ) == multiplexers_.end() ) {
            multiplexers_.push_back( member.multiplexer );
        }
    }
}

void
SoakHosts::dissolveIdleMultiplexers() {
    std::erase_if( multiplexers_, [this]( Ptr<Zornet::VlanPamMultiplexer> const& multiplexer ) {
        bool const idle = dirSm_->multiplexerDir( multiplexer->intf() ) != multiplexer;
        if ( idle ) {
            ++figures_.idleMultiplexers;
            multiplexer->vlanPamDelAll();
        }
        return idle;
    } );
}

// What must hold.

std::string
SoakHosts::fault() {
    std::size_t armed = 0;
    std::size_t leaving = 0;
    for ( U32 number = 0; number < hosts_; ++number ) {
        IgmpHostSm const& machine = sm( number );
        char const* fault = Support::hostFault( machine );
        fault = fault ? fault : Support::templateFault( machine );
        std::size_t const groups = Support::leavingGroups( machine );
        if ( !fault && machine.enabled() && machine.igmpHost()->v3groups() + groups > groupsPerHost ) {
            fault = "a host has no more groups than there are";
        }
        if ( fault ) {
            return std::string( hostName( number ).charPtr() ) + ": " + fault;
        }
        armed += Support::armedTimers( machine );
        leaving += groups;
    }
    figures_.mostTimers = std::max( figures_.mostTimers, armed );
    figures_.mostLeaving = std::max( figures_.mostLeaving, leaving );
    if ( wheel_->armedTimers() != armed ) {
        return "every armed timer belongs to a machine that stands";
    }
    return sharingFault();
}

/// Counts of users and of living objects against what the hosts' machines say.
std::string
SoakHosts::sharingFault() const {
    std::map<IntfId, U32> users;
    std::size_t enabled = 0;
    std::size_t tagging = 0;
    for ( U32 number = 0; number < hosts_; ++number ) {
        IgmpHostSm const& machine = sm( number );
        enabled += machine.enabled();
        if ( machine.useMux() ) {
            ++users[machine.useMuxIntfId()];
        } else {
            tagging += machine.enabled() && machine.igmpHost()->tagged();
        }
    }
    if ( statusDir_->igmpHostStatuss() != enabled || dirSm_->igmpHostSms() != hosts_ ) {
        return "a machine for each host, a status for each that is enabled";
    }
    if ( dirSm_->multiplexerDirs() != users.size() || dirSm_->multiplexerRefCounts() != users.size() ) {
        return "a multiplexer for each interface that somebody shares";
    }
    for ( auto const& [intf, count] : users ) {
        if ( dirSm_->multiplexerRefCount( intf ) != count ) {
            return "each user of a shared device counts once";
        }
    }
    if ( Zornet::VlanTaggingPam::live() != tagging ) {
        return "a tagging access object for each host that tags alone";
    }
    return Zornet::VlanPktMultiplexer::live() == multiplexers_.size() ? "" : "each multiplexer is known";
}

std::vector<U32>
SoakHosts::references() const {
    std::vector<U32> counts;
    for ( U32 number = 0; number < hosts_; ++number ) {
        IgmpHostSm const& machine = sm( number );
        IgmpHost const& host = this->host( number );
        counts.push_back( host.references() );
        counts.push_back( machine.references() );
        counts.push_back( machine.igmpHostStatus()->references() );
        counts.push_back( machine.txPam()->references() );
        counts.push_back( machine.rxPam()->references() );
        counts.push_back( machine.v2ReportPkt()->references() );
        for ( U32 index = 0; index < groupsPerHost; ++index ) {
            counts.push_back( host.v3group( groupOf( number, index ) )->references() );
        }
    }
    return counts;
}

} // namespace Soak
