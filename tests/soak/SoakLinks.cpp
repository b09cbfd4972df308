#include "tests/soak/SoakLinks.h"

#include <cstring>

#include "platform/kiv/Clock.h"

namespace Soak {

namespace {

/// Two devices for queriers on each segment: a device does not hear itself.
std::string
routerName( U32 segment, U32 place ) {
    return segmentName( segment ) + "-q" + std::to_string( place % 2 );
}

/// FNV-1a.
void
mix( U64& digest, std::span<U8 const> bytes ) {
    for ( U8 byte : bytes ) {
        digest = ( digest ^ byte ) * 0x100000001b3;
    }
}

} // namespace

SoakLinks::Router::Router(
    Lab::QuerierConfig const& config, std::string const& device, Ptr<Lumo::TimerWheel> const& wheel
)
    : pam( Zornet::EthDevPamIs( device ) ) {
    pam->deviceOpenIs( true );
    querier = std::make_unique<Lab::Querier>( config, pam, wheel );
    querier->enabledIs( true );
}

SoakLinks::Router::~Router() {
    querier = nullptr;
    if ( pam ) {
        pam->deviceOpenIs( false );
    }
}

SoakLinks::SoakLinks( U32 segments, Ptr<Lumo::TimerWheel> const& wheel, U64 seed )
    : segments_( segments ), wheel_( wheel ), wire_( wheel, seed ), routers_( segments * places ) {
    for ( U32 number = 0; number < segments_; ++number ) {
        for ( U32 device = 0; device < devicesPerSegment; ++device ) {
            wire_.attach( {}, deviceName( number, device ), segmentName( number ) );
        }
        for ( U32 place = 0; place < 2; ++place ) {
            wire_.attach( {}, routerName( number, place ), segmentName( number ) );
        }
        segment( number ).dropIs( [this, number]( Lab::WireFrame const& frame ) {
            digest( number, frame );
            return false;
        } );
    }
}

SoakLinks::~SoakLinks() = default;

void
SoakLinks::digest( U32 segment, Lab::WireFrame const& frame ) {
    U8 stamp[sizeof frame.time + sizeof segment];
    std::memcpy( stamp, &frame.time, sizeof frame.time );
    std::memcpy( stamp + sizeof frame.time, &segment, sizeof segment );
    mix( figures_.digest, stamp );
    mix( figures_.digest, frame.bytes );
}

void
SoakLinks::change( Random& random ) {
    U32 const segment = below( random, segments_ );
    switch ( below( random, 8 ) ) {
    case 0:
    case 1: changeImpairment( random, segment ); break;
    case 2:
    case 3: breakLink( random, segment ); break;
    default: changeQuerier( random, segment ); break;
    }
}

/// The first place of a VLAN is taken most of the time, the second seldom.
void
SoakLinks::changeQuerier( Random& random, U32 segment ) {
    U32 const place = below( random, places );
    std::optional<Router>& router = routers_[segment * places + place];
    bool const goes = below( random, 3 ) == 0;
    bool const stays = place % 2 == 1 && below( random, 4 ) != 0;
    router.reset();
    if ( goes || stays ) {
        return;
    }
    router.emplace( randomConfig( random, segment, place ), routerName( segment, place ), wheel_ );
    ++figures_.queriers;
}

Lab::QuerierConfig
SoakLinks::randomConfig( Random& random, U32 segment, U32 place ) {
    constexpr Seconds intervals[] = { 30.0, 60.0, 125.0, 125.0, 250.0, 500.0 };
    constexpr Seconds responses[] = { 1.0, 5.0, 10.0, 10.0, 20.0, 25.0 };
    Lab::QuerierConfig config;
    config.version = static_cast<U8>( isModern( segment ) ? 3 : 1 + below( random, 3 ) );
    config.ipAddr = IpAddr::fromHost( 0x0afe0001 + place );
    config.electionEnabled = below( random, 2 ) == 0;
    config.robustness = 1 + below( random, 3 );
    config.queryInterval = intervals[below( random, std::size( intervals ) )];
    config.queryResponseInterval = responses[below( random, std::size( responses ) )];
    if ( U32 const vlan = place / 2; vlan != 0 ) {
        config.vlanId = Bridging::VlanId( vlans[vlan - 1] );
    }
    return config;
}

void
SoakLinks::changeImpairment( Random& random, U32 segment ) {
    ++figures_.troubles;
    Lab::Impairment impairment;
    if ( below( random, 3 ) != 0 ) {
        impairment.loss = below( random, 30 ) / 100.0;
        impairment.duplication = below( random, 10 ) / 100.0;
        impairment.reordering = below( random, 10 ) / 100.0;
        impairment.delay = below( random, 50 ) / 1000.0;
        impairment.jitter = below( random, 50 ) / 1000.0;
    }
    this->segment( segment ).impairmentIs( impairment );
}

void
SoakLinks::breakLink( Random& random, U32 segment ) {
    U32 const device = below( random, devicesPerSegment + 1 );
    std::string const name =
        device == devicesPerSegment ? routerName( segment, 0 ) : deviceName( segment, device );
    bool const away = below( random, 2 ) == 0;
    ++( away ? figures_.vanished : figures_.flaps );
    if ( away ) {
        wire_.detach( {}, name );
    } else {
        wire_.linkUpIs( {}, name, false );
    }
    outages_.push_back( { segment, name, away, Kiv::now() + 1.0 + below( random, 600 ) } );
}

void
SoakLinks::mend( Outage const& outage ) {
    if ( outage.away ) {
        wire_.attach( {}, outage.device, segmentName( outage.segment ) );
    } else {
        wire_.linkUpIs( {}, outage.device, true );
    }
}

void
SoakLinks::mend() {
    std::erase_if( outages_, [this]( Outage const& outage ) {
        bool const over = outage.until <= Kiv::now();
        if ( over ) {
            mend( outage );
        }
        return over;
    } );
}

void
SoakLinks::rest() {
    for ( std::optional<Router>& router : routers_ ) {
        router.reset();
    }
    for ( Outage const& outage : outages_ ) {
        mend( outage );
    }
    outages_.clear();
    for ( U32 number = 0; number < segments_; ++number ) {
        segment( number ).impairmentIs( {} );
    }
}

std::size_t
SoakLinks::inFlight() {
    std::size_t frames = 0;
    for ( U32 number = 0; number < segments_; ++number ) {
        frames += segment( number ).inFlight();
    }
    return frames;
}

std::size_t
SoakLinks::queriers() const {
    return static_cast<std::size_t>( std::count_if(
        routers_.begin(), routers_.end(), []( auto const& router ) { return router.has_value(); }
    ) );
}

LinkFigures
SoakLinks::figures() {
    LinkFigures figures = figures_;
    for ( U32 number = 0; number < segments_; ++number ) {
        figures.frames += segment( number ).counters().sent;
        figures.lost += segment( number ).counters().lost;
    }
    return figures;
}

} // namespace Soak
