/// Answers to a general query that take many packets.

#include <cmath>
#include <map>

#include "tests/scenario/ScenarioTest.h"
#include "tests/support/HostTest.h"
#include "tests/support/NextDraw.h"

namespace {

using Igmp::IgmpV3GroupRecord;
using Kiv::Seconds;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using Zornet::IpAddr;

constexpr unsigned groupCount = 5000;
constexpr unsigned headerBytes = 46;

/// A host of 5,000 groups that has told them, in large packets.
class GeneralQueryChain : public Support::HostTest {
  protected:
    static IpAddr group( unsigned number ) { return IpAddr::fromHost( 0xef000000 + number ); }

    /// Each `stride`-th group excludes as many sources as its number has tens.
    void start( unsigned mtu, unsigned stride = 0 ) {
        host().mtuIs( 9000 );
        for ( unsigned i = 0; i < groupCount; ++i ) {
            auto const record = host().v3groupIs( group( i ) );
            record->filterModeIs( IgmpV3GroupRecord::exclude );
            for ( unsigned s = 0; stride != 0 && i % stride == 0 && s < i / 10; ++s ) {
                record->sourceIs()->sourceIpIs( IpAddr::fromHost( 0x0a000000 + s ), 1 );
            }
            raise( *record );
        }
        enable( Igmp::igmpVersion3 );
        runFor( 100.0 );
        host().mtuIs( mtu );
        host().configVersionIs( 1 );
        sent().clear();
    }
    void query( double draw ) {
        asked = elapsed();
        Support::nextDrawIs( draw );
        hearV3Query( 100 );
        first = 10.0 * draw;
        runFor( 30.0 );
    }
    /// The sources of each group that the packets name, by the longest record of the group.
    std::map<std::string, std::size_t> reported() {
        std::map<std::string, std::size_t> longest;
        for ( auto const& frame : sent() ) {
            auto const* at = frame.bytes.data() + headerBytes;
            while ( at != frame.bytes.data() + frame.bytes.size() ) {
                auto const* const record = reinterpret_cast<Zornet::IgmpReportGroupRecordHeader const*>( at );
                std::ostringstream name;
                name << record->mcastAddr();
                std::size_t& sources = longest[name.str()];
                sources = std::max<std::size_t>( sources, record->numSources() );
                at += record->recordBytes();
            }
        }
        return longest;
    }

    Seconds asked = 0.0;
    Seconds first = 0.0;
};

struct Chain {
    unsigned mtu;
    double draw;
};

class GeneralQueryChainOf : public GeneralQueryChain, public ::testing::WithParamInterface<Chain> {};

INSTANTIATE_TEST_SUITE_P(
    Mtu, GeneralQueryChainOf,
    ::testing::Values( Chain{ 1514, 0.999 }, Chain{ 1514, 0.1 }, Chain{ 9000, 0.5 }, Chain{ 200, 0.9 } ),
    []( auto const& instance ) {
        return std::to_string( instance.param.mtu ) + "After" +
               std::to_string( std::lround( instance.param.draw * 1000 ) );
    }
);

TEST_P( GeneralQueryChainOf, TakesAsManyPacketsAsTheMtuNeeds ) {
    start( GetParam().mtu );
    query( GetParam().draw );
    // A record is begun where there is room for one source more than it has.
    unsigned const perPacket = ( GetParam().mtu - headerBytes - 4 ) / 8;
    EXPECT_EQ( sent().size(), ( groupCount + perPacket - 1 ) / perPacket );
    EXPECT_THAT( reported(), SizeIs( groupCount ) );
}

TEST_P( GeneralQueryChainOf, EndsWithinTwiceTheFirstDelay ) {
    start( GetParam().mtu );
    query( GetParam().draw );
    EXPECT_NEAR( sent().front().elapsed - asked, first, 1e-5 );
    EXPECT_LE( sent().back().elapsed - asked, 2 * first );
}

TEST_F( GeneralQueryChain, NamesEveryGroupWholeThoughSomeAreCut ) {
    start( 2100, 50 );
    query( 0.9 );
    auto const sources = reported();
    ASSERT_THAT( sources, SizeIs( groupCount ) );
    EXPECT_EQ( sources.at( "239.0.0.50" ), 5U );
    EXPECT_EQ( sources.at( "239.0.19.86" ), 495U ); // the greatest: 4950
    EXPECT_LE( sent().back().elapsed - asked, 2 * first );
}

} // namespace

namespace Agent {

namespace {

class CutAnswer : public ScenarioTest {
  protected:
    void mtuIs( unsigned mtu ) {
        host( "a" ).mtuIs( mtu );
        host( "a" ).configVersionIs( host( "a" ).configVersion() + 1 );
    }
};

TEST_F( CutAnswer, LetsExcludedSourcesThroughUntilAnAnswerIsWhole ) {
    querierIs( 3 );
    hostsAre(
        "hosts:\n"
        "  - { name: a, ipAddr: 10.0.0.1, macAddr: '02:00:00:00:00:01', deviceName: eth0, igmpVersion: 3,\n"
        "      groups: [ { multicastAddr: 239.1.1.1, filterMode: exclude, sources: [ 10.9.9.1, 10.9.9.2 ] "
        "},\n"
        "                { multicastAddr: 239.1.1.2, filterMode: exclude, sources: [ 10.9.9.1, 10.9.9.2 ] } "
        "] "
        "}\n"
    );
    runFor( 2 * queryInterval );
    EXPECT_THAT( faults(), IsEmpty() );
    mtuIs( headerBytes + 16 + 12 ); // a whole record and one that is cut
    runFor( 2 * queryInterval );
    EXPECT_THAT( faults(), SizeIs( 1 ) );
    mtuIs( headerBytes + 16 + 16 );
    runFor( membershipInterval + queryInterval );
    EXPECT_THAT( faults(), IsEmpty() );
}

} // namespace

} // namespace Agent
