/// Frames and steps of time against whole hosts: of every version, held at it and not, tagged and not, on
/// access objects of the target's own and on devices, under inline and under deferred delivery. After every
/// step the machines, the wheel and the counters must agree with each other.
///
/// An input is a byte for the delivery, then steps: a byte for the kind and what that kind reads. What ends
/// the process by decision is kept out: the 8-byte group query at a host held at version 3 for a group it
/// has, filter modes other than the two, robustness outside 1 to 255, groups whose changes are not processed,
/// an mtu below the headers and a record without sources or above 16 bits, several hosts that come or go in
/// one deferred delivery. What goes on for ever at one instant, or nearly, is kept out too: intervals of zero
/// with periodic reports, and an mtu that does not hold every record whole.

#include <deque>

#include "engine/IgmpHostDirSm.h"
#include "lab/IgmpFrame.h"
#include "platform/kiv/Activity.h"
#include "platform/kiv/Clock.h"
#include "platform/zornet/Eth8021QHdr.h"
#include "platform/zornet/device/DeviceProvider.h"
#include "tests/fuzz/FuzzFrames.h"
#include "tests/support/FedPam.h"
#include "tests/support/HostChecks.h"

namespace {

using namespace Igmp;
using Fuzz::Bytes;
using Fuzz::frameOf;
using Fuzz::Input;
using Fuzz::ipAt;
using Fuzz::mendChecksums;
using Fuzz::require;
using Kiv::Seconds;
using Support::FedPam;
using Zornet::IgmpMessageType;
using Zornet::IntfId;
using Zornet::IpAddr;
using Zornet::U16;
using Zornet::U32;
using Zornet::U8;

constexpr unsigned maxSteps = 64;

/// What a host is from its first step to its last, but for its version, and whether it begins held.
struct Kind {
    U8 version;
    bool mayBeHeld;
    bool tagged;
    char const* device; ///< null for an access object of the host's own, which is untagged
    bool shared = false;
};

// Hosts that may be held have a device of their own: there is what it must not hear.
constexpr char const* freeDevice = "eth0";
constexpr char const* heldDevice = "eth1";
constexpr Kind kinds[] = {
    { 1, false, false, nullptr },         { 2, false, false, nullptr },        { 3, false, false, nullptr },
    { 1, true, false, nullptr },          { 2, true, false, nullptr },         { 3, true, false, nullptr },
    { 1, false, false, freeDevice },      { 2, false, true, freeDevice },      { 1, false, true, freeDevice },
    { 1, true, true, heldDevice },        { 2, true, true, heldDevice },       { 3, true, true, heldDevice },
    { 3, false, true, freeDevice, true }, { 3, true, true, heldDevice, true },
};
constexpr unsigned hosts = std::size( kinds );
constexpr unsigned sharingHosts = 2; ///< the last ones
constexpr U16 vlan = 100;

constexpr IpAddr groups[] = { IpAddr::fromHost( 0xef010101 ), IpAddr::fromHost( 0xef010102 ),
                              IpAddr::fromHost( 0xe8010101 ) };
constexpr IpAddr sources[] = { IpAddr::fromHost( 0x0a090901 ), IpAddr::fromHost( 0x0a090902 ),
                               IpAddr::fromHost( 0x0a090903 ) };

/// A query for a group in the old form, which a host that is held at version 3 must not hear for a group it
/// has. Sizes are those of the IP header, as the host takes them.
bool
isOldGroupQuery( Bytes const& frame ) {
    if ( frame.size() < ipAt + sizeof( Zornet::IpHdr ) ) {
        return false;
    }
    auto const* const ip = reinterpret_cast<Zornet::IpHdr const*>( frame.data() + ipAt );
    std::size_t const at = ipAt + ip->headerBytes();
    if ( ip->payloadLen() != sizeof( Zornet::IgmpV12Hdr ) || at + ip->payloadLen() > frame.size() ) {
        return false;
    }
    auto const* const igmp = reinterpret_cast<Zornet::IgmpV12Hdr const*>( frame.data() + at );
    return igmp->messageType() == IgmpMessageType::membershipQuery && !igmp->groupAddress().isZero();
}

void
checkSent( std::span<U8 const> frame ) {
    std::optional<Bridging::VlanId> tag;
    if ( reinterpret_cast<Zornet::EthHdr const*>( frame.data() )->typeOrLen() == Zornet::ethType8021Q ) {
        tag = Bridging::VlanId( vlan );
    }
    require( Lab::IgmpFrame( frame, tag ).verdict() == Lab::IgmpFrame::Verdict::good, "sent frame is good" );
}

class CheckingDevice : public Zornet::Device {
  public:
    CheckingDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) : Device( ns, name ) {}
    bool send( Zornet::EthDevPam const&, std::span<U8 const> frame ) override {
        checkSent( frame );
        return true;
    }
    void hear( Bytes const& frame ) { deliver( frame ); }
};

