/// When a thousand hosts answer, judged from the capture of the wire alone. IGMPHOST_HISTOGRAM=1 prints what
/// was seen.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <numeric>
#include <set>

#include "engine/RandomDelay.h"
#include "platform/zornet/IpHdr.h"
#include "platform/zornet/PktManager.h"
#include "tests/scenario/ScenarioTest.h"
#include "tests/support/Frames.h"

namespace Agent {

namespace {

using Zornet::U8;

constexpr std::size_t hosts = 1000;
constexpr std::size_t queries = 100;
/// Between a query's sending and its hearing, and between a deadline and the sending, lie turns of the loop.
constexpr Seconds turns = 1e-5;

/// A query and the longest time that an answer to it may take.
struct Asked {
    Lab::Bytes message;
    Seconds most;
};

Asked
v12Query( U8 code, Seconds most ) {
    return { Lab::igmpMessage( Zornet::IgmpMessageType::membershipQuery, code, IpAddr() ), most };
}

/// Response times of whole seconds, those above twelve in the floating form of RFC 3376 section 4.1.1.
Asked
v3Query( std::size_t number ) {
    struct Code {
        U8 code;
        Seconds most;
    };
    static constexpr std::array codes{
        Code{ 10, 1.0 },    Code{ 20, 2.0 },    Code{ 30, 3.0 },    Code{ 40, 4.0 },    Code{ 50, 5.0 },
        Code{ 60, 6.0 },    Code{ 70, 7.0 },    Code{ 80, 8.0 },    Code{ 90, 9.0 },    Code{ 100, 10.0 },
        Code{ 110, 11.0 },  Code{ 120, 12.0 },  Code{ 0x84, 16.0 }, Code{ 0x89, 20.0 }, Code{ 0x8e, 24.0 },
        Code{ 0x94, 32.0 }, Code{ 0x99, 40.0 }, Code{ 0x9e, 48.0 }, Code{ 0xa4, 64.0 }, Code{ 0xa9, 80.0 },
    };
    Code const& code = codes[number % codes.size()];
    return { Lab::v3QueryMessage( IpAddr(), {}, code.code, false, 2, 125 ), code.most };
}

/// The hundred queries to hosts of a version. Those of version 2 go from 0.1 to 25 seconds; those of version
/// 1 carry no time, which stands for ten seconds.
Asked
asked( Igmp::IgmpVersion version, std::size_t number ) {
    switch ( version ) {
    case Igmp::igmpVersion1: return v12Query( 0, 10.0 );
    case Igmp::igmpVersion2: {
        auto const code = static_cast<U8>( 1 + number * 249 / ( queries - 1 ) );
        return v12Query( code, code / 10.0 );
    }
    default: return v3Query( number );
    }
}

/// How delays are spread, each given as its part of the most that was allowed, and how far that is from what
/// is stated: even from 0 to 1, with the lowest tenth folded onto the next.
class Spread {
  public:
    static constexpr std::size_t bins = 90; ///< of a hundredth each, from 0.1 on
    static constexpr std::size_t folded = 10;
    /// What chi-squared of as many bins exceeds once in a thousand cases.
    static constexpr double onceInAThousand = 135.98;

    void add( double part ) {
        auto const bin = static_cast<long>( std::floor( part * 100.0 ) ) - 10;
        ++counts_.at( static_cast<std::size_t>( std::clamp( bin, 0L, long{ bins - 1 } ) ) );
        ++total_;
    }
    double chiSquared() const {
        double sum = 0.0;
        for ( std::size_t i = 0; i < bins; ++i ) {
            double const expected = static_cast<double>( total_ ) * ( i < folded ? 0.02 : 0.01 );
            double const off = static_cast<double>( counts_[i] ) - expected;
            sum += off * off / expected;
        }
        return sum;
    }
    void print( std::ostream& out ) const {
        constexpr std::size_t binsPerLine = 5;
        for ( std::size_t i = 0; i < bins; i += binsPerLine ) {
            std::size_t const count =
                std::accumulate( &counts_[i], &counts_[i] + binsPerLine, std::size_t{ 0 } );
            double const from = 0.1 + static_cast<double>( i ) / 100.0;
            out << std::fixed << std::setprecision( 2 ) << "    " << from << " to " << from + 0.05
                << std::setw( 7 ) << count << ' ' << std::string( count * 200 / total_, '#' ) << '\n';
        }
    }

