#include "tests/scenario/V3ModelCase.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

#include "platform/kiv/Activity.h"
#include "platform/zornet/EthDevPam.h"
#include "tests/support/HostTest.h"

namespace Scenario {

using Igmp::IgmpV3GroupRecord;

namespace {

constexpr U32 headerBytes = 46;
constexpr U32 greatestMtu = 9000;

U32
between( Random& random, U32 least, U32 most ) {
    return least + static_cast<U32>( random() % ( most - least + 1 ) );
}

/// Mostly few: the cost of a case grows with the square of its hosts.
U32
few( Random& random, U32 usual, U32 most ) {
    return between( random, 1, random() % 16 == 0 ? most : usual );
}

U32
recordBytes( U32 sources ) {
    return 8 + 4 * sources;
}

Kiv::ActivitySm&
activity() {
    return Kiv::defaultActivity()->activitySm();
}

} // namespace

V3ModelShape::V3ModelShape( Random& random )
    : start( between( random, 0, 2'000'000 ) + between( random, 0, 999 ) * 1e-3 ),
      hosts( few( random, 6, 50 ) ),
      groups( few( random, 10, 60 ) ),
      sources( random() % 4 == 0 ? between( random, 0, 40 ) : between( random, 0, 5 ) ),
      changes( between( random, 1, 80 ) ),
      changeSpan( between( random, 1, 100 ) ) {
    losses.robustness = between( random, 1, 4 );
    losses.share = between( random, 0, 10 ) * 0.1;
    drawMtu( random );
    querier.robustness = losses.robustness;
    querier.queryResponseInterval = between( random, 1, 10 );
    querier.queryInterval = 2 * querier.queryResponseInterval + between( random, 5, 100 );
    querier.lastMemberQueryInterval = between( random, 1, 3 );
    losses.lastMemberQueryInterval = querier.lastMemberQueryInterval;
}

/// An answer of several packets may end up to a response interval late. That takes the place of a lost round,
/// of which a robustness of 1 has none.
void
V3ModelShape::drawMtu( Random& random ) {
    U32 const least = headerBytes + std::max( recordBytes( sources ), 12U );
    U32 const whole = headerBytes + groups * recordBytes( sources ) + 4;
    mtu = between( random, least, random() % 2 == 0 ? std::min( whole, greatestMtu ) : greatestMtu );
    if ( losses.robustness == 1 ) {
        groups = std::min( groups, ( greatestMtu - headerBytes - 4 ) / recordBytes( sources ) );
        mtu = std::max( mtu, headerBytes + groups * recordBytes( sources ) + 4 );
    }
    bool const isLong = mtu < whole && losses.robustness > 1;
    losses.generalRounds = losses.robustness - ( isLong ? 2 : 1 );
    excluded = isLong ? 1 : sources;
}

std::ostream&
operator<<( std::ostream& out, V3ModelShape const& shape ) {
    return out << "start " << shape.start << ", hosts " << shape.hosts << ", groups " << shape.groups
               << ", sources " << shape.sources << ", changes " << shape.changes << " in " << shape.changeSpan
               << " s, mtu " << shape.mtu << ", robustness " << shape.losses.robustness << ", share lost "
               << shape.losses.share << ", intervals " << shape.querier.queryInterval << " "
               << shape.querier.queryResponseInterval << " " << shape.querier.lastMemberQueryInterval;
}

V3ModelCase::V3ModelCase( U64 seed )
    : random_( seed ),
      shape_( random_ ),
      clock_( shape_.start ),
      clockScope_( clock_ ),
      wheel_( new Lumo::TimerWheel ),
      losses_( shape_.losses, random_() ),
      wire_( wheel_, seed ),
      providerScope_( wire_ ),
      dir_( Igmp::igmpHostDirFactory( "hosts" ) ),
      statusDir_( Igmp::igmpHostStatusDirFactory( "status" ) ),
      dirSm_( Igmp::igmpHostDirSmFactory( nullptr, dir_, statusDir_, wheel_ ) ),
      pam_( Zornet::EthDevPamIs( "router" ) ),
      querier_( shape_.querier, pam_, wheel_ ) {
    wire_.defaultSegmentIs( "lan" );
    wire_.segment( "lan" ).dropIs( [this]( Lab::WireFrame const& frame ) { return handleFrame( frame ); } );
    pam_->deviceOpenIs( true );
    for ( U32 i = 0; i < shape_.hosts; ++i ) {
        addHost( i );
    }
}

V3ModelCase::~V3ModelCase() {
    dir_->igmpHostDelAll();
}

void
V3ModelCase::logIs( std::ostream& log ) {
    log_ = &log;
    log << std::fixed << std::setprecision( 6 );
    for ( Ptr<IgmpHost> const& host : hosts_ ) {
        for ( auto const& record : host->v3group() ) {
            logChange( *host, record.multicastAddr() );
        }
    }
}

bool
V3ModelCase::handleFrame( Lab::WireFrame const& frame ) {
    bool const lost = losses_.isLost( frame );
    if ( log_ ) {
        *log_ << frame.time - shape_.start << ' ' << frame.device << ' '
              << Support::describe( { frame.bytes.begin(), frame.bytes.end() } )
              << ( lost ? " LOST\n" : "\n" );
    }
    return lost;
}

void
V3ModelCase::logChange( IgmpHost const& host, IpAddr const& ofGroup ) const {
    if ( !log_ ) {
        return;
    }
    *log_ << clock_.now() - shape_.start << ' ' << host.name() << " wants of " << ofGroup;
    if ( Ptr<IgmpV3GroupRecord> const record = host.v3group( ofGroup ) ) {
        *log_ << ( record->filterMode() == IgmpV3GroupRecord::include ? " only" : " all but" );
        if ( record->source() ) {
            for ( auto const& source : record->source()->sourceIp() ) {
                *log_ << ' ' << source.key;
            }
        }
    } else {
        *log_ << " nothing";
    }
    *log_ << '\n';
}

void
V3ModelCase::addHost( U32 number ) {
    std::string const name = std::to_string( number );
    Ptr<IgmpHost> const host = dir_->igmpHostIs( Kiv::Name( "host" + name ) );
    host->ipAddrIs( IpAddr::fromHost( 0x0a000001 + number ) );
    host->macAddrIs( Zornet::EthAddr( { 2, 0, 0, 0, 0, static_cast<Zornet::U8>( number + 1 ) } ) );
    host->deviceNameIs( Kiv::String8( "eth" + name ) );
    host->igmpVersionIs( Igmp::igmpVersion3 );
    host->mtuIs( shape_.mtu );
    host->robustnessIs( shape_.losses.robustness );
    host->intfConfigVersionIs( 1 );
    for ( U32 i = below( shape_.groups + 1 ); i != 0; --i ) {
        rewrite( *host->v3groupIs( randomGroup() ) );
    }
    hosts_.push_back( host );
}

/// What a configurator may do to a group of a host.
void
V3ModelCase::change( IgmpHost& host ) {
    host.enabledIs( true );
    IpAddr const chosen = randomGroup();
    Ptr<IgmpV3GroupRecord> const present = host.v3group( chosen );
    if ( !present ) {
        rewrite( *host.v3groupIs( chosen ) );
    } else if ( U32 const kind = below( 6 ); kind == 0 ) {
        host.v3groupDel( chosen );
    } else if ( kind == 1 ) {
        rewrite( *present );
    } else {
        toggle( *present );
    }
    logChange( host, chosen );
}

void
V3ModelCase::rewrite( IgmpV3GroupRecord& record ) {
    record.filterModeIs( below( 2 ) == 0 ? IgmpV3GroupRecord::include : IgmpV3GroupRecord::exclude );
    if ( below( 4 ) == 0 ) {
        record.sourceDel();
    }
    for ( U32 i = 0; i < shape_.sources; ++i ) {
        if ( below( 3 ) == 0 ) {
            record.sourceIs()->sourceIpIs( source( i ), 1 );
        } else if ( record.source() ) {
            record.source()->sourceIpDel( source( i ) );
        }
    }
    finish( record );
}

/// Adds or removes a source, or turns the mode over.
void
V3ModelCase::toggle( IgmpV3GroupRecord& record ) {
    if ( shape_.sources == 0 || below( 4 ) == 0 ) {
        bool const isInclude = record.filterMode() == IgmpV3GroupRecord::include;
        record.filterModeIs( isInclude ? IgmpV3GroupRecord::exclude : IgmpV3GroupRecord::include );
    } else {
        IpAddr const chosen = source( below( shape_.sources ) );
        if ( record.sourceIs()->hasSourceIp( chosen ) ) {
            record.source()->sourceIpDel( chosen );
        } else {
            record.source()->sourceIpIs( chosen, 1 );
        }
    }
    finish( record );
}

void
V3ModelCase::finish( IgmpV3GroupRecord& record ) {
    bool const isExclude = record.filterMode() == IgmpV3GroupRecord::exclude;
    while ( isExclude && record.source() && record.source()->sourceIps() > shape_.excluded ) {
        record.source()->sourceIpDel( record.source()->sourceIp().begin() );
    }
    record.versionIs( record.version() + 1 );
}

bool
V3ModelCase::anyoneOwes() const {
    for ( Ptr<IgmpHost> const& host : hosts_ ) {
        for ( auto const& group : dirSm_->igmpHostSm( host->name() )->aggregatedSenderSm()->v3GroupSm() ) {
            if ( group.isStateChanged() ) {
                return true;
            }
        }
    }
    return false;
}

bool
V3ModelCase::isWanted( IpAddr const& ofGroup, IpAddr const& fromSource ) const {
    return std::any_of( hosts_.begin(), hosts_.end(), [&]( Ptr<IgmpHost> const& host ) {
        Ptr<IgmpV3GroupRecord> const record = host->v3group( ofGroup );
        bool const named = record && record->source() && record->source()->hasSourceIp( fromSource );
        return record && named == ( record->filterMode() == IgmpV3GroupRecord::include );
    } );
}

void
V3ModelCase::makeChanges() {
    std::vector<Seconds> times( shape_.changes );
    std::generate( times.begin(), times.end(), [this] { return timeWithin( shape_.changeSpan ); } );
    std::sort( times.begin(), times.end() );
    for ( Seconds const time : times ) {
        activity().runUntilTime( shape_.start + time );
        change( *hosts_[below( shape_.hosts )] );
    }
    for ( Ptr<IgmpHost> const& host : hosts_ ) {
        host->enabledIs( true );
    }
    awaitReports();
}

/// Until nobody owes a report any more.
void
V3ModelCase::awaitReports() {
    for ( int i = 0; i < 600 && anyoneOwes(); ++i ) {
        activity().runFor( 1.0 );
    }
}

std::vector<std::string>
V3ModelCase::run() {
    Lab::QuerierConfig const& config = querier_.config();
    querier_.enabledIs( true );
    makeChanges();
    activity().runFor( config.groupMembershipInterval() + config.lastMemberQueryTime() + 0.01 );
    std::vector<std::string> different = differences();
    losses_.stop();
    for ( int i = 0; i < 3 && hosts_.size() == 1 && different.empty(); ++i ) {
        change( *hosts_[0] );
        awaitReports();
        activity().runFor( config.lastMemberQueryTime() + 0.01 );
        different = differences();
    }
    return different;
}

std::vector<std::string>
V3ModelCase::differences() const {
    std::vector<std::string> texts;
    if ( anyoneOwes() ) {
        texts.emplace_back( "a host still owes reports" );
    }
    for ( U32 g = 0; g < shape_.groups; ++g ) {
        for ( U32 s = 0; s <= shape_.sources; ++s ) { // the last one is a source that no record names
            bool const wanted = isWanted( group( g ), source( s ) );
            if ( querier_.forwards( group( g ), source( s ) ) != wanted ) {
                std::ostringstream text;
                text << group( g ) << " from " << source( s ) << ( wanted ? " is missing" : " is unwanted" );
                texts.push_back( text.str() );
            }
        }
    }
    return texts;
}

} // namespace Scenario