class CheckingProvider : public Zornet::DeviceProvider {
  protected:
    Kiv::Ptr<Zornet::Device> newDevice( Zornet::NamespaceName const& ns, Kiv::String8 const& name ) override {
        return new CheckingDevice( ns, name );
    }
};

/// One host, and what has been seen of it under its present status.
struct Subject {
    Kind const& kind;
    Kiv::Ptr<IgmpHost> host;
    Kiv::Ptr<FedPam> pam{};    ///< null on a device
    bool everPeriodic = false; ///< what is remembered and what is in force may part then
    Kiv::Ptr<IgmpHostStatus> status{};
    U32 counted = 0;
    U32 v12Frames = 0;
    U32 v3Frames = 0;

    void statusIs( IgmpHostStatus* present ) {
        if ( status.get() != present ) {
            status = present;
            counted = v12Frames = v3Frames = 0;
        }
    }
};

class World {
  public:
    explicit World( bool deferred );
    ~World();

    void step( Input& input );
    void check();

  private:
    Subject& any( Input& input ) { return subjects_[input.below( hosts )]; }
    /// None that shares a device, which must not bind anew: what is shared stays for good once it is let go.
    Subject& anyButSharing( Input& input ) { return subjects_[input.below( hosts - sharingHosts )]; }
    CheckingDevice& device( char const* name ) {
        return static_cast<CheckingDevice&>( *provider_.device( {}, name ) );
    }
    IgmpHostSm& sm( Subject const& subject ) { return *dirSm_->igmpHostSm( subject.host->name() ); }
    void settle() { activity_.runFor( 0.0 ); }

    void add( unsigned number );
    void bind( Subject& subject, unsigned number );
    void hear( Bytes const& frame, Input& input );
    Bytes madeQuery( Input& input );
    void changeGroup( Input& input );
    void changeSwitch( Input& input );
    void changeNumber( Input& input );
    void passTime( Input& input );

    void handleSent( unsigned number );

    void checkHost( Subject& subject );
    static void checkCounters( Subject& subject );

    Kiv::SimulatedClock clock_;
    Kiv::ClockScope clockScope_{ clock_ };
    Kiv::ActivitySm& activity_ = Kiv::defaultActivity()->activitySm();
    Kiv::Ptr<Lumo::TimerWheel> wheel_{ new Lumo::TimerWheel };
    CheckingProvider provider_;
    Zornet::DeviceProviderScope providerScope_{ provider_ };
    Kiv::Ptr<IgmpHostDir> dir_ = igmpHostDirFactory( "hosts" );
    Kiv::Ptr<IgmpHostStatusDir> statusDir_ = igmpHostStatusDirFactory( "status" );
    Kiv::Ptr<IgmpHostDirSm> dirSm_ = igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel_ );
    std::deque<Bytes> heads_; ///< first regions, which outlive their packets
    std::vector<Subject> subjects_;
};

World::World( bool deferred ) {
    for ( unsigned number = 0; number < hosts; ++number ) {
        add( number );
    }
    activity_.deferredDeliveryIs( deferred );
}

World::~World() {
    settle();
    activity_.deferredDeliveryIs( false );
    auto const free = dirSm_->multiplexerDir( IntfId( freeDevice ) );
    auto const held = dirSm_->multiplexerDir( IntfId( heldDevice ) );
    dir_->igmpHostDelAll();
    free->vlanPamDelAll(); // it and its channel hold each other
    held->vlanPamDelAll();
    require( wheel_->armedTimers() == 0, "no timer outlives its host" );
}

/// Enabled, and a member of a group in either mode.
void
World::add( unsigned number ) {
    Subject subject{ kinds[number], dir_->igmpHostIs( "host" + std::to_string( number ) ) };
    IgmpHost& host = *subject.host;
    host.ipAddrIs( IpAddr::fromHost( 0x0a000001 + number ) );
    host.macAddrIs( Zornet::EthAddr( { 2, 0, 0, 0, 0, static_cast<U8>( number ) } ) );
    host.igmpVersionIs( static_cast<IgmpVersion>( subject.kind.version ) );
    host.igmpVersionForcedIs( subject.kind.mayBeHeld );
    host.unsolicitedReportIntervalIs( 5.0 );
    bind( subject, number );
    subjects_.push_back( subject );
    host.enabledIs( true );
    auto const excluding = host.v3groupIs( groups[0] );
    excluding->filterModeIs( IgmpV3GroupRecord::exclude );
    excluding->versionIs( 1 );
    auto const including = host.v3groupIs( groups[2] );
    including->sourceIs()->sourceIpIs( sources[0], 1 );
    including->versionIs( 1 );
}