  private:
    std::array<std::size_t, bins> counts_{};
    std::size_t total_ = 0;
};

class AnswerDelays : public ScenarioTest, public ::testing::WithParamInterface<Igmp::IgmpVersion> {
  protected:
    /// Each version's hosts draw other delays: the start seeds them.
    AnswerDelays() : ScenarioTest( 1000.0 + static_cast<double>( GetParam() ) ) {
        router_->deviceOpenIs( true );
        hostsAre(
            "hosts: [ { name: a, count: " + std::to_string( hosts ) +
            ", ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, igmpVersion: " +
            std::to_string( GetParam() ) +
            ", groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude } ] } ]"
        );
        runFor( 60.0 ); // the repeats of the joins
        lan().captureIs( &capture_ );
    }
    ~AnswerDelays() override { lan().captureIs( nullptr ); }

    /// Asks and adds each answer to the spread. Every host must answer once and in time.
    void ask( Asked const& query ) {
        capture_.clear();
        router_->txPktIs( Zornet::pktWithBytes(
            Lab::igmpFrame( IpAddr( "10.0.255.254" ), IpAddr( "224.0.0.1" ), query.message )
        ) );
        runFor( query.most + 0.1 );
        Seconds const sent = capture_.frame( 0 ).time;
        std::set<IpAddr> sources;
        for ( Lab::WireFrame const& answer : capture_.framesFrom( "eth0" ) ) {
            Seconds const delay = answer.time - sent;
            ASSERT_GE( delay, 0.1 * query.most );
            ASSERT_LE( delay, query.most + turns );
            spread.add( delay / query.most );
            sources.insert( reinterpret_cast<Zornet::IpHdr const*>( answer.bytes.data() + 14 )->src() );
        }
        ASSERT_EQ( sources.size(), hosts );
        ASSERT_EQ( capture_.count(), hosts + 1 );
    }

    Spread spread;

  private:
    Lab::Capture capture_;
    Kiv::Ptr<Zornet::EthDevPam> const router_ = Zornet::EthDevPamIs( "router" );
};

INSTANTIATE_TEST_SUITE_P(
    Version, AnswerDelays, ::testing::Values( Igmp::igmpVersion1, Igmp::igmpVersion2, Igmp::igmpVersion3 ),
    []( auto const& instance ) { return std::to_string( instance.param ); }
);

TEST_P( AnswerDelays, LieFromATenthToAllOfTheResponseTimeAndSpreadAsStated ) {
    for ( std::size_t i = 0; i < queries; ++i ) {
        ASSERT_NO_FATAL_FAILURE( ask( asked( GetParam(), i ) ) ) << "query " << i;
    }
    EXPECT_LT( spread.chiSquared(), Spread::onceInAThousand );
    if ( std::getenv( "IGMPHOST_HISTOGRAM" ) ) {
        std::cout << "version " << GetParam() << ", chi-squared " << spread.chiSquared() << '\n';
        spread.print( std::cout );
    }
}

TEST( SpreadOfDelays, IsToldFromAnEvenOne ) {
    srand48( 7 );
    Spread folded;
    Spread even;
    for ( std::size_t i = 0; i < hosts * queries; ++i ) {
        folded.add( Igmp::randomDelay( 1.0 ) );
        even.add( 0.1 + 0.9 * drand48() );
    }
    EXPECT_LT( folded.chiSquared(), Spread::onceInAThousand );
    EXPECT_GT( even.chiSquared(), Spread::onceInAThousand );
}

} // namespace

} // namespace Agent
