/// Frames and steps of time against reference queriers: one of each version and one that holds elections,
/// with and without a VLAN. After every step what a querier says of its groups must agree with itself, every
/// frame must be counted once, and what it sends must be good.
///
/// An input is steps: a byte for the kind and what that kind reads.

#include "lab/Querier.h"
#include "platform/kiv/Activity.h"
#include "platform/kiv/Clock.h"
#include "tests/fuzz/FuzzFrames.h"
#include "tests/support/FedPam.h"

namespace {

using namespace Lab;
using Fuzz::Input;
using Fuzz::require;
using Support::FedPam;
using Zornet::IgmpMessageType;

constexpr unsigned maxSteps = 64;
constexpr U16 vlan = 100;

/// A querier, its access object, and what it was given.
struct Subject {
    Kiv::Ptr<FedPam> pam{ new FedPam };
    std::unique_ptr<Querier> querier;
    QuerierCounters::Count fed = 0;
    QuerierCounters::Count sent = 0;
};

IpAddr
addressOf( unsigned number ) {
    constexpr U32 groups[] = { 0xef010101, 0xef010102, 0xe8010101, 0xe0000001, 0x0a000001, 0 };
    return IpAddr::fromHost( groups[number % std::size( groups )] );
}

IpAddr
sourceOf( unsigned number ) {
    return IpAddr::fromHost( 0x0a090900 + number % 8 );
}

class World {
  public:
    World();
    void step( Input& input );
    void check();

  private:
    void add( QuerierConfig const& config );
    void hear( Bytes const& frame, Input& input );
    static Bytes madeReport( Input& input );
    static Bytes madeQuery( Input& input );
    static void checkGroups( Querier const& querier );
    static void checkCounters( Subject const& subject );
    static void checkSent( Subject& subject );