void
World::bind( Subject& subject, unsigned number ) {
    Kind const& kind = subject.kind;
    IgmpHost& host = *subject.host;
    if ( !kind.device ) {
        subject.pam = new FedPam;
        subject.pam->onSend = [this, number] { handleSent( number ); };
        host.externalPamIs( true );
        host.pamIs( subject.pam );
        return;
    }
    host.taggedIs( kind.tagged );
    host.useMuxIs( kind.shared );
    host.vlanIdIs( vlan );
    host.deviceNameIs( kind.device );
    host.intfIdIs( IntfId( kind.device ) );
    host.intfConfigVersionIs( 1 );
}

// Steps.

void
World::step( Input& input ) {
    switch ( input.below( 10 ) ) {
    case 0: hear( input.bytes( input.word() % 2048 ), input ); break;
    case 1: {
        Bytes frame = input.bytes( input.word() % 2048 );
        mendChecksums( frame );
        hear( frame, input );
        break;
    }
    case 2: hear( frameOf( input.bytes( input.byte() ) ), input ); break;
    case 3:
    case 4: hear( frameOf( madeQuery( input ) ), input ); break;
    case 5: changeGroup( input ); break;
    case 6: changeSwitch( input ); break;
    case 7: changeNumber( input ); break;
    case 8: passTime( input ); break;
    default: settle(); break;
    }
}

/// A byte says whether the frame comes in two regions and where they meet.
void
World::hear( Bytes const& frame, Input& input ) {
    unsigned const meet = input.byte();
    auto const tail =
        frame.begin() + static_cast<std::ptrdiff_t>( std::min<std::size_t>( meet, frame.size() ) );
    heads_.emplace_back( frame.begin(), tail );
    bool const keptFromHeld = isOldGroupQuery( frame );
    for ( Subject const& subject : subjects_ ) {
        if ( !subject.pam || ( subject.kind.mayBeHeld && keptFromHeld ) ) {
            continue;
        }
        auto const pkt = Support::tightPkt( Bytes( tail, frame.end() ) );
        if ( meet != 0 ) {
            pkt->headIoVecIs( { heads_.back().data(), static_cast<U32>( heads_.back().size() ) } );
        }
        subject.pam->feed( pkt );
    }
    device( freeDevice ).hear( frame );
    device( freeDevice ).hear( Fuzz::tagged( frame, vlan ) );
    if ( !keptFromHeld ) {
        device( heldDevice ).hear( Fuzz::tagged( frame, vlan ) );
    }
}

void
World::handleSent( unsigned number ) {
    Subject& subject = subjects_[number];
    Bytes const& frame = subject.pam->sent.back();
    checkSent( frame );
    subject.statusIs( sm( subject ).igmpHostStatus() );
    auto const* const ip = reinterpret_cast<Zornet::IpHdr const*>( frame.data() + ipAt );
    bool const v3 = frame[ipAt + ip->headerBytes()] == static_cast<U8>( IgmpMessageType::v3MembershipReport );
    ( v3 ? subject.v3Frames : subject.v12Frames ) += 1;
    subject.pam->sent.clear();
}

Bytes
World::madeQuery( Input& input ) {
    Bytes message{ 0x11, input.byte(), 0, 0 };
    unsigned const group = input.below( 5 );
    IpAddr const asked = group == 0   ? IpAddr()
                         : group == 4 ? IpAddr::fromHost( 0xef090909 )
                                      : groups[group - 1];
    message.insert( message.end(), asked.bytes().begin(), asked.bytes().end() );
    unsigned const form = input.below( 8 );
    if ( form < 3 ) {
        message.resize( 8 + form ); // 8 to 10 bytes
        return message;
    }
    unsigned const count = input.below( 4 );
    message.insert( message.end(), { 2, input.byte(), 0, static_cast<U8>( count + ( form == 7 ) ) } );
    for ( unsigned i = 0; i < count; ++i ) {
        auto const& source = sources[i % std::size( sources )].bytes();
        message.insert( message.end(), source.begin(), source.end() );
    }
    return message;
}

void
World::changeGroup( Input& input ) {
    IgmpHost& host = *any( input ).host;
    IpAddr const& group = groups[input.below( std::size( groups ) )];
    unsigned const what = input.byte();
    if ( what % 4 == 0 ) {
        host.v3groupDel( group );
        return;
    }
    auto const record = host.v3groupIs( group );
    record->filterModeIs( what & 4 ? IgmpV3GroupRecord::exclude : IgmpV3GroupRecord::include );
    for ( unsigned i = 0; i < std::size( sources ); ++i ) {
        if ( what & ( 8U << i ) ) {
            record->sourceIs()->sourceIpIs( sources[i], 1 );
        } else if ( record->source() ) {
            record->source()->sourceIpDel( sources[i] );
        }
    }
    if ( what & 128 ) {
        record->versionIs( record->version() + 1 );
    }
}