    Kiv::SimulatedClock clock_;
    Kiv::ClockScope clockScope_{ clock_ };
    Kiv::ActivitySm& activity_ = Kiv::defaultActivity()->activitySm();
    Kiv::Ptr<Lumo::TimerWheel> wheel_{ new Lumo::TimerWheel };
    std::vector<Subject> subjects_;
};

World::World() {
    for ( U8 version = 1; version <= 3; ++version ) {
        QuerierConfig config;
        config.version = version;
        add( config );
        config.electionEnabled = true;
        config.vlanId = Bridging::VlanId( vlan );
        config.robustness = 3;
        config.queryInterval = 20.0;
        config.mtu = 68;
        config.routerAlert = false;
        add( config );
    }
}

void
World::add( QuerierConfig const& config ) {
    Subject subject;
    subject.querier = std::make_unique<Querier>( config, subject.pam, wheel_ );
    subject.querier->enabledIs( true );
    subjects_.push_back( std::move( subject ) );
}

// Steps.

void
World::step( Input& input ) {
    switch ( input.below( 9 ) ) {
    case 0: hear( input.bytes( input.word() % 2048 ), input ); break;
    case 1: {
        Bytes frame = input.bytes( input.word() % 2048 );
        Fuzz::mendChecksums( frame );
        hear( frame, input );
        break;
    }
    case 2: hear( Fuzz::frameOf( input.bytes( input.byte() ) ), input ); break;
    case 3:
    case 4: hear( Fuzz::frameOf( madeReport( input ) ), input ); break;
    case 5: hear( Fuzz::frameOf( madeQuery( input ) ), input ); break;
    case 6: {
        Querier& querier = *subjects_[input.below( 6 )].querier;
        querier.enabledIs( !querier.enabled() );
        break;
    }
    case 7: subjects_[input.below( 6 )].querier->sendGeneralQuery(); break;
    default: { // up to 6.4 seconds finely, up to 256 coarsely
        unsigned const span = input.byte();
        activity_.runFor( span < 128 ? span * 0.05 : ( span - 128 ) * 2.0 );
        break;
    }
    }
}

/// As it is and tagged; a byte says whether it comes in two regions and where they meet.
void
World::hear( Bytes const& frame, Input& input ) {
    std::size_t const meet = std::min<std::size_t>( input.byte(), frame.size() );
    auto const tail = frame.begin() + static_cast<std::ptrdiff_t>( meet );
    Bytes head( frame.begin(), tail );
    for ( Subject& subject : subjects_ ) {
        if ( !subject.querier->enabled() ) {
            continue;
        }
        auto const pkt = Support::tightPkt( Bytes( tail, frame.end() ) );
        if ( meet != 0 ) {
            pkt->headIoVecIs( { head.data(), static_cast<U32>( head.size() ) } );
        }
        subject.pam->feed( pkt );
        subject.pam->feed( Fuzz::tagged( frame, vlan ) );
        subject.fed += 2;
        require( subject.pam->waiting() == 0, "each frame is read" );
    }
}

/// Of any version, and leaves. The type byte chooses.
Bytes
World::madeReport( Input& input ) {
    constexpr IgmpMessageType types[] = { IgmpMessageType::v1MembershipReport,
                                          IgmpMessageType::v2MembershipReport,
                                          IgmpMessageType::v2LeaveGroup };
    unsigned const form = input.below( 8 );
    if ( form < 3 ) {
        return igmpMessage( types[form], 0, addressOf( input.byte() ) );
    }
    std::vector<GroupRecord> records;
    for ( unsigned count = input.below( 4 ); count != 0; --count ) {
        GroupRecord record{ static_cast<Record>( input.below( 8 ) ), addressOf( input.byte() ) };
        for ( unsigned sources = input.below( 8 ); sources != 0; --sources ) {
            record.sources.push_back( sourceOf( input.byte() ) );
        }
        records.push_back( record );
    }
    return v3ReportMessage( records );
}

Bytes
World::madeQuery( Input& input ) {
    unsigned const form = input.byte();
    U8 const code = input.byte();
    IpAddr const group = form & 1 ? addressOf( input.byte() ) : IpAddr();
    if ( form & 2 ) {
        return igmpMessage( IgmpMessageType::membershipQuery, code, group );
    }
    std::vector<IpAddr> sources;
    for ( unsigned count = form & 4 ? input.below( 8 ) : 0; count != 0; --count ) {
        sources.push_back( sourceOf( input.byte() ) );
    }
    return v3QueryMessage(
        group, sources, code, ( form & 8 ) != 0, static_cast<U8>( input.below( 8 ) ), input.byte()
    );
}

// What must hold between steps.

void
World::check() {
    activity_.runFor( 0.0 );
    for ( Subject& subject : subjects_ ) {
        Querier const& querier = *subject.querier;
        require( querier.enabled() || querier.groupCount() == 0, "a silent querier knows no group" );
        require( querier.isQuerier() || querier.config().electionEnabled, "only elections are lost" );
        require( querier.isQuerier() || querier.config().version > 1, "version 1 has no elections" );
        require( querier.isQuerier() || querier.querierAddr() < querier.config().ipAddr, "the lowest wins" );
        checkGroups( querier );
        checkCounters( subject );
        checkSent( subject );
    }
}

void
World::checkGroups( Querier const& querier ) {
    std::vector<IpAddr> const groups = querier.groups();
    require( groups.size() == querier.groupCount(), "each group is counted" );
    for ( IpAddr const& address : groups ) {
        QuerierGroup const& group = *querier.group( address );
        bool const including = group.filterMode() == FilterMode::include;
        require( address.isMulticast() && address != allSystems, "a group that hosts can join" );
        require( group.group() == address && !group.isIdle(), "somebody wants it" );
        require( including == ( group.groupTimerRemaining() <= 0.0 ), "the group timer keeps the mode" );
        require( group.compatibilityVersion() <= querier.config().version, "of no later version" );
        require( querier.config().version == 3 || !including, "only version 3 knows sources" );
        require( !including || group.excludedSources().empty(), "nobody is excluded from nothing" );
        for ( IpAddr const& source : group.requestedSources() ) {
            require( group.sourceTimerRemaining( source ) > 0.0, "a requested source has time" );
            require( querier.forwards( address, source ), "a requested source is forwarded" );
        }
        for ( IpAddr const& source : group.excludedSources() ) {
            require( group.sourceTimerRemaining( source ) <= 0.0, "an excluded source has none" );
            require( !querier.forwards( address, source ), "an excluded source is not forwarded" );
        }
        require( group.forwards( IpAddr( "10.1.1.1" ) ) == !including, "others go by the mode" );
    }
}

/// A report with records is counted once as a report, and may count as more for the groups in it.
void
World::checkCounters( Subject const& subject ) {
    QuerierCounters const& counters = subject.querier->counters();
    QuerierCounters::Count const known = counters.v1Reports + counters.v2Reports + counters.v3Reports +
                                         counters.v2Leaves + counters.v1Queries + counters.v2Queries +
                                         counters.v3Queries;
    QuerierCounters::Count const others = counters.framesForeign + counters.unknownTypes;
    QuerierCounters::Count const malformed = counters.malformed() - counters.badGroups;
    require( counters.framesHeard == subject.fed, "each frame is heard" );
    require( known + others + malformed <= subject.fed, "each frame is one thing at most" );
    require( known + others + counters.malformed() >= subject.fed, "each frame is something" );
}

void
World::checkSent( Subject& subject ) {
    QuerierConfig const& config = subject.querier->config();
    for ( Bytes const& bytes : subject.pam->sent ) {
        IgmpFrame const frame( bytes, config.vlanId );
        require( frame.verdict() == IgmpFrame::Verdict::good, "a query is good" );
        require( frame.v12().messageType() == IgmpMessageType::membershipQuery, "it is a query" );
        require( ( frame.igmpBytes() >= 12 ) == ( config.version == 3 ), "of its version" );
        U32 const ethBytes = config.vlanId ? 18 : 14;
        require( bytes.size() <= ethBytes + config.mtu, "it fits" );
    }
    subject.sent += subject.pam->sent.size();
    subject.pam->sent.clear();
    QuerierCounters const& counters = subject.querier->counters();
    require(
        counters.generalQueriesSent + counters.groupQueriesSent + counters.groupSourceQueriesSent ==
            subject.sent,
        "each query is counted"
    );
}

} // namespace

extern "C" int
LLVMFuzzerTestOneInput( std::uint8_t const* data, std::size_t size ) {
    Input input( { data, size } );
    World world;
    world.check();
    for ( unsigned steps = 0; steps < maxSteps && !input.atEnd(); ++steps ) {
        world.step( input );
        world.check();
    }
    return 0;
}