void
World::changeSwitch( Input& input ) {
    Subject& subject = anyButSharing( input );
    IgmpHost& host = *subject.host;
    unsigned const what = input.byte();
    bool const value = what & 128;
    switch ( what % 7 ) {
    case 0: host.enabledIs( value ); break;
    case 1: host.blockedIs( value ); break;
    case 2: host.directionIs( static_cast<Bridging::AllowedTrafficDirection>( ( what >> 4 ) % 3 ) ); break;
    case 3:
        host.enablePeriodicReportIs( value );
        subject.everPeriodic |= value;
        break;
    case 4: host.igmpVersionForcedIs( value && subject.kind.mayBeHeld ); break;
    case 5:
        host.enableRouterAlertIs( value );
        host.configVersionIs( host.configVersion() + 1 );
        break;
    default: host.intfConfigVersionIs( host.intfConfigVersion() + 1 ); break;
    }
}

void
World::changeNumber( Input& input ) {
    IgmpHost& host = *anyButSharing( input ).host;
    unsigned const value = input.byte();
    switch ( input.below( 7 ) ) {
    case 0: host.igmpVersionIs( static_cast<IgmpVersion>( 1 + value % 3 ) ); break;
    case 1: host.unsolicitedReportIntervalIs( 5.0 + value ); break;
    case 2: host.v1RouterPresentTimeoutIs( value ); break;
    case 3: host.v2RouterPresentTimeoutIs( value ); break;
    case 4: host.v1MaxResponseTimeIs( static_cast<U8>( value ) ); break;
    case 5: host.robustnessIs( 1 + value % 255 ); break;
    default: // never so small that a record of three sources does not fit
        host.mtuIs( value < 128 ? 1514 : 74 );
        host.configVersionIs( host.configVersion() + 1 );
        break;
    }
}

/// Up to 6.4 seconds finely, up to 128 coarsely.
void
World::passTime( Input& input ) {
    unsigned const span = input.byte();
    activity_.runFor( span < 128 ? span * 0.05 : span - 127.0 );
}

// What must hold between steps, once every change has been told.

void
World::check() {
    settle();
    std::size_t armed = 0;
    for ( Subject& subject : subjects_ ) {
        checkHost( subject );
        armed += Support::armedTimers( sm( subject ) );
    }
    require( wheel_->armedTimers() == armed, "every armed timer belongs to a machine that stands" );
}

void
World::checkHost( Subject& subject ) {
    IgmpHostSm const& host = sm( subject );
    char const* const fault = Support::hostFault( host, subject.everPeriodic );
    require( fault == nullptr, fault );
    subject.statusIs( host.igmpHostStatus() );
    if ( subject.status ) {
        checkCounters( subject );
    }
}

/// Version 1 and 2 count attempts, version 3 what went out.
void
World::checkCounters( Subject& subject ) {
    IgmpHostStatus const& status = *subject.status;
    U32 const v12Sent = status.v1ReportsSent() + status.v2ReportsSent() + status.v2LeavesSent();
    U32 const v3Sent = status.v3CurrentStateReportSent() + status.v3StateChangeReportSent();
    U32 const received = status.v12ReportReceived() + status.v2GeneralQueryReceived() +
                         status.v2GroupQueryReceived() + status.v3GeneralQueryReceived() +
                         status.v3GroupQueryReceived() + status.v3GroupSourceQueryReceived() +
                         status.v3ReportReceived();
    require( status.v1QueryReceived() == 0, "nothing counts version 1 queries" );
    require( received + v12Sent + v3Sent >= subject.counted, "counters do not fall" );
    require( !subject.pam || subject.v12Frames <= v12Sent, "each report and leave is counted" );
    require( !subject.pam || subject.v3Frames == v3Sent, "what is counted of version 3 was sent" );
    subject.counted = received + v12Sent + v3Sent;
}

} // namespace

extern "C" int
LLVMFuzzerTestOneInput( std::uint8_t const* data, std::size_t size ) {
    Input input( { data, size } );
    World world( input.below( 2 ) == 1 );
    world.check();
    for ( unsigned steps = 0; steps < maxSteps && !input.atEnd(); ++steps ) {
        world.step( input );
        if ( input.below( 4 ) != 0 ) {
            world.check();
        }
    }
    world.check();
    return 0;
}
